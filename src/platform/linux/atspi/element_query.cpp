#include "platform/linux/atspi/element_query.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>

#include "platform/accessibility.h"
#include "platform/linux/atspi/relation_query.h"

namespace quil::linux_platform {
namespace {

/// Actions of one element. Swing's text fields have 67.
constexpr std::int32_t kMaximumActions = 500;

/// Whether it is the name of a type of GTK or of its library of patterns (libadwaita).
bool isTypeName(std::string_view name) {
    constexpr std::size_t kPrefix = 3;
    const bool isPrefixed = name.starts_with("Gtk") || name.starts_with("Adw");
    const auto isLetter = [](unsigned char c) { return std::isalpha(c) != 0; };
    return isPrefixed && name.size() > kPrefix && std::isupper(name[kPrefix]) != 0 &&
           std::all_of(name.begin(), name.end(), isLetter);
}

/// One element that is being asked: the facts about itself.
class ElementQuery : public RelationQuery {
  public:
    ElementQuery(const QueryTarget& target, Facts& facts, std::function<void()> done)
        : RelationQuery(target, facts, [this, done = std::move(done)] {
              recognisePassword();
              recogniseSpinner();
              done();
          }) {}

    void begin(FactSet wanted) {
        countdown_.expect();  // ourselves, so that a reply that comes at once does not end it
        // Needed to recognise passwords and spinners.
        const bool needsName = wanted.has(Fact::role) || wanted.has(Fact::extents);
        if (program_.hasWindowCoordinates() && needsName && !facts_.asked.has(Fact::name)) {
            wanted.add(Fact::name);
        }
        FactSet properties;
        wanted.forEach([&](Fact fact) {
            if (isProperty(fact)) {
                properties.add(fact);
            } else {
                ask(fact);
            }
        });
        askProperties(properties);
        countdown_.received();
    }

  private:
    static bool isProperty(Fact fact) {
        return fact == Fact::name || fact == Fact::description || fact == Fact::identifier ||
               fact == Fact::childCount;
    }

    static const char* propertyName(Fact fact) {
        switch (fact) {
            case Fact::name:
                return "Name";
            case Fact::description:
                return "Description";
            case Fact::identifier:
                return "AccessibleId";
            default:
                return "ChildCount";
        }
    }

    void ask(Fact fact) {
        switch (fact) {
            case Fact::role:
                return askRole();
            case Fact::states:
                return askStates();
            case Fact::interfaces:
                return askFor(fact, atspi::kAccessible, "GetInterfaces", readInterfaces,
                              &Facts::interfaces);
            case Fact::children:
                return askChildren();
            case Fact::extents:
                return askFor(fact, atspi::kComponent, "GetExtents", readRect, &Facts::extents, "u",
                              program_.coordinateType());
            case Fact::actions:
                return askActions();
            case Fact::text:
                return askText();
            case Fact::number:
                return call(
                    atspi::kProperties, "Get",
                    [this](Reply reply) {
                        take(Fact::number, reply, variant(reply, "d", readDouble), facts_.number);
                    },
                    "ss", atspi::kValue, "CurrentValue");
            case Fact::range:
                return askRange();
            case Fact::selection:
                return askSelection();
            case Fact::parent:
                return askParent();
            case Fact::parentRole:
                return askParentRole();
            case Fact::editableChild:
                return askEditableChild();
            default:
                return;
        }
    }

    void askRole() {
        call(atspi::kAccessible, "GetRole", [this](Reply reply) {
            const auto number = reply.message ? readUint32(reply.message) : std::nullopt;
            take(Fact::role, reply,
                 number ? std::optional(static_cast<AtspiRole>(*number)) : std::nullopt,
                 facts_.role);
        });
    }

    void askStates() {
        call(atspi::kAccessible, "GetState", [this](Reply reply) {
            take(Fact::states, reply, reply.message ? readStates(reply.message) : std::nullopt,
                 facts_.states);
            // These say only of windows that they are showing.
            if (program_.hasWindowCoordinates() && facts_.states.has(AtspiState::visible)) {
                facts_.states.add(AtspiState::showing);
            }
        });
    }

    /// In GTK 4 nothing identifies a password field but its type.
    void recognisePassword() {
        const bool isField = facts_.role == AtspiRole::entry || facts_.role == AtspiRole::text;
        if (program_.hasWindowCoordinates() && isField && facts_.typeName == "GtkPasswordEntry") {
            facts_.role = AtspiRole::passwordText;
        }
    }

    /// GTK 4 gives the position of a spinner's corner as it turns, half a diagonal around the
    /// middle, and nothing but the size shows that it is the same spinner: its position cannot be
    /// known.
    void recogniseSpinner() {
        const bool isSpinner = program_.hasWindowCoordinates() && facts_.typeName == "GtkSpinner";
        if (isSpinner && facts_.knows(Fact::extents)) facts_.extents = {};
    }

    void askProperties(FactSet wanted) {
        const bool isOne = wanted.isEmpty() || wanted.isSingle();
        if (program_.givesAllProperties() && !isOne) return askAllProperties(wanted);
        wanted.forEach([&](Fact fact) {
            call(
                atspi::kProperties, "Get", [this, fact](Reply reply) { takeProperty(fact, reply); },
                "ss", atspi::kAccessible, propertyName(fact));
        });
    }

    void takeProperty(Fact fact, Reply reply) {
        if (fact == Fact::childCount) {
            return take(fact, reply, variant(reply, "i", readInt32), facts_.childCount);
        }
        auto& field = fact == Fact::name          ? facts_.name
                      : fact == Fact::description ? facts_.description
                                                  : facts_.identifier;
        take(fact, reply, variant(reply, "s", readString), field);
        // GTK 4 calls what nobody has given a name by its type, in front of the user as well.
        const bool isTyped = fact == Fact::name && program_.hasWindowCoordinates();
        if (isTyped && isTypeName(facts_.name)) facts_.typeName = std::exchange(facts_.name, "");
    }

    void askAllProperties(FactSet wanted) {
        call(
            atspi::kProperties, "GetAll",
            [this, wanted](Reply reply) {
                // What the list leaves out is not supported.
                wanted.forEach([&](Fact fact) {
                    facts_.received(fact, reply.message ? kAxAttributeUnsupported : reply.code);
                });
                if (reply.message) takeProperties(wanted, reply);
            },
            "s", atspi::kAccessible);
    }

    void takeProperties(FactSet wanted, Reply reply) {
        sd_bus_message* message = reply.message;
        if (sd_bus_message_enter_container(message, 'a', "{sv}") < 0) return;
        while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
            const auto name = readString(message);
            auto meant = std::optional<Fact>();
            wanted.forEach([&](Fact fact) {
                if (name == propertyName(fact)) meant = fact;
            });
            if (meant) {
                takeProperty(*meant, reply);
            } else if (sd_bus_message_skip(message, "v") < 0) {
                return;
            }
            if (sd_bus_message_exit_container(message) < 0) return;
        }
    }

    /// One by one: the list that some toolkits give has names in the user's language, or none.
    void askActions() {
        call(
            atspi::kProperties, "Get",
            [this](Reply reply) {
                const auto count = variant(reply, "i", readInt32);
                facts_.received(Fact::actions, reply.code);
                facts_.actions.resize(
                    static_cast<std::size_t>(std::clamp(count.value_or(0), 0, kMaximumActions)));
                for (std::size_t i = 0; i < facts_.actions.size(); ++i) askActionName(i);
            },
            "ss", atspi::kAction, "NActions");
    }

    void askActionName(std::size_t index) {
        call(
            atspi::kAction, "GetName",
            [this, index](Reply reply) {
                const auto name = reply.message ? readString(reply.message) : std::nullopt;
                facts_.actions[index] = name.value_or("");
            },
            "i", static_cast<std::int32_t>(index));
    }

    void askText() {
        call(
            atspi::kProperties, "Get",
            [this](Reply reply) {
                const auto count = variant(reply, "i", readInt32);
                facts_.received(Fact::text, count ? 0 : reply.code != 0 ? reply.code : kAxFailure);
                facts_.text.clear();
                if (count.value_or(0) > 0) askPieceOfText(0, *count);
            },
            "ss", atspi::kText, "CharacterCount");
    }

    /// Not up to -1 for the end, which not every toolkit knows.
    void askPieceOfText(std::int32_t begin, std::int32_t end) {
        const std::int32_t pieceEnd = begin + std::min(end - begin, kPieceOfText);
        call(
            atspi::kText, "GetText",
            [this, pieceEnd, end](Reply reply) {
                const auto piece = reply.message ? readString(reply.message) : std::nullopt;
                if (!piece) {
                    return facts_.received(Fact::text, reply.code != 0 ? reply.code : kAxFailure);
                }
                facts_.text += *piece;
                if (pieceEnd < end) askPieceOfText(pieceEnd, end);
            },
            "ii", begin, pieceEnd);
    }

    /// A range that says that it has no length is none. Some toolkits say so of every range: there
    /// the number may be one, as long as it is not 0.
    void askRange() {
        facts_.received(Fact::range, 0);
        facts_.hasRange = facts_.number != 0;
        const auto minimum = std::make_shared<std::optional<double>>();
        call(
            atspi::kProperties, "Get",
            [this, minimum](Reply reply) { *minimum = variant(reply, "d", readDouble); }, "ss",
            atspi::kValue, "MinimumValue");
        call(
            atspi::kProperties, "Get",
            [this, minimum](Reply reply) {
                const auto maximum = variant(reply, "d", readDouble);
                if (maximum && *minimum && *maximum > **minimum) facts_.hasRange = true;
            },
            "ss", atspi::kValue, "MaximumValue");
    }
};

}  // namespace

void queryFacts(const QueryTarget& target, FactSet wanted, Facts& facts,
                std::function<void()> done) {
    std::make_shared<ElementQuery>(target, facts, std::move(done))->begin(wanted);
}

}  // namespace quil::linux_platform