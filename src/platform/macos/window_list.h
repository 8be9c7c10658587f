#pragma once

#include "platform/window_list.h"

namespace quil::macos {

/// The Quartz window services.
class MacWindowList : public WindowList {
  public:
    std::optional<Value> copyWindowInfo(std::uint32_t options,
                                        std::uint32_t relativeToWindow) override;
    /// Finds the window among its application's accessible ones by its position and title.
    bool activateWindow(std::int64_t number) override;
    std::optional<std::int64_t> activeWindow() override;
};

}  // namespace quil::macos
