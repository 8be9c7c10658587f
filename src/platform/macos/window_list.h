#pragma once

#include "platform/window_list.h"

namespace quil::macos {

/// The Quartz window services.
class MacWindowList : public WindowList {
  public:
    std::optional<Value> copyWindowInfo(std::uint32_t options,
                                        std::uint32_t relativeToWindow) override;
};

}  // namespace quil::macos
