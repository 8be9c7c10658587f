#include <gmock/gmock.h>

#include "json/json.h"
#include "platform/simulated/platform.h"
#include "runtime/process.h"

namespace quil {
namespace {

/// The answers to requests with these methods and parameters; their ids count from 1.
std::vector<Json> converse(SimulatedDesktop& desktop,
                           const std::vector<std::pair<std::string, Json>>& requests) {
    SimulatedPlatform platform(desktop);
    for (std::size_t i = 0; i < requests.size(); ++i) {
        const auto& [method, params] = requests[i];
        platform.input.line(Json{{"id", i + 1}, {"method", method}, {"params", params}}.dump());
    }
    EXPECT_EQ(runProcess(platform), 0);
    std::vector<Json> answers;
    for (const std::string& line : platform.output.lines()) answers.push_back(*parseJson(line));
    EXPECT_EQ(answers.size(), requests.size());
    answers.resize(requests.size());
    return answers;
}

TEST(RecordingHandlers, AskForTheDisplaysOnceForAllRecords) {
    SimulatedDesktop desktop;
    desktop.displays.push_back({2, {1440, -180, 1920, 1080}, "Side"});
    desktop.onRequest(2, [](SimulatedDesktop& d) {
        for (int i = 0; i < 100; ++i) d.user().click({1680, 360}).click({0, 0});
    });
    const auto answers = converse(
        desktop, {{"startInputRecording", Json::object()}, {"stopInputRecording", Json::object()}});
    const Json& events = answers[1]["result"]["events"];
    ASSERT_EQ(events.size(), 200u);
    EXPECT_EQ(events[198]["target"]["display"]["name"], "Side");
    EXPECT_EQ(events[198]["target"]["point"]["x"], 0.5);
    EXPECT_EQ(events[199]["target"]["display"]["id"], 1);
    EXPECT_EQ(desktop.callCount("screens"), 1);
}

// The input ends while a recording runs: the process ends all the same, with everything.
TEST(RecordingHandlers, TheProcessEndsWithItsRecording) {
    for (int i = 0; i < 50; ++i) {
        SimulatedDesktop desktop;
        desktop.onRequest(2, [](SimulatedDesktop& d) { d.user().type("typing to the end"); });
        converse(desktop, {{"startInputRecording", Json::object()}, {"ping", Json::object()}});
        EXPECT_EQ(desktop.eventTaps().validTaps(), 0);
        EXPECT_EQ(desktop.eventTaps().runningRunLoops(), 0);
    }
}

}  // namespace
}  // namespace quil
