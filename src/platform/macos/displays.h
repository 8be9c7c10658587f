#pragma once

#include "platform/displays.h"

namespace quil::macos {

/// The Quartz display services, and the names from NSScreen, which is asked on the main thread.
class MacDisplays : public Displays {
  public:
    std::int32_t getActiveDisplayList(std::uint32_t capacity, std::uint32_t* ids,
                                      std::uint32_t* count) override;
    Rect displayBounds(std::uint32_t display) override;
    std::uint32_t mainDisplayId() override;
    std::vector<Screen> screens() override;
};

}  // namespace quil::macos
