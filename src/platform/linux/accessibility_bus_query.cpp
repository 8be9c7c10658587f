#include "platform/linux/accessibility_bus_query.h"

#include <algorithm>
#include <chrono>

namespace quil::linux_platform {
namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::microseconds;
constexpr std::chrono::seconds kPatience{1};

struct MessageDeleter {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, MessageDeleter>;

/// Lets the bus greet us. The library's own calls would wait for this far longer than a host does.
bool becomeReady(sd_bus* bus) {
    const auto deadline = Clock::now() + kPatience;
    while (sd_bus_is_ready(bus) == 0) {
        const int processed = sd_bus_process(bus, nullptr);
        if (processed < 0) return false;
        if (processed > 0) continue;
        const auto left = std::chrono::duration_cast<Microseconds>(deadline - Clock::now());
        if (left.count() <= 0) return false;
        if (sd_bus_wait(bus, static_cast<std::uint64_t>(left.count())) < 0) return false;
    }
    return sd_bus_is_ready(bus) > 0;
}

}  // namespace

AccessibilityBusQuery::Bus AccessibilityBusQuery::connect() {
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) return nullptr;
    Bus bus(opened);
    return becomeReady(bus.get()) ? std::move(bus) : nullptr;
}

bool AccessibilityBusQuery::ask() {
    sd_bus_message* created = nullptr;
    if (sd_bus_message_new_method_call(session_.get(), &created, "org.a11y.Bus", "/org/a11y/bus",
                                       "org.a11y.Bus", "GetAddress") < 0) {
        return false;
    }
    const Message question(created);
    sd_bus_message* received = nullptr;
    sd_bus_call(session_.get(), question.get(), Microseconds(kPatience).count(), nullptr,
                &received);
    const Message answer(received);
    const char* address = nullptr;
    return answer && sd_bus_message_read(answer.get(), "s", &address) >= 0 && *address != '\0';
}

bool AccessibilityBusQuery::answers() {
    // A bus that has gone is noticed by reading from it.
    while (session_ && sd_bus_process(session_.get(), nullptr) > 0) {
    }
    if (!session_ || sd_bus_is_open(session_.get()) <= 0) session_ = connect();
    return session_ && ask();
}

}  // namespace quil::linux_platform
