#pragma once

#include "platform/linux/workspace.h"
#include "platform/linux/x11/connection.h"
#include "platform/window_list.h"

namespace quil::linux_platform {

/// The top-level windows as information dictionaries. The window number is the X window's id.
class LinuxWindowList : public WindowList {
  public:
    /// Both outlive this service.
    LinuxWindowList(X11Display& display, LinuxWorkspace& workspace)
        : display_(display), workspace_(workspace) {}

    /// `relativeToWindow` is ignored: every list is of the whole desktop.
    std::optional<Value> copyWindowInfo(std::uint32_t options,
                                        std::uint32_t relativeToWindow) override;
    bool activateWindow(std::int64_t number) override;
    std::optional<std::int64_t> activeWindow() override;

  private:
    X11Display& display_;
    LinuxWorkspace& workspace_;
};

}  // namespace quil::linux_platform
