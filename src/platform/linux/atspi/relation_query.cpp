#include "platform/linux/atspi/relation_query.h"

#include <algorithm>

#include "platform/linux/atspi/showing_children.h"

namespace quil::linux_platform {
namespace {

/// The children of a combo box among which its list is looked for.
constexpr std::size_t kListCandidates = 2;

/// Lists up to this length are asked for as a whole, also when less of them is wanted.
constexpr std::int64_t kShortList = 1000;

}  // namespace

void RelationQuery::askChildren() {
    const auto count = facts_.childCount;
    const bool isCounted = facts_.knows(Fact::childCount) && count >= 0;
    if (isCounted && count == 0) return facts_.received(Fact::children, 0);
    const bool isEndless = facts_.states.has(AtspiState::managesDescendants) &&
                           count > kShortList && maximumChildren_ > kShortList;
    if (isCounted && isEndless) return askShowingChildren();
    // GTK 3 goes through the whole list for every child of it, and does not reply while it lists a
    // long one. For others a list costs half of what its entries cost one by one.
    const auto most =
        program_.hasBoundedCache() ? kShortList : 2 * std::max(maximumChildren_, kShortList);
    if (isCounted && count > most) return askFirstChildren();
    call(atspi::kAccessible, "GetChildren", [this, isCounted](Reply reply) {
        auto children = reply.message ? readReferences(reply.message) : std::nullopt;
        const bool isThere = reply.code != kAxInvalidUIElement && reply.code != kAxCannotComplete;
        // The bridge for GTK 3 leaves out of lists what another process shows, such as a web page.
        const bool isListed = children && !children->empty();
        if (!isListed && isThere && isCounted) return askFirstChildren();
        take(Fact::children, reply, std::move(children), facts_.children);
    });
}

/// Of a container that makes its children up when they are asked for, those that are showing.
void RelationQuery::askShowingChildren() {
    countdown_.expect();
    findShowingChildren(program_, path_, facts_.interfaces.has(AtspiInterface::table),
                        maximumChildren_,
                        [this, self = shared_from_this()](std::vector<Reference> showing) {
                            facts_.children = std::move(showing);
                            facts_.received(Fact::children, 0);
                            if (facts_.children.empty()) askFirstChildren();
                            countdown_.received();
                        });
}

/// A list of any length costs what is wanted of it.
void RelationQuery::askFirstChildren() {
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

/// What is in a combo box's text field, else what is selected in it or in a list of it, else what
/// it is called after.
void RelationQuery::askSelection() {
    facts_.received(Fact::selection, 0);
    if (!facts_.editableChild.path.empty()) return askTextOf(facts_.editableChild);
    if (facts_.interfaces.has(AtspiInterface::selection)) {
        return askSelectedOf({program_.busName(), path_});
    }
    const auto last = std::min(facts_.children.size(), kListCandidates);
    for (std::size_t i = 0; i < last; ++i) askSelectedOf(facts_.children[i]);
    if (program_.namesCombosByChoice() && last > 0) askChoiceAsName(facts_.children.front());
}

/// The name of a combo box is what is chosen in its list.
void RelationQuery::askChoiceAsName(const Reference& list) {
    ofElement(list, atspi::kAccessible, "GetState", [this](Reply reply) {
        const auto states = reply.message ? readStates(reply.message) : std::nullopt;
        if (!states || !states->has(AtspiState::managesDescendants)) return;
        takeNameAsSelection({program_.busName(), path_});
    });
}

void RelationQuery::takeNameAsSelection(const Reference& element) {
    ofElement(
        element, atspi::kProperties, "Get",
        [this](Reply name) {
            if (!facts_.selection.empty()) return;
            facts_.selection = variant(name, "s", readString).value_or("");
        },
        "ss", atspi::kAccessible, "Name");
}

void RelationQuery::askTextOf(const Reference& field) {
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

void RelationQuery::askSelectedOf(const Reference& list) {
    ofElement(
        list, atspi::kSelection, "GetSelectedChild",
        [this](Reply reply) {
            const auto child = reply.message ? readReference(reply.message) : std::nullopt;
            if (child && !child->path.empty()) takeNameAsSelection(*child);
        },
        "i", 0);
}

void RelationQuery::askParent() {
    call(
        atspi::kProperties, "Get",
        [this](Reply reply) {
            take(Fact::parent, reply, variant(reply, "(so)", readReference), facts_.parent);
        },
        "ss", atspi::kAccessible, "Parent");
}

void RelationQuery::askParentRole() {
    if (facts_.parent.path.empty()) return facts_.received(Fact::parentRole, kAxFailure);
    ofElement(facts_.parent, atspi::kAccessible, "GetRole", [this](Reply reply) {
        const auto number = reply.message ? readUint32(reply.message) : std::nullopt;
        facts_.parentRole = static_cast<AtspiRole>(number.value_or(0));
        facts_.received(Fact::parentRole, reply.code);
    });
}

/// Looks for a text field among the first children.
void RelationQuery::askEditableChild() {
    facts_.received(Fact::editableChild, 0);
    const auto last = std::min(facts_.children.size(), kEditableChildCandidates);
    for (std::size_t i = 0; i < last; ++i) {
        const Reference& child = facts_.children[i];
        ofElement(child, atspi::kAccessible, "GetState", [this, child](Reply reply) {
            const auto states = reply.message ? readStates(reply.message) : std::nullopt;
            const bool isEditable = states && states->has(AtspiState::editable);
            if (isEditable && facts_.editableChild.path.empty()) facts_.editableChild = child;
        });
    }
}

}  // namespace quil::linux_platform
