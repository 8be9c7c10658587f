#include "platform/linux/secure_input/focus_timeline.h"

#include <gmock/gmock.h>

namespace quil::linux_platform {
namespace {

TapTime at(int milliseconds) {
    return TapTime(std::chrono::milliseconds(milliseconds));
}

TEST(FocusTimeline, ReportsHoldFromTheMoveThatTheyAreOf) {
    const struct {
        const char* what;
        std::vector<FocusMove> moves;
        std::vector<int> arrivals;
        /// When unlikely moves failed, and when early ones did if that differs.
        std::vector<int> times;
        std::vector<int> otherTimes = times;
    } cases[] = {
        {"nothing was done", {}, {10, 20}, {10, 20}},
        {"one for one", {{at(0), true}, {at(60), true}}, {20, 75}, {0, 60}},
        {"both late", {{at(0), true}, {at(60), true}}, {70, 90}, {0, 60}},
        {"the click changed nothing", {{at(0), true}, {at(60), true}}, {75}, {60}},
        {"Tab, text, Return", {{at(0), true}, {at(48), false}}, {55}, {0}, {48}},
        {"Tab, text, Return that moves", {{at(0), true}, {at(48), false}}, {15, 70}, {0, 48}},
        {"shortcuts alone", {{at(0), false}, {at(30), false}}, {40}, {0}, {30}},
        {"done after the report", {{at(0), true}, {at(90), true}}, {20}, {0}},
        {"too long ago", {{at(0), true}}, {1500}, {1500}},
        {"late, by a program that had been stuck", {{at(0), true, at(2900)}}, {3000}, {0}},
        {"an old report stays", {{at(5000), true}}, {10, 5020}, {10, 5000}},
    };
    const auto news = [](const std::vector<int>& arrivals, bool isSecret) {
        std::vector<FocusNews> result;
        for (const int arrival : arrivals) result.push_back({at(arrival), isSecret});
        return result;
    };
    const auto times = [](const std::vector<int>& numbers) {
        std::vector<TapTime> result;
        for (const int number : numbers) result.push_back(at(number));
        return result;
    };
    for (const auto& [what, moves, arrivals, expected, otherExpected] : cases) {
        EXPECT_EQ(focusChangeTimes(moves, news(arrivals, false), FocusGuess::unlikelyMovesFailed),
                  times(expected))
            << what;
        EXPECT_EQ(focusChangeTimes(moves, news(arrivals, false), FocusGuess::earlyMovesFailed),
                  times(otherExpected))
            << what;
    }
    const std::vector<FocusMove> tab{{at(200), true}};
    EXPECT_EQ(focusChangeTimes(tab, news({100, 210}, true), FocusGuess::earlyMovesFailed),
              times({50, 200}))
        << "a password field that came by itself has the keys that were typed meanwhile";
}

}  // namespace
}  // namespace quil::linux_platform
