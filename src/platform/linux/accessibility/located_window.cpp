#include "platform/linux/accessibility/located_window.h"

#include <cstdint>
#include <string>

#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

/// Children of a window of which one is looked for that fills it.
constexpr std::int64_t kMaximumParts = 4;

std::optional<WindowFit> fitOnScreen(X11Connection& connection, std::int32_t pid,
                                     const std::string& title, const ToolkitWindow& window) {
    const auto active = activeWindow(connection);
    const auto isNamed = [&](const X11Window& onScreen) {
        return onScreen.title.value_or("") == title;
    };
    if (active && active->pid == pid && isNamed(*active)) {
        const auto fit = fitWindow(window, *active);
        if (fit && fit->hasSize && (fit->hasPosition || window.isWithinWindow)) return fit;
    }
    std::optional<WindowFit> best;
    int bestRank = 0;
    for (const X11Window& onScreen : topLevelWindows(connection)) {
        const auto fit = fitWindow(window, onScreen);
        if (!fit) continue;
        // A sandboxed application may be known by its helper's process.
        const bool isOfProcess = onScreen.pid == pid;
        if (!isOfProcess && !(isNamed(onScreen) && fit->hasSize)) continue;
        const bool isActive = active && active->id == onScreen.id;
        const int rank = 1 + (isOfProcess ? 32 : 0) + (isNamed(onScreen) ? 16 : 0) +
                         (fit->hasSize ? 8 : 0) + (fit->hasPosition ? 4 : 0) +
                         (onScreen.onScreen ? 2 : 0) + (isActive ? 1 : 0);
        if (rank <= bestRank) continue;
        bestRank = rank;
        best = fit;
    }
    if (best) return best;
    for (const PopUp& popUp : popUpsOf(connection, pid)) {
        X11Window onScreen;
        onScreen.frame = popUp.rect;
        const auto fit = fitWindow(window, onScreen);
        if (fit && fit->hasSize && (!best || fit->hasPosition)) best = fit;
    }
    return best;
}

}  // namespace

std::optional<LocatedWindow> locateWindow(AccessibilityBus& bus, X11Display& display,
                                          const Reference& window, Facts facts) {
    AtspiProgram& program = bus.introducedProgram(window.busName);
    const auto pid = bus.processId(window.busName);
    const auto connection = display.connection();
    if (!pid || !connection) return {};
    if (readFacts(bus, window, needsOf({Fact::name, Fact::extents}), facts) != 0) return {};
    if (!facts.extents.hasArea()) {
        // Swing's windows do not know where they are; what fills them does.
        const auto needs = [](const Facts& known) {
            return FactSet{known.asked.has(Fact::childCount) ? Fact::children : Fact::childCount}
                .without(known.asked);
        };
        readFacts(bus, window, needs, facts, {.maximumChildren = kMaximumParts});
        for (std::size_t i = 0; i < facts.children.size() && i < kMaximumParts; ++i) {
            Facts part;
            readFacts(bus, facts.children[i], needsOf({Fact::extents}), part);
            if (!part.extents.hasArea()) continue;
            facts.extents = part.extents;
            break;
        }
    }
    const auto fit =
        fitOnScreen(*connection, *pid, facts.name,
                    {facts.extents, program.hasWholeScales(), program.hasWindowCoordinates()});
    if (!fit) return {};
    LocatedWindow found{
        *pid, fit->map, program.hasWholeScales(), program.hasWindowCoordinates(), program.isSwing(),
        {}};
    const bool needsPopUps = found.isWithinWindow || found.isSwing || fit->map.scale != 1;
    if (needsPopUps) found.popUps = popUpsOf(*connection, *pid);
    return found;
}

}  // namespace quil::linux_platform
