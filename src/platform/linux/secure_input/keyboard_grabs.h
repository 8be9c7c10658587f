#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "platform/linux/secure_input/server_clock.h"

namespace quil::linux_platform {

/// A client of the X server, by the base of its resource ids.
using ClientId = std::uint32_t;
/// An unknown client.
inline constexpr ClientId kUnknownClient = 0;

/// Which clients have grabbed a keyboard, and so get all of its keys. Follows the requests of all
/// clients and the server's replies to them, in their order: a grab that is refused changes
/// nothing.
class KeyboardGrabs {
  public:
    /// The core protocol's grabs and those of XInput 2 end only by requests of their own kind.
    enum class Protocol { core, xinput };
    /// The core protocol's keyboard; also what all master keyboards count as.
    static constexpr std::uint16_t kCoreKeyboard = 0;
    struct Grab {
        ClientId client = kUnknownClient;
        Protocol protocol = Protocol::core;
        std::uint16_t device = kCoreKeyboard;
        /// The server's time that the request gives; 0 for the time at which it is processed.
        std::uint32_t time = 0;
    };

    /// A client asks for a grab; the server's next reply to it says whether it has it.
    void requested(const Grab& grab) { pending_[grab.client] = grab; }
    /// A client asks for a grab of what is no keyboard; the next reply is about that.
    void requestedOther(ClientId client) { pending_.erase(client); }
    /// `coreStatus` and `xinputStatus` are the statuses that the reply holds if it is one of that
    /// protocol; `serverTime` is the server's time.
    void replied(ClientId client, std::uint8_t coreStatus, std::uint8_t xinputStatus,
                 std::uint32_t serverTime);
    /// A client gives a grab back: it keeps one of the other protocol, and a later one.
    void released(const Grab& grab);
    void clientEnded(ClientId client);
    /// The server says that the grab of the core keyboard has ended, whichever client had it.
    void coreKeyboardReleased() { grabs_.erase(kCoreKeyboard); }

    /// A grab of the core keyboard is there of which nothing was heard, such as one from before.
    void foundGrabbed() { grabs_.try_emplace(kCoreKeyboard); }
    /// Whether such a grab may still be there, so that it is to be looked for.
    bool isUnsure() const;
    /// At that time it was no longer there; it may have been until then.
    void foundFree(TapTime now);

    /// Who gets the keys that are read now, of those that were pressed at that time; none when the
    /// keys go to the window with the focus.
    std::vector<ClientId> grabbers(TapTime key) const;

  private:
    std::map<ClientId, Grab> pending_;
    /// By device.
    std::map<std::uint16_t, Grab> grabs_;
    /// A grab that was found was there at most until then.
    std::optional<TapTime> foundUntil_;
};

}  // namespace quil::linux_platform
