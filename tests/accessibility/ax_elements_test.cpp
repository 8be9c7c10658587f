#include "accessibility/ax_elements.h"

#include <gtest/gtest.h>

#include "platform/simulated/simulated_platform.h"

namespace quil {
namespace {

class AxElements : public testing::Test {
  protected:
    void observe() { axSnapshot(platform.accessibility(), last, 100); }

    /// The message of the error that the operation throws; empty when it throws none.
    template <typename Operation>
    std::string error(Operation operation) {
        try {
            operation();
        } catch (const AxError& thrown) {
            return thrown.message();
        }
        return "";
    }

    std::string act(const std::string& token, const std::string& action,
                    std::optional<std::string> value = {},
                    std::optional<std::int64_t> amount = {}) {
        return error([&] { performAxAction(platform, last, token, action, value, amount); });
    }

    SimulatedDesktop desktop;
    SimulatedPlatform platform{desktop};
    LastAxSnapshot last;
    simulated::Application& application = desktop.application(100, "Notes").activate();
    simulated::Element& window = application.window("Main", {0, 0, 800, 600});
    simulated::Element& button =
        window.element("AXButton", "OK").bounds({10, 40, 80, 25}).action("AXPress");
    simulated::Element& field = window.element("AXTextArea").value(std::string(800, 'x'));
};

TEST_F(AxElements, FailuresComeInTheirOrder) {
    EXPECT_EQ(act("e0", "Invoke"), "observe the accessibility tree first");
    observe();
    EXPECT_EQ(act("e0.7", "Invoke"), "unknown element token");
    EXPECT_EQ(act("e0.0", "Invoke"), "unknown ax action: Invoke");
    EXPECT_EQ(act("e0.1", "set_value"), "value is required for set_value");
    button.title("Cancel");
    EXPECT_EQ(act("e0.9", "Invoke"), "the accessibility tree changed; observe again");
    // The refusal observed the new tree, so the same token is good again.
    EXPECT_EQ(act("e0.0", "invoke"), "");
    EXPECT_EQ(button.timesPerformed("AXPress"), 1);
    application.quit();
    EXPECT_EQ(act("e0", "invoke"), "no frontmost application");
}

TEST_F(AxElements, ATokenSurvivesOtherObservationsOfAnUnchangedTree) {
    observe();
    observe();
    EXPECT_EQ(act("e0.0", "invoke"), "");
    desktop.application(200, "Other").activate().window("Elsewhere", {0, 0, 10, 10});
    EXPECT_EQ(act("e0.0", "invoke"), "the accessibility tree changed; observe again");
    EXPECT_EQ(button.timesPerformed("AXPress"), 1);
}

TEST_F(AxElements, ElementsBeyondTheLimitsAreUnknown) {
    for (int i = 0; i < 4000; ++i) window.element("AXGroup");
    observe();
    EXPECT_EQ(error([&] { currentAxElement(platform, last, "e0.3998"); }), "");
    EXPECT_EQ(error([&] { currentAxElement(platform, last, "e0.3999"); }), "unknown element token");
}

TEST_F(AxElements, ScrollPages) {
    struct Case {
        std::optional<std::int64_t> amount;
        int up;
        int down;
    };
    const Case cases[] = {{{}, 0, 1},  {0, 0, 1},    {3, 0, 3},          {-3, 3, 0},
                          {25, 0, 10}, {-25, 10, 0}, {INT64_MIN, 10, 0}, {INT64_MAX, 0, 10}};
    field.action("AXScrollUpByPage").action("AXScrollDownByPage");
    observe();
    int up = 0;
    int down = 0;
    for (const Case& c : cases) {
        EXPECT_EQ(act("e0.1", "scroll", {}, c.amount), "");
        EXPECT_EQ(field.timesPerformed("AXScrollUpByPage") - up, c.up) << c.amount.value_or(1);
        EXPECT_EQ(field.timesPerformed("AXScrollDownByPage") - down, c.down)
            << c.amount.value_or(1);
        up = field.timesPerformed("AXScrollUpByPage");
        down = field.timesPerformed("AXScrollDownByPage");
    }
    field.actionResult("AXScrollDownByPage", kAxCannotComplete, 2);
    EXPECT_EQ(act("e0.1", "scroll", {}, 5), "AXError -25204");
    EXPECT_EQ(field.timesPerformed("AXScrollDownByPage") - down, 2);
}

TEST_F(AxElements, SettingAndReadingValues) {
    observe();
    const AxValueOutcome outcome = readAxValue(platform, last, "e0.1");
    EXPECT_EQ(outcome.value, std::string(800, 'x'));
    EXPECT_EQ(outcome.node.value, std::string(500, 'x'));
    EXPECT_EQ(outcome.target.windowTitle, "Main");
    EXPECT_FALSE(readAxValue(platform, last, "e0.0").value);
    EXPECT_EQ(act("e0.1", "set_value", ""), "");
    EXPECT_EQ(field.text("AXValue"), "");
    EXPECT_EQ(act("e0.1", "set_value", "late"), "the accessibility tree changed; observe again");
    EXPECT_EQ(field.text("AXValue"), "");
    field.setResult("AXValue", kAxIllegalArgument);
    EXPECT_EQ(act("e0.1", "set_value", "x"), "AXError -25201");
}

TEST_F(AxElements, CentreIsReadAfresh) {
    observe();
    const Point centre = axElementCenter(platform, last, "e0.0");
    EXPECT_EQ(centre, (Point{50, 52.5}));
    EXPECT_EQ(error([&] { axElementCenter(platform, last, "e0.1"); }), "element has no bounds");
}

TEST_F(AxElements, Subtrees) {
    std::vector<AxNode> nodes;
    for (const char* token : {"e0", "e0.1", "e0.1.0", "e0.10", "e0.10.1"}) {
        nodes.emplace_back().token = token;
    }
    const auto tokens = [&](const std::string& root) {
        std::string joined;
        for (const AxNode& node : axSubtreeNodes(nodes, root).value_or(std::vector<AxNode>{})) {
            joined += node.token + ' ';
        }
        return joined;
    };
    EXPECT_EQ(tokens("e0.1"), "e0.1 e0.1.0 ");
    EXPECT_EQ(tokens("e0.10"), "e0.10 e0.10.1 ");
    EXPECT_EQ(tokens("e0"), "e0 e0.1 e0.1.0 e0.10 e0.10.1 ");
    EXPECT_FALSE(axSubtreeNodes(nodes, "e0.9"));
    EXPECT_FALSE(axSubtreeNodes(nodes, "e0.1."));
}

}  // namespace
}  // namespace quil
