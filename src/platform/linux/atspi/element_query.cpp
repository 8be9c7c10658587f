#include "platform/linux/atspi/element_query.h"

#include <algorithm>

#include "platform/accessibility.h"
#include "platform/linux/atspi/messages.h"
#include "platform/linux/atspi/showing_children.h"

namespace quil::linux_platform {
namespace {

constexpr std::uint32_t kWithinScreen = 0;
constexpr std::uint32_t kWithinWindow = 1;

/// Characters of a text that are asked for at a time: a message holds no more than 128 MiB.
constexpr std::int32_t kPieceOfText = 4'000'000;

/// The children of a combo box among which its list is looked for.
constexpr std::size_t kListPlaces = 2;

/// Actions of one element. Swing's text fields have 67.
constexpr std::int32_t kMaximumActions = 500;

/// Lists up to this length are asked for as a whole, also when less of them is wanted.
constexpr std::int64_t kShortList = 1000;

/// Counts the replies that are still to come; calls `done` after the last.
class Countdown {
  public:
    explicit Countdown(std::function<void()> done) : done_(std::move(done)) {}
    void expect() { ++left_; }
    void received() {
        if (--left_ == 0) done_();
    }

  private:
    int left_ = 0;
    std::function<void()> done_;
};

/// One element that is being asked.
class ElementQuery : public std::enable_shared_from_this<ElementQuery> {
  public:
    ElementQuery(const QueryTarget& whom, Facts& facts, std::function<void()> done)
        : program_(whom.program),
          peer_(whom.program.peer()),
          path_(whom.path),
          maximumChildren_(whom.maximumChildren),
          facts_(facts),
          countdown_([this, done = std::move(done)] {
              tellPassword();
              tellSpinner();
              done();
          }) {}

    void begin(FactSet wanted) {
        countdown_.expect();  // ourselves, so that a reply that comes at once does not end it
        // Needed to tell passwords and spinners.
        const bool needsName = wanted.has(Fact::role) || wanted.has(Fact::extents);
        if (program_.placesWithinWindow() && needsName && !facts_.asked.has(Fact::name)) {
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

    template <typename... Values>
    void call(const char* interface, const char* member, ReplyHandler handler,
              const char* signature = "", Values... values) {
        countdown_.expect();
        peer_.call(
            path_.c_str(), interface, member,
            [self = shared_from_this(), handler = std::move(handler)](Reply reply) {
                handler(reply);
                self->countdown_.received();
            },
            signature, values...);
    }

    /// Keeps what a reply holds, or why it holds nothing.
    template <typename Result, typename Field>
    void take(Fact fact, Reply reply, std::optional<Result> result, Field& field) {
        if (result) field = std::move(*result);
        facts_.received(fact, result ? 0 : reply.code != 0 ? reply.code : kAxFailure);
    }

    /// Asks with one call whose reply is the fact.
    template <typename Result, typename... Values>
    void askFor(Fact fact, const char* interface, const char* member,
                std::optional<Result> (*read)(sd_bus_message*), Result Facts::*field,
                const char* signature = "", Values... values) {
        call(
            interface, member,
            [this, fact, read, field](Reply reply) {
                take(fact, reply, reply.message ? read(reply.message) : std::nullopt,
                     facts_.*field);
            },
            signature, values...);
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
                              program_.placesWithinWindow() ? kWithinWindow : kWithinScreen);
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

    template <typename Result>
    static std::optional<Result> variant(Reply reply, const char* type,
                                         std::optional<Result> (*read)(sd_bus_message*)) {
        return reply.message ? readVariant(reply.message, type, read) : std::nullopt;
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
            if (program_.placesWithinWindow() && facts_.states.has(AtspiState::visible)) {
                facts_.states.add(AtspiState::showing);
            }
        });
    }

    /// GTK 4 tells a password field by nothing but the name that it has when nobody named it.
    void tellPassword() {
        const bool isField = facts_.role == AtspiRole::entry || facts_.role == AtspiRole::text;
        if (program_.placesWithinWindow() && isField && facts_.name == "GtkPasswordEntry") {
            facts_.role = AtspiRole::passwordText;
        }
    }

    /// GTK 4 gives the place of a spinner's corner as it turns, half a diagonal around the middle,
    /// and tells by nothing but the size that it is the same spinner: nobody knows where it is.
    void tellSpinner() {
        const bool isSpinner = program_.placesWithinWindow() && facts_.name == "GtkSpinner";
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

    void askChildren() {
        const auto count = facts_.childCount;
        const bool isCounted = facts_.knows(Fact::childCount) && count >= 0;
        if (isCounted && count == 0) return facts_.received(Fact::children, 0);
        const bool isEndless = facts_.states.has(AtspiState::managesDescendants) &&
                               count > kShortList && maximumChildren_ > kShortList;
        if (isCounted && isEndless) return askShowingChildren();
        // GTK 3 goes through the whole list for every child of it: who tells of a long list at once
        // stays silent for long. For others a list costs half of what its entries cost one by one.
        const auto most =
            program_.tellsEverything() ? kShortList : 2 * std::max(maximumChildren_, kShortList);
        if (isCounted && count > most) return askFirstChildren();
        call(atspi::kAccessible, "GetChildren", [this, isCounted](Reply reply) {
            auto children = reply.message ? readReferences(reply.message) : std::nullopt;
            const bool isThere =
                reply.code != kAxInvalidUIElement && reply.code != kAxCannotComplete;
            if (!children && isThere && isCounted) return askFirstChildren();
            take(Fact::children, reply, std::move(children), facts_.children);
        });
    }

    /// Of a container that makes its children up when they are asked for, those that are showing.
    void askShowingChildren() {
        countdown_.expect();
        findShowingChildren(program_, path_, facts_.interfaces.has(AtspiInterface::table),
                            maximumChildren_,
                            [self = shared_from_this()](std::vector<Reference> showing) {
                                Facts& facts = self->facts_;
                                facts.children = std::move(showing);
                                facts.received(Fact::children, 0);
                                if (facts.children.empty()) self->askFirstChildren();
                                self->countdown_.received();
                            });
    }

    /// A list of any length costs what is wanted of it.
    void askFirstChildren() {
        const auto wanted =
            static_cast<std::int32_t>(std::min<std::int64_t>(facts_.childCount, maximumChildren_));
        facts_.children.assign(static_cast<std::size_t>(std::max(wanted, 0)), {});
        const auto left = std::make_shared<std::int32_t>(wanted);
        for (std::int32_t i = 0; i < wanted; ++i) {
            call(
                atspi::kAccessible, "GetChildAtIndex",
                [this, i, left](Reply reply) {
                    auto child = reply.message ? readReference(reply.message) : std::nullopt;
                    if (child) facts_.children[static_cast<std::size_t>(i)] = std::move(*child);
                    if (--*left > 0) return;
                    std::erase_if(facts_.children,
                                  [](const Reference& entry) { return entry.path.empty(); });
                    facts_.received(Fact::children, 0);
                },
                "i", i);
        }
        if (wanted <= 0) facts_.received(Fact::children, 0);
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

    /// What is in a combo box's text field, else what is selected in it or in a list of it.
    void askSelection() {
        facts_.received(Fact::selection, 0);
        if (!facts_.editableChild.path.empty()) return askTextOf(facts_.editableChild);
        if (facts_.interfaces.has(AtspiInterface::selection)) {
            return askSelectedOf({program_.busName(), path_});
        }
        const auto last = std::min(facts_.children.size(), kListPlaces);
        for (std::size_t i = 0; i < last; ++i) askSelectedOf(facts_.children[i]);
    }

    void askTextOf(const Reference& field) {
        ofElement(
            field, atspi::kProperties, "Get",
            [this, field](Reply reply) {
                const auto count = variant(reply, "i", readInt32);
                if (count.value_or(0) <= 0) return;
                ofElement(
                    field, atspi::kText, "GetText",
                    [this](Reply text) {
                        if (!text.message) return;
                        facts_.selection = readString(text.message).value_or("");
                    },
                    "ii", 0, std::min(*count, kPieceOfText));
            },
            "ss", atspi::kText, "CharacterCount");
    }

    void askSelectedOf(const Reference& list) {
        ofElement(
            list, atspi::kSelection, "GetSelectedChild",
            [this](Reply reply) {
                const auto child = reply.message ? readReference(reply.message) : std::nullopt;
                if (!child || child->path.empty()) return;
                ofElement(
                    *child, atspi::kProperties, "Get",
                    [this](Reply name) {
                        if (!facts_.selection.empty()) return;
                        facts_.selection = variant(name, "s", readString).value_or("");
                    },
                    "ss", atspi::kAccessible, "Name");
            },
            "i", 0);
    }

    void askParent() {
        call(
            atspi::kProperties, "Get",
            [this](Reply reply) {
                take(Fact::parent, reply, variant(reply, "(so)", readReference), facts_.parent);
            },
            "ss", atspi::kAccessible, "Parent");
    }

    void askParentRole() {
        if (facts_.parent.path.empty()) return facts_.received(Fact::parentRole, kAxFailure);
        ofElement(facts_.parent, atspi::kAccessible, "GetRole", [this](Reply reply) {
            const auto number = reply.message ? readUint32(reply.message) : std::nullopt;
            facts_.parentRole = static_cast<AtspiRole>(number.value_or(0));
            facts_.received(Fact::parentRole, reply.code);
        });
    }

    /// Calls another element, of this program or of one that is embedded in it.
    template <typename... Values>
    void ofElement(const Reference& element, const char* interface, const char* member,
                   ReplyHandler handler, const char* signature = "", Values... values) {
        const bool isOurs = element.busName == program_.busName();
        countdown_.expect();
        Peer& peer = isOurs ? peer_ : program_.onBus().bus().peer(element.busName);
        peer.call(
            element.path.c_str(), interface, member,
            [self = shared_from_this(), handler = std::move(handler)](Reply reply) {
                handler(reply);
                self->countdown_.received();
            },
            signature, values...);
    }

    /// Looks for a text field among the first children.
    void askEditableChild() {
        facts_.received(Fact::editableChild, 0);
        const auto last = std::min(facts_.children.size(), kEditableChildPlaces);
        for (std::size_t i = 0; i < last; ++i) {
            const Reference& child = facts_.children[i];
            ofElement(child, atspi::kAccessible, "GetState", [this, child](Reply reply) {
                const auto states = reply.message ? readStates(reply.message) : std::nullopt;
                const bool isEditable = states && states->has(AtspiState::editable);
                if (isEditable && facts_.editableChild.path.empty()) facts_.editableChild = child;
            });
        }
    }

    AtspiProgram& program_;
    Peer& peer_;
    const std::string& path_;
    const std::int64_t maximumChildren_;
    Facts& facts_;
    Countdown countdown_;
};

}  // namespace

void queryFacts(const QueryTarget& whom, FactSet wanted, Facts& facts, std::function<void()> done) {
    std::make_shared<ElementQuery>(whom, facts, std::move(done))->begin(wanted);
}

}  // namespace quil::linux_platform
