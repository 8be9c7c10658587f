#import "platform/macos/window_list.h"

#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>

#import "platform/macos/accessibility.h"
#import "platform/macos/values.h"

namespace quil::macos {
namespace {

std::optional<std::int64_t> integerMember(const Value::Dictionary& window, std::string_view key) {
    const Value* member = findMember(window, key);
    return member ? member->integer() : std::nullopt;
}

/// The members of the first entry that the predicate wants; nothing when there is none.
template <typename Predicate>
std::optional<Value::Dictionary> findWindow(std::uint32_t options, Predicate isWanted) {
    const auto list = CfRef<CFArrayRef>::adopt(CGWindowListCopyWindowInfo(options, 0));
    const auto windows = valueOf(list.get());
    if (!windows || !windows->list()) return {};
    for (const Value& window : *windows->list()) {
        if (window.dictionary() && isWanted(*window.dictionary())) return *window.dictionary();
    }
    return {};
}

std::optional<Value> attribute(MacAccessibility& accessibility, const ElementRef& element,
                               std::string_view name) {
    std::optional<Value> value;
    accessibility.copyAttributeValue(element, name, value);
    return value;
}

/// Whether the accessible window is the one of the window list: at its position, and of its title
/// where the list tells it (which takes the Screen Recording permission).
bool isSameWindow(MacAccessibility& accessibility, const ElementRef& element,
                  const Value::Dictionary& window) {
    const auto position = attribute(accessibility, element, "AXPosition");
    const Value* bounds = findMember(window, kWindowBounds);
    if (!position || !position->point() || !bounds || !bounds->dictionary()) return false;
    const auto coordinate = [&](std::string_view key) {
        const Value* member = findMember(*bounds->dictionary(), key);
        return member ? member->number() : std::nullopt;
    };
    if (coordinate("X") != position->point()->x || coordinate("Y") != position->point()->y) {
        return false;
    }
    const std::string* name = findString(window, kWindowName);
    const auto title = attribute(accessibility, element, "AXTitle");
    return !name || name->empty() || (title && title->string() && *title->string() == *name);
}

}  // namespace

std::optional<Value> MacWindowList::copyWindowInfo(std::uint32_t options,
                                                   std::uint32_t relativeToWindow) {
    const auto list =
        CfRef<CFArrayRef>::adopt(CGWindowListCopyWindowInfo(options, relativeToWindow));
    return valueOf(list.get());
}

bool MacWindowList::activateWindow(std::int64_t number) {
    const auto window = findWindow(0, [&](const Value::Dictionary& members) {
        return integerMember(members, kWindowNumber) == number;
    });
    if (!window) return false;
    const auto pid = integerMember(*window, kWindowOwnerPid);
    if (!pid) return true;  // nobody can be asked for it
    MacAccessibility accessibility;
    const ElementRef application = accessibility.createApplication(static_cast<std::int32_t>(*pid));
    const auto windows = attribute(accessibility, application, "AXWindows");
    if (windows && windows->list()) {
        for (const Value& element : *windows->list()) {
            if (!element.element() || !isSameWindow(accessibility, element.element(), *window)) {
                continue;
            }
            accessibility.setAttributeValue(element.element(), "AXMinimized", Value(false));
            accessibility.setAttributeValue(element.element(), "AXMain", Value(true));
            accessibility.performAction(element.element(), "AXRaise");
            break;
        }
    }
    NSRunningApplication* owner =
        [NSRunningApplication runningApplicationWithProcessIdentifier:static_cast<pid_t>(*pid)];
    [owner activateWithOptions:0];
    return true;
}

std::optional<std::int64_t> MacWindowList::activeWindow() {
    NSRunningApplication* front = [NSWorkspace sharedWorkspace].frontmostApplication;
    if (!front) return {};
    const auto window =
        findWindow(kWindowListOptionOnScreenOnly | kWindowListExcludeDesktopElements,
                   [&](const Value::Dictionary& members) {
                       return integerMember(members, kWindowLayer) == 0 &&
                              integerMember(members, kWindowOwnerPid) == front.processIdentifier;
                   });
    return window ? integerMember(*window, kWindowNumber) : std::nullopt;
}

}  // namespace quil::macos
