#include "platform/linux/accessibility/element_value.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/accessibility.h"

namespace quil::linux_platform {
namespace {

/// Stands in a text for an element that is embedded there.
constexpr std::string_view kPlaceholder = "\uFFFC";

enum class Kind {
    none,
    /// The text of a field or document.
    text,
    /// The text of an element that has no name, unless its children have that text.
    label,
    /// A number, or instead the text of one that has no range of numbers (a date).
    number,
    /// A text where there is one, else nothing: what is written into a cell.
    cell,
    /// What is chosen.
    choice,
    /// 0, 1 or, mixed, 2.
    state,
};

bool isDocument(AtspiRole role) {
    switch (role) {
        case AtspiRole::documentFrame:
        case AtspiRole::documentSpreadsheet:
        case AtspiRole::documentPresentation:
        case AtspiRole::documentText:
        case AtspiRole::documentWeb:
        case AtspiRole::documentEmail:
            return true;
        default:
            return false;
    }
}

bool isCell(AtspiRole role) {
    switch (role) {
        case AtspiRole::columnHeader:
        case AtspiRole::rowHeader:
        case AtspiRole::tableCell:
        case AtspiRole::tableColumnHeader:
        case AtspiRole::tableRowHeader:
            return true;
        default:
            return false;
    }
}

/// Some toolkits give everything that can be pressed a number, which says nothing.
bool hasNoNumber(AtspiRole role) {
    switch (role) {
        case AtspiRole::link:
        case AtspiRole::menu:
        case AtspiRole::menuItem:
        case AtspiRole::panel:
        case AtspiRole::pushButton:
        case AtspiRole::pushButtonMenu:
        case AtspiRole::separator:
        case AtspiRole::tearoffMenuItem:
            return true;
        default:
            return false;
    }
}

/// Whether the value is a state: checked, not checked or mixed.
bool hasStateValue(const Facts& facts) {
    switch (facts.role) {
        case AtspiRole::checkBox:
        case AtspiRole::checkMenuItem:
        case AtspiRole::pageTab:
        case AtspiRole::radioButton:
        case AtspiRole::radioMenuItem:
        case AtspiRole::toggleButton:
            return true;
        default:
            return facts.states.has(AtspiState::checkable);
    }
}

/// A text field by its role, or by being editable: browsers let any element be edited, and say so
/// of the pieces of text in it as well.
bool isEdited(const Facts& facts) {
    return facts.states.has(AtspiState::editable) && facts.role != AtspiRole::staticText &&
           !facts.interfaces.has(AtspiInterface::value);
}

Kind kindOf(const Facts& facts) {
    const bool hasText = facts.interfaces.has(AtspiInterface::text);
    const bool hasNumber = facts.interfaces.has(AtspiInterface::value) && !hasNoNumber(facts.role);
    if (facts.role == AtspiRole::comboBox) return Kind::choice;
    if (hasText && (isTextField(facts.role) || isDocument(facts.role) || isEdited(facts))) {
        return Kind::text;
    }
    if (hasText && hasNumber && isCell(facts.role)) return Kind::cell;
    if (hasNumber) return Kind::number;
    if (hasStateValue(facts)) return Kind::state;
    return hasText && !hasNoNumber(facts.role) ? Kind::label : Kind::none;
}

int stateValue(const Facts& facts) {
    const auto is = [&](AtspiState state) { return facts.states.has(state); };
    if (is(AtspiState::indeterminate)) return 2;
    bool isOn = is(AtspiState::checked);
    if (facts.role == AtspiRole::toggleButton) {
        isOn = isOn || is(AtspiState::pressed) ||
               (is(AtspiState::expandable) && is(AtspiState::expanded));
    }
    if (facts.role == AtspiRole::pageTab) {
        // Qt's tabs cannot be selected; the one that is shown says that it has the focus.
        isOn = isOn || is(AtspiState::selected) ||
               (is(AtspiState::focused) && !is(AtspiState::selectable));
    }
    return isOn ? 1 : 0;
}

std::size_t placeholders(std::string_view text) {
    std::size_t count = 0;
    for (auto at = text.find(kPlaceholder); at != std::string_view::npos;
         at = text.find(kPlaceholder, at + kPlaceholder.size())) {
        ++count;
    }
    return count;
}

/// Whether a text consists of nothing but the characters that stand for embedded elements.
bool isPlaceholders(std::string_view text) {
    while (!text.empty()) {
        const bool isSpace = text.front() == ' ' || text.front() == '\n';
        if (!isSpace && !text.starts_with(kPlaceholder)) return false;
        text.remove_prefix(isSpace ? 1 : kPlaceholder.size());
    }
    return true;
}

/// As many bullets as characters: some toolkits hand passwords out.
std::string bullets(std::string_view text) {
    std::string masked;
    for (const char c : text) {
        const bool beginsCharacter = (static_cast<unsigned char>(c) & 0xC0) != 0x80;
        if (beginsCharacter) masked += "\u2022";
    }
    return masked;
}

/// Qt ends lines with the character that separates paragraphs.
std::string withPlainLineEnds(std::string_view text) {
    constexpr std::string_view kSeparator = "\u2029";
    std::string plain;
    for (auto at = text.find(kSeparator); at != std::string_view::npos;
         at = text.find(kSeparator)) {
        plain.append(text.substr(0, at)).push_back('\n');
        text.remove_prefix(at + kSeparator.size());
    }
    return plain.append(text);
}

std::int32_t readText(const Facts& facts, std::optional<Value>& value) {
    if (facts.code(Fact::text) != 0) return facts.code(Fact::text);
    if (facts.role == AtspiRole::passwordText) {
        value = Value(bullets(facts.text));
    } else if (isTextField(facts.role) || !isPlaceholders(facts.text)) {
        value = Value(withPlainLineEnds(facts.text));
    }
    return 0;
}

/// The children have the text when there are more of them than placeholders for embedded elements;
/// not where it can be read as that of an editor (Qt's, with scroll bars as its children).
bool isOwnText(const Facts& facts) {
    const auto children = static_cast<std::size_t>(std::max(facts.childCount, 0));
    const bool isOfChildren =
        placeholders(facts.text) < children && !facts.interfaces.has(AtspiInterface::editableText);
    return !isOfChildren && !isPlaceholders(facts.text);
}

std::int32_t readNumber(const Facts& facts, std::optional<Value>& value) {
    const bool hasText = facts.interfaces.has(AtspiInterface::text) && facts.knows(Fact::text);
    if (facts.code(Fact::number) == 0 && (facts.hasRange || !hasText)) {
        value = Value(facts.number);
    } else if (hasText) {
        value = Value(facts.text);
    } else {
        return facts.code(Fact::number);
    }
    return 0;
}

std::int32_t readChoice(const Facts& facts, std::optional<Value>& value) {
    if (!facts.selection.empty()) {
        value = Value(facts.selection);
    } else if (facts.knows(Fact::text) && !isPlaceholders(facts.text)) {
        value = Value(facts.text);
    }
    return 0;
}

}  // namespace

FactSet needsForValue(const Facts& facts) {
    const auto unasked = [&](FactSet wanted) { return wanted.without(facts.asked); };
    const FactSet first = unasked({Fact::role, Fact::states, Fact::interfaces});
    if (!first.isEmpty()) return first;
    const bool hasText = facts.interfaces.has(AtspiInterface::text);
    switch (kindOf(facts)) {
        case Kind::text:
        case Kind::cell:
            return unasked({Fact::text});
        case Kind::label: {
            const FactSet label = unasked({Fact::name, Fact::childCount});
            if (!label.isEmpty()) return label;
            return facts.name.empty() ? unasked({Fact::text}) : FactSet();
        }
        case Kind::number:
            if (!facts.asked.has(Fact::number)) return {Fact::number};
            // Spin buttons are for dates and the like, too.
            if (facts.role != AtspiRole::spinButton || !hasText) return {};
            if (!facts.asked.has(Fact::range)) return {Fact::range};
            return facts.knows(Fact::number) && facts.hasRange ? FactSet() : unasked({Fact::text});
        case Kind::choice:
            if (!facts.asked.has(Fact::childCount)) return {Fact::childCount};
            if (!facts.asked.has(Fact::children)) return {Fact::children};
            if (!facts.asked.has(Fact::editableChild)) return {Fact::editableChild};
            if (!facts.asked.has(Fact::selection)) return {Fact::selection};
            return hasText && facts.selection.empty() ? unasked({Fact::text}) : FactSet();
        case Kind::state:
        case Kind::none:
            return {};
    }
    return {};
}

std::int32_t readValue(const Facts& facts, std::optional<Value>& value) {
    switch (kindOf(facts)) {
        case Kind::text:
            return readText(facts, value);
        case Kind::cell:
            value = Value(facts.text);
            return facts.code(Fact::text);
        case Kind::label:
            if (!facts.name.empty() || !facts.knows(Fact::text)) return kAxNoValue;
            if (!isOwnText(facts)) return kAxNoValue;
            value = Value(facts.text);
            return 0;
        case Kind::number:
            return readNumber(facts, value);
        case Kind::choice:
            return readChoice(facts, value);
        case Kind::state:
            value = Value(stateValue(facts));
            return 0;
        case Kind::none:
            return kAxAttributeUnsupported;
    }
    return kAxAttributeUnsupported;
}

bool takesNumber(const Facts& facts) {
    if (facts.interfaces.has(AtspiInterface::value) && kindOf(facts) != Kind::text) {
        return !hasNoNumber(facts.role);
    }
    return false;
}

}  // namespace quil::linux_platform
