#include "accessibility/ax_attributes.h"

#include <gtest/gtest.h>

#include <cmath>

#include "platform/simulated/simulated_platform.h"

namespace quil {
namespace {

class AxAttributes : public testing::Test {
  protected:
    SimulatedDesktop desktop;
    SimulatedPlatform platform{desktop};
    Accessibility& accessibility = platform.accessibility();
    simulated::Application& application = desktop.application(100, "Notes");
    simulated::Element& element = application.window("Main", {0, 0, 100, 100}).element("AXButton");
};

TEST_F(AxAttributes, StringsAreReadOnlyAsStrings) {
    element.title("");
    EXPECT_EQ(axString(accessibility, element.ref(), "AXTitle"), "");
    element.attribute("AXTitle", 42);
    EXPECT_FALSE(axString(accessibility, element.ref(), "AXTitle"));
    element.title("Go").attributeResult("AXTitle", kAxFailure);
    EXPECT_FALSE(axString(accessibility, element.ref(), "AXTitle"));
    element.emptyAttribute("AXDescription");
    EXPECT_FALSE(axString(accessibility, element.ref(), "AXDescription"));
    EXPECT_FALSE(axString(accessibility, element.ref(), "AXIdentifier"));
}

TEST_F(AxAttributes, ValuesOfEveryType) {
    struct Case {
        Value value;
        std::optional<std::string> text;
    };
    const Case cases[] = {
        {"", ""},
        {42, "42"},
        {0, "0"},
        {true, "1"},
        {false, "0"},
        {0.1, "0.1"},
        {100000.0, "100000"},
        {-2.5, "-2.5"},
        {1e20, "1e+20"},
        {OpaqueValue{"CFRange"}, {}},
        {Value::List{Value("a")}, {}},
        {Point{1, 2}, {}},
    };
    for (const Case& c : cases) {
        element.value(c.value);
        EXPECT_EQ(axValueString(accessibility, element.ref()), c.text) << c.text.value_or("absent");
    }
}

TEST_F(AxAttributes, BoundsRoundHalvesAwayFromZero) {
    element.bounds({10.5, -3.5, 100.4, 20.6});
    EXPECT_EQ(axBounds(accessibility, element.ref()), (AxBounds{11, -4, 100, 21}));
    element.bounds({-10.5, 0.49, 0.5, 1.5});
    EXPECT_EQ(axBounds(accessibility, element.ref()), (AxBounds{-11, 0, 1, 2}));
    for (const double impossible : {double{NAN}, double{INFINITY}, 9.3e18, -9.3e18}) {
        element.bounds({0, 0, impossible, 1});
        EXPECT_FALSE(axBounds(accessibility, element.ref())) << impossible;
    }
    element.bounds({0, 0, 1, 1}).withoutAttribute("AXSize");
    EXPECT_FALSE(axBounds(accessibility, element.ref()));
    element.bounds({0, 0, 1, 1}).attribute("AXPosition", Size{0, 0});
    EXPECT_FALSE(axBounds(accessibility, element.ref()));
}

TEST_F(AxAttributes, EnabledIsABooleanOrAbsent) {
    EXPECT_FALSE(axEnabled(accessibility, element.ref()));
    element.enabled(false);
    EXPECT_EQ(axEnabled(accessibility, element.ref()), false);
    element.attribute("AXEnabled", 1);
    EXPECT_FALSE(axEnabled(accessibility, element.ref()));
}

TEST_F(AxAttributes, ListsAreWholeOrEmpty) {
    EXPECT_TRUE(axActionNames(accessibility, element.ref()).empty());
    element.action("AXPress").action("AXShowMenu");
    EXPECT_EQ(axActionNames(accessibility, element.ref()),
              (std::vector<std::string>{"AXPress", "AXShowMenu"}));
    element.actionNames(Value::List{Value("AXPress"), Value(1)});
    EXPECT_TRUE(axActionNames(accessibility, element.ref()).empty());
    element.actionNamesResult(kAxCannotComplete);
    EXPECT_TRUE(axActionNames(accessibility, element.ref()).empty());

    element.attribute("AXChildren", Value::List{Value(element.ref()), Value("x")});
    EXPECT_TRUE(axChildren(accessibility, element.ref()).empty());
    element.attribute("AXChildren", "none");
    EXPECT_TRUE(axChildren(accessibility, element.ref()).empty());
}

TEST_F(AxAttributes, FocusedWindowFallsBackToTheApplication) {
    const auto title = [&](const ElementRef& e) { return axString(accessibility, e, "AXTitle"); };
    EXPECT_EQ(title(axFocusedWindow(accessibility, 100)), "Main");
    application.focusWindow(nullptr);
    EXPECT_EQ(axString(accessibility, axFocusedWindow(accessibility, 100), "AXRole"),
              "AXApplication");
    application.attribute("AXFocusedWindow", "not an element");
    EXPECT_EQ(axString(accessibility, axFocusedWindow(accessibility, 100), "AXRole"),
              "AXApplication");
    ASSERT_TRUE(axFocusedWindow(accessibility, 4242));
    EXPECT_FALSE(axString(accessibility, axFocusedWindow(accessibility, 4242), "AXRole"));
}

TEST_F(AxAttributes, FieldsAreClippedByCharacters) {
    const std::string thumb = "\U0001F44D\U0001F3FD";
    std::string thumbs;
    for (int i = 0; i < 500; ++i) thumbs += thumb;
    EXPECT_EQ(clipAxField(thumbs), thumbs);
    EXPECT_EQ(clipAxField(thumbs + "x"), thumbs);
    EXPECT_FALSE(clipAxField(""));
    EXPECT_FALSE(clipAxField({}));
}

}  // namespace
}  // namespace quil
