#include "screen/windows.h"

#include <gtest/gtest.h>

#include "platform/simulated/simulated_platform.h"

namespace quil {
namespace {

class Windows : public testing::Test {
  protected:
    SimulatedDesktop desktop;
    SimulatedPlatform platform{desktop};
    simulated::Application& notes = desktop.application(100, "Notes");
};

TEST_F(Windows, OneEntryPerOrdinaryWindowFrontToBack) {
    notes.bundleIdentifier("org.example.notes").executablePath("/opt/notes");
    auto& first = notes.window("First", {1.5, 2, 30, 40});
    notes.window("Floating", {0, 0, 10, 10}).layer(3);
    notes.window("Hidden", {0, 0, 10, 10}).onScreen(false);
    notes.window("Wallpaper", {0, 0, 10, 10}).desktopElement();
    auto& second = notes.window("Second", {0, 0, 10, 10});
    const Json windows = windowsList(platform);
    ASSERT_EQ(windows.size(), 2u);
    Json expected = *parseJson(R"({"name": "First", "owner": "Notes", "pid": 100,
        "bounds": {"X": 1.5, "Y": 2, "Width": 30, "Height": 40},
        "bundleIdentifier": "org.example.notes", "executablePath": "/opt/notes"})");
    expected["id"] = first.number();
    EXPECT_EQ(windows[0], expected);
    EXPECT_EQ(windows[1]["id"], second.number());
}

TEST_F(Windows, MissingAndMistypedMembersTakeTheirDefaults) {
    auto& window = notes.window("Main", {0, 0, 10, 10});
    window.info(kWindowLayer, "top").info(kWindowNumber, "seven").withoutInfo(kWindowName);
    window.info(kWindowOwnerName, 1).info(kWindowOwnerPid, 4242).info(kWindowBounds, "wide");
    EXPECT_EQ(windowsList(platform),
              *parseJson(R"([{"id": 0, "name": "", "owner": "", "pid": 4242}])"));
    window.info(kWindowOwnerPid, 1e15).withoutInfo(kWindowLayer);
    EXPECT_EQ(windowsList(platform)[0]["pid"], 1000000000000000);
}

TEST_F(Windows, NoListIsAnEmptyList) {
    notes.window("Main", {0, 0, 10, 10});
    desktop.on("copyWindowInfo").nth(1).fails();
    EXPECT_EQ(windowsList(platform), Json::array());
    EXPECT_EQ(windowsList(platform).size(), 1u);
}

}  // namespace
}  // namespace quil
