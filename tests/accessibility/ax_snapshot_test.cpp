#include "accessibility/ax_snapshot.h"

#include <gtest/gtest.h>

#include "platform/simulated/simulated_platform.h"
#include "text/characters.h"

namespace quil {
namespace {

class AxSnapshotTest : public testing::Test {
  protected:
    AxSnapshot observe(std::int64_t maximumNodes = kAxMaximumNodes,
                       std::int64_t maximumChars = kAxMaximumChars) {
        return *axSnapshot(platform.accessibility(), last, 100, maximumNodes, maximumChars);
    }

    SimulatedDesktop desktop;
    SimulatedPlatform platform{desktop};
    LastAxSnapshot last;
    simulated::Application& application = desktop.application(100, "Notes");
};

TEST(Fnv1a, KnownHashes) {
    EXPECT_EQ(fnv1a(""), "cbf29ce484222325");
    EXPECT_EQ(fnv1a("a"), "af63dc4c8601ec8c");
    EXPECT_EQ(fnv1a("e0|AXGroup|5||||||\n"), "a884ebc75fe980f");
}

TEST_F(AxSnapshotTest, AWindowWithOneButton) {
    auto& window = application.window("Main", {0, 25, 800, 600});
    window.withoutAttribute("AXEnabled").action("AXRaise");
    window.element("AXButton", "OK").enabled(true).bounds({10, 40, 80, 24}).action("AXPress");

    const AxSnapshot snapshot = observe();
    EXPECT_EQ(snapshot.revision, "f026afa6555dd04e");
    EXPECT_EQ(snapshot.axText, "AXWindow | Main\nAXButton | OK");
    EXPECT_FALSE(snapshot.truncated);
    ASSERT_EQ(snapshot.nodes.size(), 2u);
    EXPECT_EQ(axNodeJson(snapshot.nodes[0]), *parseJson(R"({"token": "e0", "role": "AXWindow",
        "name": "Main", "bounds": {"x": 0, "y": 25, "width": 800, "height": 600},
        "actions": ["AXRaise"]})"));
    EXPECT_EQ(axNodeJson(snapshot.nodes[1]), *parseJson(R"({"token": "e0.0", "role": "AXButton",
        "name": "OK", "enabled": true, "bounds": {"x": 10, "y": 40, "width": 80, "height": 24},
        "actions": ["AXPress"]})"));
}

TEST_F(AxSnapshotTest, EveryRecordedFieldChangesTheRevision) {
    auto& button = application.window("Main", {0, 0, 10, 10}).element("AXButton", "OK");
    std::string revision = observe().revision;
    EXPECT_EQ(observe().revision, revision);
    const std::function<void()> changes[] = {
        [&] { button.attribute("AXRole", "AXCheckBox"); },
        [&] { button.title("Cancel"); },
        [&] { button.description("d"); },
        [&] { button.value(0); },
        [&] { button.identifier("i"); },
        [&] { button.enabled(true); },
        [&] { button.enabled(false); },
        [&] {
            button.bounds({1, 2, 3, 4});
        },
        [&] { button.action("AXPress"); },
        [&] { button.element("AXGroup"); },
    };
    int index = 0;
    for (const auto& change : changes) {
        change();
        const std::string changed = observe().revision;
        EXPECT_NE(changed, revision) << "change " << index;
        revision = changed;
        ++index;
    }
}

TEST_F(AxSnapshotTest, NodeLimit) {
    auto& window = application.window("Main", {0, 0, 10, 10});
    for (int i = 0; i < 10; ++i) window.element("AXGroup").element("AXButton");
    EXPECT_FALSE(observe(21).truncated);
    EXPECT_EQ(observe(21).nodes.back().token, "e0.9.0");
    const AxSnapshot cut = observe(20);
    EXPECT_TRUE(cut.truncated);
    EXPECT_EQ(cut.nodes.back().token, "e0.9");
    EXPECT_EQ(cut.elements.size(), 20u);
    const AxSnapshot none = observe(0);
    EXPECT_TRUE(none.truncated);
    EXPECT_EQ(none.revision, "cbf29ce484222325");
    EXPECT_EQ(none.axText, "");
    ASSERT_TRUE(last);
    EXPECT_TRUE(last->nodes.empty());
}

TEST_F(AxSnapshotTest, DepthLimit) {
    simulated::Element* deepest = &application.window("Main", {0, 0, 10, 10});
    for (int depth = 1; depth < kAxMaximumDepth; ++depth) deepest = &deepest->element("AXGroup");
    EXPECT_FALSE(observe().truncated);
    EXPECT_EQ(observe().nodes.size(), 40u);
    deepest->element("AXGroup");
    EXPECT_TRUE(observe().truncated);
    EXPECT_EQ(observe().nodes.size(), 40u);
}

TEST_F(AxSnapshotTest, TextBudget) {
    auto& window = application.window("Main", {0, 0, 10, 10});  // 15 characters and a line feed
    window.element("AXButton", "Über alles");
    const AxSnapshot cut = observe(100, 16 + 12);
    EXPECT_EQ(cut.axText, "AXWindow | Main\nAXButton | Ü");
    EXPECT_FALSE(cut.truncated);
    EXPECT_EQ(cut.nodes[1].name, "Über alles");
    EXPECT_TRUE(observe(100, 16).truncated);
    EXPECT_EQ(observe(100, 16).axText, "AXWindow | Main");
    EXPECT_EQ(observe(100, 5).axText, "AXWin");
    EXPECT_TRUE(observe(100, 0).nodes.empty());
}

TEST_F(AxSnapshotTest, FieldBudgetRefusesTheElementAfterTheOneThatSpentIt) {
    auto& window = application.window("", {0, 0, 10, 10});  // AXWindow: 8 characters
    // 500 + 7 characters each; the text budget is kept out of the way.
    for (int i = 0; i < 500; ++i) window.element("AXGroup").identifier(std::string(600, 'i'));
    const AxSnapshot snapshot = observe();
    EXPECT_TRUE(snapshot.truncated);
    EXPECT_EQ(snapshot.nodes.size(), 1u + 395u);  // 8 + 394 * 507 < 200000 <= 8 + 395 * 507
}

TEST_F(AxSnapshotTest, FieldsAreClippedAndLinesStayLines) {
    auto& window = application.window("a\nb\r", {0, 0, 10, 10});
    window.element("AXTextArea").value(std::string(600, 'v'));
    const AxSnapshot snapshot = observe();
    EXPECT_EQ(snapshot.nodes[0].name, "a\nb\r");
    EXPECT_EQ(snapshot.nodes[1].value, std::string(500, 'v'));
    EXPECT_EQ(snapshot.axText, "AXWindow | a b\r\nAXTextArea | " + std::string(500, 'v'));
}

TEST_F(AxSnapshotTest, WithoutPermissionThereIsOneUnknownElement) {
    application.window("Main", {0, 0, 10, 10});
    desktop.permissions.accessibility = false;
    const AxSnapshot snapshot = observe();
    ASSERT_EQ(snapshot.nodes.size(), 1u);
    EXPECT_EQ(axNodeJson(snapshot.nodes[0]), *parseJson(R"({"token": "e0", "role": "AXUnknown"})"));
}

}  // namespace
}  // namespace quil
