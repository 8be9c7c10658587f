#include "runtime/glimpse_sessions.h"

#include <gtest/gtest.h>

namespace quil {
namespace {

std::string name(std::size_t number) {
    return "capture " + std::to_string(number);
}

TEST(GlimpseSessions, TheOneStartedLongestAgoGoes) {
    GlimpseSessions sessions;
    for (std::size_t i = 0; i < GlimpseSessions::kMaximumSessions; ++i) sessions.start(name(i), {});
    sessions.advance(name(0));  // neither what has progressed nor what was found stays longer
    EXPECT_TRUE(sessions.find(name(1)));
    sessions.start(name(0), {});  // but what has begun again does
    EXPECT_TRUE(sessions.find(name(1)));
    sessions.start("one more", {});
    EXPECT_FALSE(sessions.find(name(1)));
    ASSERT_TRUE(sessions.find(name(0)));
    EXPECT_EQ(sessions.find(name(0))->step, 0);

    sessions.cancel(name(500));
    sessions.start("in its place", {});
    EXPECT_TRUE(sessions.find(name(2)));
    sessions.advance(name(1));  // gone: does not come back
    EXPECT_FALSE(sessions.find(name(1)));
}

}  // namespace
}  // namespace quil
