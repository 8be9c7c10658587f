#include "apps/activate_window.h"

#include "accessibility/ax_error.h"

namespace quil {
namespace {

constexpr double kTimeoutSeconds = 2;
constexpr std::uint32_t kPollingMicroseconds = 10'000;

}  // namespace

void activateWindow(WindowList& windows, Clock& clock, std::int64_t number) {
    if (!windows.activateWindow(number)) throw AxError::unsupported("window not found");
    const double end = clock.systemUptime() + kTimeoutSeconds;
    while (windows.activeWindow() != number) {
        if (clock.systemUptime() >= end) throw AxError::failed("window did not come to the front");
        clock.sleepMicroseconds(kPollingMicroseconds);
    }
}

}  // namespace quil
