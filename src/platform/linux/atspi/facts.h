#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/geometry.h"
#include "platform/linux/atspi/roles.h"

namespace quil::linux_platform {

/// An element's name on the accessibility bus: the bus name of the program that shows it, and the
/// object's path there.
struct Reference {
    std::string busName;
    std::string path;
    bool operator==(const Reference&) const = default;
};

struct ReferenceHash {
    std::size_t operator()(const Reference& reference) const {
        const std::hash<std::string> hash;
        return hash(reference.path) * 31 + hash(reference.busName);
    }
};

/// States of an element: bit numbers (AtspiStateType, atspi-constants.h).
enum class AtspiState : unsigned {
    active = 1,
    checked = 4,
    defunct = 6,
    editable = 7,
    enabled = 8,
    expandable = 9,
    expanded = 10,
    focused = 12,
    horizontal = 14,
    multiLine = 17,
    pressed = 20,
    selectable = 22,
    selected = 23,
    sensitive = 24,
    showing = 25,
    vertical = 29,
    visible = 30,
    managesDescendants = 31,
    indeterminate = 32,
    checkable = 41,
};

/// Interfaces that are looked for: bit numbers, our own.
enum class AtspiInterface : unsigned {
    action,
    component,
    editableText,
    selection,
    table,
    text,
    value,
};

/// A set of flags, named by the values of an enumeration of bit numbers.
template <typename Flag>
class Flags {
  public:
    Flags() = default;
    Flags(std::initializer_list<Flag> flags) {
        for (const Flag flag : flags) add(flag);
    }
    static Flags fromBits(std::uint64_t bits) {
        Flags flags;
        flags.bits_ = bits;
        return flags;
    }

    bool has(Flag flag) const { return bits_ & bit(flag); }
    bool operator==(const Flags&) const = default;
    bool isEmpty() const { return bits_ == 0; }
    bool isSingle() const { return std::has_single_bit(bits_); }
    void add(Flag flag) { bits_ |= bit(flag); }
    void add(Flags other) { bits_ |= other.bits_; }
    Flags without(Flags other) const { return fromBits(bits_ & ~other.bits_); }
    template <typename Visitor>
    void forEach(Visitor visit) const {
        for (auto rest = bits_; rest != 0; rest &= rest - 1) {
            visit(static_cast<Flag>(std::countr_zero(rest)));
        }
    }

  private:
    static std::uint64_t bit(Flag flag) { return std::uint64_t{1} << static_cast<unsigned>(flag); }
    std::uint64_t bits_ = 0;
};
using States = Flags<AtspiState>;
using Interfaces = Flags<AtspiInterface>;

/// What an element can be asked for, each with one call or a few.
enum class Fact : unsigned {
    role,
    name,
    description,
    identifier,
    states,
    interfaces,
    childCount,
    children,
    extents,
    actions,
    text,
    number,
    range,
    selection,
    parent,
    parentRole,
    editableChild,
    scrollBar,
};
inline constexpr std::size_t kFactCount = static_cast<std::size_t>(Fact::scrollBar) + 1;
using FactSet = Flags<Fact>;

/// What is known of an element. A fact that was asked for has a code: 0, or why it is not known.
struct Facts {
    FactSet asked;
    std::array<std::int32_t, kFactCount> codes{};

    AtspiRole role{};
    std::string name;
    /// The widget's type, where its program says that instead of a name.
    std::string typeName;
    std::string description;
    std::string identifier;
    States states;
    Interfaces interfaces;
    std::int32_t childCount = 0;
    /// Ends early when the list is longer than was asked for.
    std::vector<Reference> children;
    /// In global screen coordinates; without an area when the element is nowhere.
    Rect extents;
    /// The toolkit's own names.
    std::vector<std::string> actions;
    std::string text;
    double number = 0;
    /// Whether the number has a range to be in. One without is no number of the element's.
    bool hasRange = false;
    /// What is chosen in a combo box; empty when that is not known.
    std::string selection;
    Reference parent;
    AtspiRole parentRole{};
    /// The text field among its first children; empty when there is none.
    Reference editableChild;
    /// What scrolls it up and down; empty when it cannot be scrolled.
    Reference scrollBar;

    /// Takes over what the other knows of the facts that a program's cache holds.
    void take(const Facts& cached);
    /// 0, or why the fact is not known.
    std::int32_t code(Fact fact) const { return codes[static_cast<std::size_t>(fact)]; }
    void received(Fact fact, std::int32_t code) {
        codes[static_cast<std::size_t>(fact)] = code;
        asked.add(fact);
    }
    bool knows(Fact fact) const { return asked.has(fact) && code(fact) == 0; }
};

inline void Facts::take(const Facts& cached) {
    role = cached.role;
    name = cached.name;
    description = cached.description;
    states = cached.states;
    interfaces = cached.interfaces;
    childCount = cached.childCount;
    children = cached.children;
    cached.asked.forEach([&](Fact fact) { received(fact, cached.code(fact)); });
}

}  // namespace quil::linux_platform
