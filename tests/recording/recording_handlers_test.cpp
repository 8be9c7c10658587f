#include <gmock/gmock.h>

#include "json/json.h"
#include "platform/simulated/simulated_platform.h"
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

TEST(RecordingHandlers, HandOverWhatThePersonDid) {
    SimulatedDesktop desktop;
    desktop.permissions.accessibility = desktop.permissions.screenRecording = false;
    desktop.onRequest(2, [](SimulatedDesktop& d) { d.person().type("a").click({720, 450}); });
    desktop.at(0.12, [](SimulatedDesktop& d) { d.person().scroll({0, 0}, 2).type("b"); });
    const auto answers = converse(desktop, {{"startInputRecording", Json::object()},
                                            {"startInputRecording", Json::object()},
                                            {"nextInputEvent", {{"timeoutMs", 0}}},
                                            {"nextInputEvent", {{"timeoutMs", -1}}},
                                            {"nextInputEvent", {{"timeoutMs", 0.0}}},
                                            {"nextInputEvent", {{"timeoutMs", "0"}}},
                                            {"stopInputRecording", Json::object()},
                                            {"stopInputRecording", Json::object()},
                                            {"nextInputEvent", Json::object()}});
    EXPECT_EQ(answers[0].dump(), R"({"id":1,"result":{}})");
    EXPECT_EQ(answers[1].dump(), R"({"id":2,"result":{}})");
    EXPECT_EQ(answers[2]["result"]["event"]["params"]["text"], "a");
    EXPECT_EQ(answers[3]["result"]["event"]["target"]["point"]["x"], 0.5);
    EXPECT_EQ(answers[4].dump(), R"({"id":5,"result":{"event":null}})");
    EXPECT_EQ(answers[5]["result"]["event"]["params"]["amount"], 2) << "waited for it";
    ASSERT_EQ(answers[6]["result"]["events"].size(), 1u);
    EXPECT_EQ(answers[6]["result"]["events"][0]["params"]["text"], "b");
    EXPECT_EQ(answers[7].dump(), R"({"id":8,"result":{"events":[]}})");
    EXPECT_EQ(answers[8].dump(), R"({"id":9,"result":{"event":null}})");
    EXPECT_NEAR(desktop.clock().now(), 0.15 + 1, 1e-9) << "a second unless told";
}

TEST(RecordingHandlers, SayWhatIsMissing) {
    const Json none = Json::object();
    SimulatedDesktop desktop;
    desktop.permissions.inputMonitoring = false;
    desktop.permissions.grantsInputMonitoring = true;
    desktop.on("createTap").fails();
    desktop.onRequest(3, [](SimulatedDesktop& d) { d.permissions.accessibility = false; });
    // Only while the recording starts is the permission found to have gone.
    desktop.on("preflightListenEventAccess").nth(8).fails();
    const auto answers = converse(desktop, {{"startInputRecording", none},
                                            {"startInputRecording", none},
                                            {"startInputRecording", none},
                                            {"startInputRecording", none}});
    const auto error = [&](std::size_t i) {
        return answers[i]["error"].value("code", "") + ": " +
               answers[i]["error"].value("message", "");
    };
    EXPECT_EQ(error(0), "RECORDING_PERMISSION_REQUIRED: input monitoring permission required");
    EXPECT_EQ(error(1), "RECORDING_CAPTURE_UNAVAILABLE: input event tap unavailable");
    EXPECT_EQ(error(2), "RECORDING_PERMISSION_REQUIRED: accessibility permission required");
    EXPECT_EQ(error(3), "RECORDING_PERMISSION_REQUIRED: input monitoring permission required");
    EXPECT_EQ(desktop.callCount("requestListenEventAccess"), 1) << "asked the first time alone";
}

TEST(RecordingHandlers, AskForTheDisplaysOnceForAllRecords) {
    SimulatedDesktop desktop;
    desktop.displays.push_back({2, {1440, -180, 1920, 1080}, "Side"});
    desktop.onRequest(2, [](SimulatedDesktop& d) {
        for (int i = 0; i < 100; ++i) d.person().click({1680, 360}).click({0, 0});
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
        desktop.onRequest(2, [](SimulatedDesktop& d) { d.person().type("typing to the end"); });
        converse(desktop, {{"startInputRecording", Json::object()}, {"ping", Json::object()}});
        EXPECT_EQ(desktop.eventTaps().validTaps(), 0);
        EXPECT_EQ(desktop.eventTaps().runningRunLoops(), 0);
    }
}

}  // namespace
}  // namespace quil
