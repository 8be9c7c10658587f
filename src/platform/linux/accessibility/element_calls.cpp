#include "platform/linux/accessibility/element_calls.h"

#include <thread>

namespace quil::linux_platform {
namespace {

constexpr std::chrono::milliseconds kLookInterval{10};

}  // namespace

bool becomesTrue(const std::function<bool()>& condition) {
    const auto deadline = BusClock::now() + kChangeTimeout;
    while (!condition()) {
        if (BusClock::now() >= deadline) return false;
        std::this_thread::sleep_for(kLookInterval);
    }
    return true;
}

std::int32_t commandCode(const Reply& reply) {
    if (!reply.message) return reply.code;
    int isDone = 1;
    const bool isBoolean = sd_bus_message_read_basic(reply.message, 'b', &isDone) > 0;
    return isBoolean && !isDone ? kAxFailure : reply.code;
}

}  // namespace quil::linux_platform
