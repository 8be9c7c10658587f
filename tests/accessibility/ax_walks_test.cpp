#include <gtest/gtest.h>

#include <cmath>

#include "accessibility/ax_snapshot.h"
#include "accessibility/ax_text.h"
#include "platform/simulated/platform.h"

namespace quil {
namespace {

/// What no host can ask for and no scenario can say: other limits than the usual ones, places that
/// are not numbers, an observation without the permission.
class AxWalks : public testing::Test {
  protected:
    AxSnapshot observe(std::int64_t nodes, std::int64_t chars = kAxMaximumChars) {
        return *axSnapshot(platform.accessibility(), last, 100, nodes, chars);
    }
    std::string text(std::int64_t nodes, std::int64_t chars = kAxMaximumChars) {
        return axText(platform.accessibility(), 100, nodes, chars);
    }

    SimulatedDesktop desktop;
    SimulatedPlatform platform{desktop};
    LastAxSnapshot last;
    simulated::Application& application = desktop.application(100, "Notes");
    simulated::Window& window = application.window("Main", {0, 0, 10, 10});
};

TEST_F(AxWalks, EndAtTheNodeLimit) {
    for (int i = 0; i < 10; ++i) window.element("AXGroup").element("AXButton");
    EXPECT_FALSE(observe(21).truncated);
    EXPECT_EQ(observe(21).nodes.back().token, "e0.9.0");
    const AxSnapshot cut = observe(20);
    EXPECT_TRUE(cut.truncated);
    EXPECT_EQ(cut.nodes.back().token, "e0.9");
    EXPECT_EQ(cut.elements.size(), 20u);
    EXPECT_EQ(text(3), "AXWindow | Main\nAXGroup\nAXButton");

    const AxSnapshot none = observe(0);
    EXPECT_TRUE(none.truncated);
    EXPECT_EQ(none.revision, "cbf29ce484222325");
    ASSERT_TRUE(last);
    EXPECT_TRUE(last->nodes.empty());
    EXPECT_EQ(none.axText + text(0), "");
}

TEST_F(AxWalks, EndAtTheFortiethLevel) {
    simulated::Element* deepest = &window;
    for (int depth = 1; depth <= 40; ++depth) {
        deepest = &deepest->element("AXDepth" + std::to_string(depth));
    }
    EXPECT_EQ(observe(100).nodes.back().role, "AXDepth39");
    EXPECT_TRUE(text(100).ends_with("\nAXDepth39"));
}

TEST_F(AxWalks, EndWithTheTextBudget) {
    window.element("AXButton", "Über alles");
    for (const auto& [chars, expected, truncated] :
         {std::tuple(28, "AXWindow | Main\nAXButton | Ü", false),
          std::tuple(16, "AXWindow | Main", true), std::tuple(5, "AXWin", true),
          std::tuple(0, "", true)}) {
        const AxSnapshot snapshot = observe(100, chars);
        EXPECT_EQ(snapshot.axText, expected);
        EXPECT_EQ(text(100, chars), expected);
        EXPECT_EQ(snapshot.truncated, truncated) << chars;
    }
    EXPECT_EQ(observe(100, 28).nodes[1].name, "Über alles");
}

TEST_F(AxWalks, LeaveOutPlacesThatAreNoNumbers) {
    for (const double impossible : {double{NAN}, double{INFINITY}, double{-INFINITY}}) {
        window.bounds({0, impossible, 1, 1});
        EXPECT_FALSE(observe(1).nodes[0].bounds) << impossible;
    }
    window.value(std::copysign(NAN, -1.0));
    EXPECT_EQ(observe(1).nodes[0].value, "nan");
}

TEST_F(AxWalks, SeeOneNobodyWithoutPermission) {
    desktop.permissions.accessibility = false;
    const AxSnapshot snapshot = observe(100);
    ASSERT_EQ(snapshot.nodes.size(), 1u);
    EXPECT_EQ(axNodeJson(snapshot.nodes[0]), (Json{{"token", "e0"}, {"role", "AXUnknown"}}));
}

}  // namespace
}  // namespace quil
