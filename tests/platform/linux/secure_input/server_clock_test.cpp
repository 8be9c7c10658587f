#include "platform/linux/secure_input/server_clock.h"

#include <gtest/gtest.h>

namespace quil::linux_platform {
namespace {

constexpr std::uint64_t kWrap = std::uint64_t{1} << 32;  // 49.7 days

TEST(ServerClock, CountsOnWhenTheServerBeginsAnew) {
    for (const std::uint64_t now : {std::uint64_t{5'000}, kWrap + 100, 3 * kWrap - 1}) {
        const ServerClock clock(static_cast<std::uint32_t>(now), now + 3);
        for (const std::uint64_t age : {0, 1, 250, 4'000}) {
            EXPECT_EQ(clock.uptimeNanoseconds(static_cast<std::uint32_t>(now - age), now + 10),
                      (now - age) * 1'000'000)
                << now << " - " << age;
        }
        // Noted before the wrap, asked after it.
        EXPECT_EQ(clock.uptimeNanoseconds(static_cast<std::uint32_t>(now), now + 60'000),
                  now * 1'000'000);
        EXPECT_EQ(clock.uptimeNanoseconds(static_cast<std::uint32_t>(now + 7), now + 5),
                  (now + 7) * 1'000'000)
            << "a moment ahead of our reading";
    }
}

TEST(ServerClock, KnowsServersElsewhere) {
    const ServerClock ahead(4'294'000'000, 1'000'000);
    EXPECT_EQ(ahead.uptimeNanoseconds(4'294'000'500, 1'000'600), 1'000'500'000'000u);
    EXPECT_EQ(ahead.uptimeNanoseconds(32'704, 2'000'000), 2'000'000'000'000u) << "it wraps";
    const ServerClock behind(1'000, 10 * kWrap);
    EXPECT_EQ(behind.uptimeNanoseconds(1'250, 10 * kWrap + 300), (10 * kWrap + 250) * 1'000'000);
}

}  // namespace
}  // namespace quil::linux_platform
