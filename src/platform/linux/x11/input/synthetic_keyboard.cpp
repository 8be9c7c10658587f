#include "platform/linux/x11/input/synthetic_keyboard.h"

#include <xcb/xtest.h>

#include <string_view>

#include "platform/linux/x11/input/input_devices.h"
#include "platform/linux/x11/properties.h"

namespace quil::linux_platform {
namespace {

/// What keeps a key back that is not held long enough, or that comes again too soon.
constexpr std::uint32_t kFilters = XCB_XKB_BOOL_CTRL_SLOW_KEYS | XCB_XKB_BOOL_CTRL_BOUNCE_KEYS;
/// The device and the controls that are off meanwhile, on the root window.
constexpr std::string_view kFiltersProperty = "_QUIL_KEY_FILTERS";

}  // namespace

SyntheticKeyboard::SyntheticKeyboard(X11Connection& connection) : connection_(connection) {
    findDevices();
    turnFiltersOff();
    makeCurrent();
}

SyntheticKeyboard::~SyntheticKeyboard() {
    if (filters_ == 0) return;
    enableControls(connection_, device_, filters_, true);
    if (!real_) enableControls(connection_, master_, filters_, true);
    xcb_delete_property(connection_.get(), connection_.root(), connection_.atom(kFiltersProperty));
}

void SyntheticKeyboard::findDevices() {
    const auto keyboards = keyboardsInUse(connection_);
    if (!keyboards) return;
    master_ = keyboards->master;
    device_ = keyboards->synthetic;
    if (!keyboards->real.empty()) real_ = keyboards->real.front();
}

/// Programs get keys through the keyboard that they listen to, whose controls become those of the
/// device that is used, when that changes: nobody is told, as of a change that the user makes.
void SyntheticKeyboard::turnFiltersOff() {
    const auto controls = connection_.reply(xcb_xkb_get_controls_reply,
                                            xcb_xkb_get_controls(connection_.get(), device_));
    if (!controls) return;
    filters_ = controls->enabledControls & kFilters;
    if (filters_ == 0) return;
    writeRootNumbers(connection_, kFiltersProperty, {device_, filters_});
    enableControls(connection_, device_, filters_, false);
    if (real_) {
        releaseUnusedKey(connection_, *real_);
    } else {
        enableControls(connection_, master_, filters_, false);
    }
}

/// A key that is up is released, of which programs hear nothing.
void SyntheticKeyboard::makeCurrent() {
    xcb_test_fake_input(connection_.get(), XCB_KEY_RELEASE,
                        xcb_get_setup(connection_.get())->min_keycode, XCB_CURRENT_TIME,
                        XCB_WINDOW_NONE, 0, 0, 0);
}

/// What is set for the keyboard that programs listen to is set for all devices behind it, whose
/// maps may be others. So it is made to take the device's map anew, as after a use of another one.
bool SyntheticKeyboard::setMap(xcb_xkb_set_map_request_t request,
                               const std::vector<std::uint8_t>& values) {
    request.deviceSpec = real_ ? device_ : kCoreKeyboard;
    if (!setKeyboardMap(connection_, request, values)) return false;
    if (real_) releaseUnusedKey(connection_, *real_);
    makeCurrent();
    return true;
}

void restoreFiltersOfCrashedRuntime(X11Connection& connection) {
    const auto left = readProperty(connection, connection.root(), kFiltersProperty).numbers();
    if (left.size() != 2) return;
    enableControls(connection, static_cast<std::uint16_t>(left[0]), left[1], true);
    xcb_delete_property(connection.get(), connection.root(), connection.atom(kFiltersProperty));
}

}  // namespace quil::linux_platform
