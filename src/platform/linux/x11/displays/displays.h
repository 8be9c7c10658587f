#pragma once

#include "platform/displays.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The RandR monitors of the X screen, the primary one first. A display's id is the atom of its
/// monitor's name, which stays the same as long as the server runs. A server without RandR 1.5 has
/// one display, the whole screen, with the id 1. Global screen coordinates are those of the root
/// window: a point is one pixel, and the origin is the corner of the whole screen, which need not
/// be the primary monitor's.
class X11Displays : public Displays {
  public:
    /// `display` outlives this service.
    explicit X11Displays(X11Display& display) : display_(display) {}

    std::int32_t getActiveDisplayList(std::uint32_t capacity, std::uint32_t* ids,
                                      std::uint32_t* count) override;
    Rect displayBounds(std::uint32_t display) override;
    std::uint32_t mainDisplayId() override;
    std::vector<Screen> screens() override;

  private:
    struct Monitor {
        std::uint32_t id = 0;
        bool isPrimary = false;
        Rect bounds;
        std::string name;  // empty when it has none
    };
    std::vector<Monitor> monitors();

    X11Display& display_;
};

}  // namespace quil::linux_platform
