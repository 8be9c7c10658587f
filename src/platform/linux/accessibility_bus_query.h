#pragma once

#include <systemd/sd-bus.h>

#include <memory>

namespace quil::linux_platform {

/// Asks the session bus for the accessibility bus. The connection is kept from one question to the
/// next and made anew when the session bus has gone.
class AccessibilityBusQuery {
  public:
    /// Whether there is an accessibility bus; the session bus starts it when it can. Waits a second
    /// at most.
    bool answers();

  private:
    struct Deleter {
        void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
    };
    using Bus = std::unique_ptr<sd_bus, Deleter>;

    static Bus connect();
    bool ask();

    Bus session_;
};

}  // namespace quil::linux_platform
