#pragma once

#include <chrono>
#include <functional>
#include <set>
#include <string>
#include <string_view>

#include "platform/linux/x11/windows/windows.h"

namespace quil::linux_platform {

/// A launch whose application has not been in front since. Window managers that guard the focus
/// leave a new window behind the one that the user works in, unless its program says that the user
/// has just asked for it, which many programs do not. The user did, so it is brought to the front.
class LaunchInProgress {
  public:
    /// To be made before the application of that desktop entry is started.
    LaunchInProgress(X11Connection& connection, std::string_view entryPath);

    const std::string& entryPath() const { return entryPath_; }

    /// Brings to the front, without waiting for it, windows of the application that have come since
    /// or demand attention, each once. Returns whether the launch is over: the application is in
    /// front, another window than at the launch is, or the application has had half a minute.
    bool follow(X11Connection& connection, const std::function<bool(const X11Window&)>& isLaunched);

  private:
    std::string entryPath_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    xcb_window_t activeBefore_;
    /// The windows that were there, and those that have been brought to the front.
    std::set<xcb_window_t> known_;
    std::set<xcb_window_t> broughtToFront_;
};

}  // namespace quil::linux_platform
