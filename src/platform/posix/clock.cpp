#include "platform/posix/clock.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <random>

namespace quil {
namespace {

double seconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

}  // namespace

double PosixClock::timeIntervalSince1970() {
    return seconds(CLOCK_REALTIME);
}

double PosixClock::systemUptime() {
    return seconds(CLOCK_MONOTONIC);
}

void PosixClock::sleepMicroseconds(std::uint32_t microseconds) {
    timespec remaining{static_cast<time_t>(microseconds / 1000000),
                       static_cast<long>(microseconds % 1000000) * 1000};
    while (nanosleep(&remaining, &remaining) != 0 && errno == EINTR) {
    }
}

std::string PosixClock::uuidString() {
    std::random_device device;
    std::array<std::uint32_t, 4> word{};
    for (std::uint32_t& part : word) part = device();
    // RFC 9562: version 4 in the top bits of the third field, variant 10 in those of the fourth.
    word[1] = (word[1] & 0xFFFF0FFFu) | 0x00004000u;
    word[2] = (word[2] & 0x3FFFFFFFu) | 0x80000000u;
    char text[37];
    std::snprintf(text, sizeof text, "%08X-%04X-%04X-%04X-%04X%08X", word[0], word[1] >> 16,
                  word[1] & 0xFFFFu, word[2] >> 16, word[2] & 0xFFFFu, word[3]);
    return text;
}

}  // namespace quil
