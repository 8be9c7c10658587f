#include "platform/linux/x11/input/pointer_effects.h"

#include <algorithm>
#include <cmath>
#include <thread>
#include <utility>

#include "platform/linux/applications/idle_watch.h"
#include "platform/linux/x11/input/focused_client.h"
#include "platform/linux/x11/input/program_wait.h"
#include "platform/linux/x11/properties.h"

namespace quil::linux_platform {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds kEffectTimeout{2000};
constexpr milliseconds kButtonLookInterval{1};
/// Toolkits and window managers nest windows.
constexpr int kMaximumNesting = 32;

/// Waits until the server has delivered the release of the buttons: a window manager may have
/// stopped the pointer's events at the press.
void waitForRelease(X11Connection& connection, Clock::time_point deadline) {
    constexpr std::uint16_t kButtons = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;
    while (Clock::now() < deadline) {
        const auto pointer = connection.reply(
            xcb_query_pointer_reply, xcb_query_pointer(connection.get(), connection.root()));
        if (!pointer || (pointer->mask & kButtons) == 0) return;
        std::this_thread::sleep_for(kButtonLookInterval);
    }
}

/// The innermost window at a point of the screen.
xcb_window_t windowAt(X11Connection& connection, Point location) {
    const auto x = static_cast<std::int16_t>(std::floor(location.x));
    const auto y = static_cast<std::int16_t>(std::floor(location.y));
    xcb_window_t window = connection.root();
    for (int i = 0; i < kMaximumNesting; ++i) {
        const auto inside = connection.reply(
            xcb_translate_coordinates_reply,
            xcb_translate_coordinates(connection.get(), connection.root(), window, x, y));
        if (!inside || inside->child == XCB_WINDOW_NONE) break;
        window = inside->child;
    }
    return window == connection.root() ? xcb_window_t{XCB_WINDOW_NONE} : window;
}

/// Where keys go, and which window is called active.
struct Focus {
    xcb_window_t focused = XCB_WINDOW_NONE;
    std::optional<std::uint32_t> active;
    bool operator==(const Focus&) const = default;
};

Focus readFocus(X11Connection& connection) {
    return {keyboardWindow(connection),
            readProperty(connection, connection.root(), "_NET_ACTIVE_WINDOW").number()};
}

}  // namespace

void PointerEffects::posted(Point location, bool isButton) {
    isPosted_ = true;
    if (isButton) buttonLocation_ = location;
}

void PointerEffects::settle() {
    if (!std::exchange(isPosted_, false)) return;
    const auto location = std::exchange(buttonLocation_, {});
    const auto connection = display_.connection();
    if (!connection) return;
    const auto deadline = Clock::now() + kEffectTimeout;
    if (location) waitForRelease(*connection, deadline);
    // The focus may follow the pointer, too.
    windowManager_.waitUntilDone(connection, leftUntil(deadline));
    if (!location) return;
    const xcb_window_t clicked = windowAt(*connection, *location);
    Focus focus = readFocus(*connection);
    while (Clock::now() < deadline) {
        waitForPrograms(*connection, {clicked, focus.focused}, deadline);
        // Either may have moved the focus on.
        windowManager_.waitUntilDone(connection, leftUntil(deadline));
        const Focus before = std::exchange(focus, readFocus(*connection));
        if (focus == before) return;
    }
}

}  // namespace quil::linux_platform
