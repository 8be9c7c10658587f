#include <gmock/gmock.h>

#include <map>

#include "platform/accessibility.h"
#include "platform/linux/accessibility/action_names.h"
#include "platform/linux/accessibility/attributes.h"
#include "platform/linux/accessibility/scroll_bars.h"

namespace quil::linux_platform {
namespace {

using ::testing::ElementsAre;

/// Facts of which all have been asked for, and everything not said here is empty.
Facts known(AtspiRole role, States states = {}, Interfaces interfaces = {}) {
    Facts facts;
    for (unsigned fact = 0; fact < kFactCount; ++fact) facts.received(static_cast<Fact>(fact), 0);
    facts.role = role;
    facts.states = states;
    facts.interfaces = interfaces;
    return facts;
}

std::optional<Value> read(const Facts& facts, std::string_view name) {
    const Attribute* attribute = findAttribute(name);
    if (!attribute || !attribute->needs(facts).isEmpty()) return {};
    std::optional<Value> value;
    const ElementMaker noMaker = [](const Reference&) { return nullptr; };
    return attribute->read(facts, noMaker, value) == 0 ? value : std::nullopt;
}

TEST(AtspiRoles, DependOnWhatIsAround) {
    const AtspiRole unheardOf{9999};
    const struct {
        AtspiRole role;
        RoleContext context;
        std::string_view expected;
        std::string_view subrole;
    } cases[] = {
        {AtspiRole::alert, {.isChildOfApplication = true}, "AXWindow", "AXDialog"},
        {AtspiRole::filler, {.isChildOfApplication = true}, "AXWindow", "AXDialog"},
        {AtspiRole::alert, {}, "AXGroup", "AXApplicationAlert"},
        {AtspiRole::comboBox, {}, "AXPopUpButton", ""},
        {AtspiRole::comboBox, {.hasEditableText = true}, "AXComboBox", ""},
        {AtspiRole::menu, {}, "AXMenu", ""},
        {AtspiRole::menu, {.isChildOfMenuBar = true}, "AXMenuBarItem", ""},
        {AtspiRole::text, {}, "AXTextField", ""},
        {AtspiRole::entry, {.isMultiLine = true}, "AXTextArea", ""},
        {AtspiRole::pageTab, {}, "AXRadioButton", "AXTabButton"},
        {AtspiRole::documentEmail, {.isMultiLine = true}, "AXGroup", ""},
        {AtspiRole{0}, {}, "AXUnknown", ""},
        {AtspiRole{129}, {}, "AXMenuButton", ""},
        {unheardOf, {}, "AXUnknown", ""},
    };
    for (const auto& [role, context, expected, subrole] : cases) {
        const ProtocolRole found = protocolRole(role, context);
        EXPECT_EQ(found.role, expected) << static_cast<unsigned>(role);
        EXPECT_EQ(found.subrole, subrole) << static_cast<unsigned>(role);
    }
}

TEST(AtspiActions, AreNamedForHosts) {
    using Names = std::vector<std::string>;
    const struct {
        Names toolkit;
        Names protocol;
        AtspiRole role = AtspiRole::pushButton;
    } cases[] = {
        {{"click"}, {"AXPress"}},
        {{"Press", "SetFocus"}, {"AXPress", "AXSetFocus"}},
        {{"expand or contract", "edit", "activate"}, {"AXExpandOrContract", "AXEdit", "AXPress"}},
        {{"activate", "click"}, {"AXActivate", "AXPress"}},
        {{"window.close", "show-menu", "showContextMenu"},
         {"AXWindowClose", "AXShowMenu", "AXShowContextMenu"}},
        // A name that is taken, or that there is none of, cannot be asked for.
        {{"jump", "", "jump"}, {"AXPress", "", "AXJump"}},
        {{"open", "Open", "open"}, {"AXPress", "AXOpen", ""}},
        {{"doDefault", "showContextMenu"}, {"AXPress", "AXShowContextMenu"}, AtspiRole::pageTab},
        {{"doDefault", "click"}, {"AXDoDefault", "AXPress"}},
        {{"doDefault"}, {"AXDoDefault"}, AtspiRole::documentWeb},
        {{"größer"}, {"AXGrößer"}},
        // Qt Quick does nothing on "Press", and Swing's fields have actions for the selection.
        {{"Toggle", "Press"}, {"AXPress", ""}, AtspiRole::checkBox},
        {{"Press"}, {"AXPress"}, AtspiRole::checkBox},
        {{"unselect", "select-all"}, {"AXUnselect", "AXSelectAll"}, AtspiRole::text},
        {{"activate"}, {"AXPress"}, AtspiRole::entry},
        {{"ShowMenu", "Press"}, {"AXShowMenu", "AXPress"}, AtspiRole::comboBox},
        {{"ShowMenu"}, {"AXPress"}, AtspiRole::menuItem},
        {{"togglePopup"}, {"AXPress"}, AtspiRole::comboBox},
        {{"expand"}, {"AXPress"}},
        {{"expand"}, {"AXExpand"}, AtspiRole::panel},
        {{""}, {"AXPress"}, AtspiRole::menuItem},
        {{""}, {""}, AtspiRole::panel},
        {{"doDefault", "scrollDown", "Scroll Up"},
         {"AXDoDefault", "AXScrollDownByPage", "AXScrollUpByPage"},
         AtspiRole::panel},
    };
    for (const auto& [toolkit, protocol, role] : cases) {
        EXPECT_EQ(protocolNames(toolkit, role), protocol);
    }

    Facts pane = known(AtspiRole::scrollPane);
    pane.scrollBar = {":1.1", "/bar"};
    EXPECT_THAT(actionNames(pane), ElementsAre("AXScrollUpByPage", "AXScrollDownByPage"));
}

TEST(AtspiValues, AreTextsNumbersOrStates) {
    constexpr auto text = AtspiInterface::text;
    constexpr auto value = AtspiInterface::value;
    constexpr auto checked = AtspiState::checked;
    const struct {
        const char* what;
        AtspiRole role;
        States states;
        Interfaces interfaces;
        std::optional<Value> expected;
    } cases[] = {
        {"a field", AtspiRole::entry, {}, {text}, Value("hé")},
        {"a field without text", AtspiRole::entry, {}, {}, {}},
        {"a label that can be edited", AtspiRole{29}, {AtspiState::editable}, {text}, Value("hé")},
        {"a spin button", AtspiRole{52}, {AtspiState::editable}, {text, value}, Value(2.5)},
        {"a spreadsheet's cell", AtspiRole{56}, {AtspiState::editable}, {text, value}, Value("hé")},
        {"a cell with a number only", AtspiRole{56}, {}, {value}, Value(2.5)},
        {"a menu item", AtspiRole::menuItem, {}, {text, value}, {}},
        {"a menu item with a mark", AtspiRole::menuItem, {AtspiState::checkable}, {}, Value(0)},
        {"a password", AtspiRole::passwordText, {}, {text}, Value("••")},
        {"a slider", AtspiRole{51}, {}, {value}, Value(2.5)},
        {"a check box", AtspiRole::checkBox, {checked}, {}, Value(1)},
        {"not checked", AtspiRole::checkBox, {AtspiState::pressed}, {}, Value(0)},
        {"mixed", AtspiRole::checkBox, {checked, AtspiState::indeterminate}, {}, Value(2)},
        {"a toggle", AtspiRole::toggleButton, {AtspiState::pressed}, {}, Value(1)},
        {"a tab", AtspiRole::pageTab, {AtspiState::selected}, {}, Value(1)},
        {"Qt's tab in front", AtspiRole::pageTab, {AtspiState::focused}, {}, Value(1)},
        {"a tab with the focus",
         AtspiRole::pageTab,
         {AtspiState::focused, AtspiState::selectable},
         {},
         Value(0)},
        {"an open section",
         AtspiRole::toggleButton,
         {AtspiState::expandable, AtspiState::expanded},
         {},
         Value(1)},
        {"a button", AtspiRole{43}, {checked}, {value}, {}},
    };
    for (const auto& [what, role, states, interfaces, expected] : cases) {
        Facts facts = known(role, states, interfaces);
        facts.text = "hé";
        facts.number = 2.5;
        facts.hasRange = true;
        EXPECT_EQ(read(facts, "AXValue"), expected) << what;
    }
    Facts date = known(AtspiRole::spinButton, {}, {text, value});
    date.text = "3 Feb";
    EXPECT_EQ(read(date, "AXValue"), Value("3 Feb"));
    Facts combo = known(AtspiRole::comboBox, {}, {text});
    combo.text = "\uFFFC";
    EXPECT_EQ(read(combo, "AXValue"), std::nullopt);
    combo.selection = "Pear";
    EXPECT_EQ(read(combo, "AXValue"), Value("Pear"));
    Facts page = known(AtspiRole::documentWeb, {}, {text});
    page.text = "\uFFFC\n\uFFFC";
    EXPECT_EQ(read(page, "AXValue"), std::nullopt);
    page.text += "a";
    EXPECT_EQ(read(page, "AXValue"), Value(page.text));
}

TEST(AtspiValues, ShowTextThatNoNameAndNoChildShows) {
    const struct {
        const char* what;
        std::string name;
        std::string text;
        std::int32_t children;
        bool isShown;
    } cases[] = {
        {"a paragraph", "", "words", 0, true},
        {"with a name", "words", "words", 0, false},
        {"in pieces that are children", "", "words", 2, false},
        {"around a link", "", "see \uFFFC there", 1, true},
        {"around pieces and a link", "", "see \uFFFC there", 3, false},
        {"nothing but elements", "", "\uFFFC \uFFFC", 2, false},
        {"empty", "", "", 0, false},
    };
    for (const auto& [what, name, text, children, isShown] : cases) {
        Facts facts = known(AtspiRole{73}, {}, {AtspiInterface::text});
        facts.name = name;
        facts.text = text;
        facts.childCount = children;
        EXPECT_EQ(read(facts, "AXValue").has_value(), isShown) << what;
    }
}

TEST(AtspiExtents, HaveAnArea) {
    Facts facts = known(AtspiRole::entry, {AtspiState::showing}, {AtspiInterface::component});
    facts.extents = {-5, 7, 30, 0};
    EXPECT_EQ(read(facts, "AXPosition"), std::nullopt);
}

TEST(AtspiFacts, TellWhetherTheElementIsThere) {
    Facts facts;
    EXPECT_EQ(elementCode(facts), kAxSuccess);
    facts.received(Fact::states, kAxAttributeUnsupported);
    EXPECT_EQ(elementCode(facts), kAxInvalidUIElement);
    facts.received(Fact::states, kAxCannotComplete);
    EXPECT_EQ(elementCode(facts), kAxCannotComplete);
}

TEST(AtspiScrollBars, AreFoundWhereToolkitsPutThem) {
    std::map<std::string, Facts> tree;
    const auto add = [&](const std::string& path, AtspiRole role, States states,
                         Interfaces interfaces, const std::vector<std::string>& children) {
        Facts& facts = tree[path] = known(role, states, interfaces);
        for (const std::string& child : children) facts.children.push_back({"", child});
    };
    const auto barOf = [&](const std::string& path) {
        const FactsOf factsOf = [&](const Reference& reference) -> const Facts* {
            const auto found = tree.find(reference.path);
            return found == tree.end() ? nullptr : &found->second;
        };
        return findScrollBar(tree[path], factsOf).path;
    };
    const Interfaces value{AtspiInterface::value};
    add("h", AtspiRole::scrollBar, {AtspiState::horizontal}, value, {});
    add("v", AtspiRole::scrollBar, {AtspiState::vertical}, value, {});
    add("gtk3", AtspiRole::scrollPane, {}, {}, {"gone", "v", "h"});
    EXPECT_EQ(barOf("gtk3"), "v");
    add("sideways", AtspiRole::scrollPane, {}, {}, {"content", "h"});
    EXPECT_EQ(barOf("sideways"), "");
    add("range", AtspiRole{68}, {}, value, {});
    add("bar", AtspiRole::scrollBar, {AtspiState::vertical}, {}, {"range"});
    add("gtk4", AtspiRole::scrollPane, {}, {}, {"content", "h", "bar"});
    EXPECT_EQ(barOf("gtk4"), "range");
    add("first", AtspiRole::scrollBar, {}, value, {});
    add("second", AtspiRole::scrollBar, {}, value, {});
    add("firstBox", AtspiRole::filler, {}, {}, {"first"});
    add("secondBox", AtspiRole::filler, {}, {}, {"second"});
    add("qt", AtspiRole::text, {}, {}, {"view", "firstBox", "secondBox"});
    EXPECT_EQ(barOf("qt"), "second");
    EXPECT_EQ(barOf("secondBox"), "");
}

}  // namespace
}  // namespace quil::linux_platform
