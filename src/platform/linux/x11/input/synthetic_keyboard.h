#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/x11/keyboard/keyboard_map.h"
#include "platform/linux/x11/keyboard/xkb_protocol.h"

namespace quil::linux_platform {

/// The device that synthetic keys come from. Like every keyboard it has a map of its own, which
/// need not be that of the user's keyboard, and programs see the map of the one that was used last.
/// While this lives, slow keys and bounce keys do not hold its keys back; on the user's keyboard
/// they stay as they are. The X keyboard extension must be enabled.
class SyntheticKeyboard {
  public:
    explicit SyntheticKeyboard(X11Connection& connection);
    ~SyntheticKeyboard();
    SyntheticKeyboard(const SyntheticKeyboard&) = delete;
    SyntheticKeyboard& operator=(const SyntheticKeyboard&) = delete;

    X11Connection& connection() const { return connection_; }
    /// What its keys mean; null when the server does not say.
    std::optional<KeyboardMap> readMap() const { return readKeyboardMap(connection_, device_); }
    /// Changes what its keys mean, also for programs. Whether the server took it.
    bool setMap(xcb_xkb_set_map_request_t request, const std::vector<std::uint8_t>& values);

  private:
    void findDevices();
    void turnFiltersOff();
    void makeCurrent();

    X11Connection& connection_;
    std::uint16_t device_ = kCoreKeyboard;
    /// The keyboard that programs listen to.
    std::uint16_t master_ = kCoreKeyboard;
    /// A real one behind that.
    std::optional<std::uint8_t> real_;
    /// The controls that were on.
    std::uint32_t filters_ = 0;
};

/// Turns the controls on that a runtime has turned off that is there no more.
void restoreFiltersOfCrashedRuntime(X11Connection& connection);

}  // namespace quil::linux_platform
