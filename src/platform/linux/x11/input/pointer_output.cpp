#include "platform/linux/x11/input/pointer_output.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <thread>

#include "platform/linux/x11/input/crash_recovery.h"
#include "platform/linux/x11/input/input_devices.h"
#include "platform/linux/x11/pointer_buttons.h"
#include "platform/linux/x11/windows/click_focus.h"

namespace quil::linux_platform {
namespace {

/// Two presses of the same millisecond are one to Chromium, and no double click.
constexpr std::uint32_t kPressDelay = 2;

constexpr std::chrono::milliseconds kButtonsValidity{20};

/// The longest time between two presses of a double click, with a little to spare, and the farthest
/// that these may be apart, in pixels: of GTK, Qt, Tk, Swing and Chromium as they come.
constexpr std::chrono::milliseconds kMultipleClickTime{520};
constexpr double kMultipleClickDistance = 10;

std::int16_t pixel(double coordinate) {
    using Limits = std::numeric_limits<std::int16_t>;
    if (std::isnan(coordinate)) return 0;
    return static_cast<std::int16_t>(
        std::clamp(std::floor(coordinate), double{Limits::min()}, double{Limits::max()}));
}

void moveTo(X11Connection& connection, Point point) {
    xcb_test_fake_input(connection.get(), XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, connection.root(),
                        pixel(point.x), pixel(point.y), 0);
}

bool isButtonPress(std::uint32_t type) {
    return type == kEventLeftMouseDown || type == kEventRightMouseDown ||
           type == kEventOtherMouseDown;
}

bool isButtonRelease(std::uint32_t type) {
    return type == kEventLeftMouseUp || type == kEventRightMouseUp || type == kEventOtherMouseUp;
}

/// The number of the button that clients see.
std::uint8_t buttonOf(const PostedEvent& event) {
    if (event.button == kMouseButtonRight) return kRightButton;
    return event.button == kMouseButtonCenter ? kMiddleButton : kLeftButton;
}

/// The number of the button that a map gives this number; the same when none does.
std::uint8_t indexOf(const std::vector<std::uint8_t>& map, std::uint8_t button) {
    const auto found = std::find(map.begin(), map.end(), button);
    return found == map.end() ? button : static_cast<std::uint8_t>(found - map.begin() + 1);
}

/// `delay` is in milliseconds, kept by the server.
void sendButton(X11Connection& connection, std::uint8_t button, bool isDown,
                std::uint32_t delay = 0) {
    xcb_test_fake_input(connection.get(), isDown ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, button,
                        delay, XCB_WINDOW_NONE, 0, 0, 0);
}

}  // namespace

std::uint8_t PointerOutput::deviceButton(X11Connection& connection, std::uint8_t button) {
    const auto now = std::chrono::steady_clock::now();
    if (now >= buttonsExpire_) {
        const auto mapping = connection.reply(xcb_get_pointer_mapping_reply,
                                              xcb_get_pointer_mapping(connection.get()));
        if (!mapping) return button;
        const std::uint8_t* first = xcb_get_pointer_mapping_map(mapping.get());
        buttons_.assign(first, first + xcb_get_pointer_mapping_map_length(mapping.get()));
        ownButtons_ = syntheticButtons(connection);
        buttonsExpire_ = now + kButtonsValidity;
    }
    return indexOf(ownButtons_, indexOf(buttons_, button));
}

void PointerOutput::turnWheel(X11Connection& connection, std::int32_t amount, std::uint8_t positive,
                              std::uint8_t negative) {
    if (amount == 0) return;
    const std::uint8_t button = deviceButton(connection, amount > 0 ? positive : negative);
    const std::int32_t limited = std::clamp(amount, -kMaximumWheelClicks, kMaximumWheelClicks);
    for (std::int32_t i = std::abs(limited); i > 0; --i) {
        sendButton(connection, button, true);
        sendButton(connection, button, false);
    }
}

void PointerOutput::awaitNewCount(Point at, std::uint32_t button, int count) const {
    if (!lastPress_ || lastPress_->button != button) return;
    const bool isNear = std::abs(at.x - lastPress_->location.x) <= kMultipleClickDistance &&
                        std::abs(at.y - lastPress_->location.y) <= kMultipleClickDistance;
    if (isNear || count > 1) std::this_thread::sleep_until(lastPress_->time + kMultipleClickTime);
}

void PointerOutput::send(X11Connection& connection, const PostedEvent& event,
                         xcb_window_t runtime) {
    const bool isPress = isButtonPress(event.type);
    const std::uint8_t button = isPress || isButtonRelease(event.type)
                                    ? deviceButton(connection, buttonOf(event))
                                    : kLeftButton;
    // With a button that another runtime has left down a move would drag.
    if (isPress || event.type == kEventMouseMoved) releasePointerOfCrashedRuntime(connection);
    moveTo(connection, event.location);
    if (isPress) {
        focusClickedWindow(connection, event.location);
        notePressedButton(connection, runtime, button);
        lastPress_ = {std::chrono::steady_clock::now(), event.location, event.button};
        sendButton(connection, button, true, kPressDelay);
    } else if (isButtonRelease(event.type)) {
        sendButton(connection, button, false);
        noteReleasedButton(connection);
    } else if (event.type == kEventScrollWheel) {
        turnWheel(connection, event.wheel1, kWheelUp, kWheelDown);
        turnWheel(connection, event.wheel2, kWheelLeft, kWheelRight);
    }
    xcb_flush(connection.get());
}

}  // namespace quil::linux_platform
