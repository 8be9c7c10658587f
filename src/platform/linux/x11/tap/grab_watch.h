#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/linux/secure_input/keyboard_grabs.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/tap/record_stream.h"

namespace quil::linux_platform {

/// Follows the clients' grabs of keyboards in what the server records. What the recording does not
/// tell, such as a grab from before it, it asks the server, which changes nothing there.
class GrabWatch {
  public:
    /// To be made when the recording has begun.
    explicit GrabWatch(std::shared_ptr<X11Connection> connection);

    void read(const GrabRequest& request);
    void read(const GrabReply& reply);
    void read(const UnreadRequest& request);
    void read(const ClientEnd& end) { grabs_.clientEnded(end.client); }
    /// A focus change says that the grab has ended.
    void released() { grabs_.coreKeyboardReleased(); }
    /// All that was recorded until now has been read.
    void caughtUp();

    /// Who got a key of that time, which has just been read.
    std::vector<ClientId> grabbers(TapTime key) const { return grabs_.grabbers(key); }

  private:
    enum class DeviceKind { pointer, masterKeyboard, otherKeyboard };
    DeviceKind kindOf(std::uint16_t device);
    bool isGrabbedByAnother();
    bool showsMenu();

    std::shared_ptr<X11Connection> connection_;
    /// Never shown.
    xcb_window_t window_;
    KeyboardGrabs grabs_;
};

}  // namespace quil::linux_platform
