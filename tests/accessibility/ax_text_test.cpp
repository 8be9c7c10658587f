#include "accessibility/ax_text.h"

#include <gtest/gtest.h>

#include "platform/simulated/simulated_platform.h"

namespace quil {
namespace {

class AxText : public testing::Test {
  protected:
    std::string text(std::int64_t maximumNodes = kAxMaximumNodes,
                     std::int64_t maximumChars = kAxMaximumChars) {
        return axText(platform.accessibility(), 100, maximumNodes, maximumChars);
    }

    SimulatedDesktop desktop;
    SimulatedPlatform platform{desktop};
    simulated::Application& notes = desktop.application(100, "Notes");
    simulated::Window& window = notes.window("Main", {0, 0, 10, 10});
};

TEST_F(AxText, OneLinePerElementDepthFirst) {
    auto& group = window.element("AXGroup").title("").description("a\nb").subrole("AX\nSub");
    group.element("AXTextField", "Name").value("Ada\r\nL").subrole("AXSearchField");
    group.element("AXSlider").value(5);
    window.element("AXButton", std::string(800, 'x')).withoutAttribute("AXRole");
    EXPECT_EQ(text(),
              "AXWindow | Main\nAXGroup | a b | (AX\nSub)\n"
              "AXTextField | Name | Ada\r L | (AXSearchField)\nAXSlider\nAXUnknown | " +
                  std::string(800, 'x'));
}

TEST_F(AxText, StartsAtTheApplicationWithoutAFocusedWindowOrPermission) {
    notes.focusWindow(nullptr);
    EXPECT_EQ(text(), "AXApplication | Notes\nAXWindow | Main");
    desktop.permissions.accessibility = false;
    EXPECT_EQ(text(), "AXUnknown");
}

TEST_F(AxText, EndsSilentlyAtItsLimits) {
    for (int i = 0; i < 3; ++i) window.element("AXGroup").element("AXButton", "OK");
    EXPECT_EQ(text(0), "");
    EXPECT_EQ(text(kAxMaximumNodes, 0), "");
    EXPECT_EQ(text(3), "AXWindow | Main\nAXGroup\nAXButton | OK");
    EXPECT_EQ(text(kAxMaximumNodes, 20), "AXWindow | Main\nAXGr");
    EXPECT_EQ(text(kAxMaximumNodes, 16), "AXWindow | Main");

    simulated::Element* deepest = &window.element("AXDepth1");
    for (int depth = 2; depth <= 40; ++depth) {
        deepest = &deepest->element("AXDepth" + std::to_string(depth));
    }
    EXPECT_NE(text().find("AXDepth39"), std::string::npos);
    EXPECT_EQ(text().find("AXDepth40"), std::string::npos);
}

}  // namespace
}  // namespace quil
