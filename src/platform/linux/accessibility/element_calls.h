#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "platform/linux/atspi/accessibility_bus.h"
#include "platform/linux/atspi/facts.h"

namespace quil::linux_platform {

/// How long a program may take to do what it has replied that it did: browsers and Java do it
/// later.
inline constexpr std::chrono::milliseconds kChangeTimeout{500};

/// Looks until it is so, or until the time for a change is over. Whether it was.
bool becomesTrue(const std::function<bool()>& condition);

/// The code of the reply to a command: a boolean, or nothing.
std::int32_t commandCode(const Reply& reply);

/// Makes a call that replies with a boolean, or with nothing: 0 when it was done, else an error
/// code.
template <typename... Values>
std::int32_t command(AccessibilityBus& bus, const Reference& element, const char* interface,
                     const char* member, const char* signature = "", Values... values) {
    std::int32_t code = kAxFailure;
    bus.introducedProgram(element.busName)
        .peer()
        .call(
            element.path.c_str(), interface, member,
            [&](Reply reply) { code = commandCode(reply); }, signature, values...);
    bus.waitForReplies();
    return code;
}

}  // namespace quil::linux_platform
