#pragma once

#include <poll.h>

#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/secure_input/focus_reports.h"
#include "platform/linux/secure_input/focus_sources.h"
#include "platform/linux/secure_input/server_clock.h"
#include "platform/linux/x11/connection.h"

namespace quil::linux_platform {

/// The sources on a real desktop: the X server, the accessibility bus and the kernel.
class DesktopFocus : public FocusSources {
  public:
    /// Finds out where the focus is now. Bounded.
    DesktopFocus(X11Display& display, const ServerClock& clock);

    /// Adds the descriptor to wait for.
    void prepareToWait(std::vector<pollfd>& descriptors);

    TapTime now() override { return TapTime::clock::now(); }
    FocusReports* reports() override { return reports_.get(); }
    ActiveProgram activeProgram() override;
    /// Programs note the time on their window (_NET_WM_USER_TIME).
    std::optional<TapTime> latestPressOf(const ActiveProgram& program) override;
    bool isHelperOf(std::int32_t pid, std::int32_t program) override;

  private:
    X11Display& display_;
    const ServerClock clock_;
    std::unique_ptr<AtspiFocusReports> reports_;
};

}  // namespace quil::linux_platform
