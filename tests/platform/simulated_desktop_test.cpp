#include "platform/simulated/desktop.h"

#include <gmock/gmock.h>

#include "json/json.h"
#include "platform/simulated/simulated_platform.h"
#include "runtime/process.h"

namespace quil {
namespace {

using ::testing::ElementsAre;

TEST(SimulatedDesktop, CarriesAConversation) {
    SimulatedDesktop desktop;
    auto& notes = desktop.application(100, "Notes").bundleIdentifier("com.example.notes");
    auto& window = notes.window("Main", {0, 25, 800, 600});
    window.action("AXRaise");
    auto& ok = window.element("AXButton", "OK").enabled(true).bounds({10, 40, 80, 24});
    ok.action("AXPress", [&](SimulatedDesktop&) { ok.enabled(false); });
    desktop.onRequest(4, [&](SimulatedDesktop&) { ok.title("Done"); });

    SimulatedPlatform platform(desktop);
    const std::string press =
        R"({"id":2,"method":"desktop_ax_action","params":{"token":"e0.0","action":"invoke"}})";
    platform.input.line(R"({"id":1,"method":"desktop_ax_get_state"})");
    platform.input.line(press);
    platform.input.line(press);  // the press has changed the tree
    platform.input.line(press);  // and so has the script
    EXPECT_EQ(runProcess(platform), 0);

    std::vector<Json> answers;
    for (const std::string& line : platform.output.lines()) answers.push_back(*parseJson(line));
    ASSERT_EQ(answers.size(), 4u);
    EXPECT_EQ(answers[0]["result"]["revision"], "f026afa6555dd04e");
    EXPECT_EQ(answers[1]["result"]["element"]["name"], "OK");
    EXPECT_EQ(answers[2]["error"]["code"], "COMPUTER_CONTROL_STALE_SNAPSHOT");
    EXPECT_EQ(answers[3]["error"]["code"], "COMPUTER_CONTROL_STALE_SNAPSHOT");
    EXPECT_EQ(ok.timesPerformed("AXPress"), 1);
    EXPECT_THAT(desktop.logLines(), ElementsAre("performAction AXButton AXPress"));
}

}  // namespace
}  // namespace quil
