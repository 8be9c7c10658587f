#include "platform/linux/x11/wake_event.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace quil::linux_platform {

WakeEvent::WakeEvent() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

WakeEvent::~WakeEvent() {
    if (isValid()) close(descriptor_);
}

void WakeEvent::set() const {
    if (isValid()) eventfd_write(descriptor_, 1);
}

void WakeEvent::clear() const {
    eventfd_t count = 0;
    if (isValid()) eventfd_read(descriptor_, &count);
}

bool WakeEvent::wait(std::chrono::milliseconds timeout) const {
    pollfd descriptor{descriptor_, POLLIN, 0};
    return poll(&descriptor, 1, static_cast<int>(timeout.count())) > 0;
}

}  // namespace quil::linux_platform
