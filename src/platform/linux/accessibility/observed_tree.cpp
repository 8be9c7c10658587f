#include "platform/linux/accessibility/observed_tree.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/accessibility/scroll_bars.h"
#include "platform/linux/atspi/element_query.h"
#include "platform/linux/atspi/messages.h"

namespace quil::linux_platform {
namespace {

/// The longest that the tree of an application is read, however steadily it replies.
constexpr std::chrono::seconds kLongestObservation{20};

/// Browsers send their documents only to those who ask, and not at once: this long an empty
/// document is waited for, once, and is looked at this often.
constexpr std::chrono::milliseconds kDocumentTimeout{2000};
constexpr std::chrono::milliseconds kDocumentPollInterval{40};

/// Elements that are asked at a time: enough for the application never to wait for us, few enough
/// that few requests are wasted when the elements before them turn out to fill the walk.
constexpr int kMaximumActive = 128;

/// While all of these are replied to, so many times further elements are looked for.
constexpr int kLooks = 4;

/// An application that gives everything in one reply is asked for that when its tree has at most
/// this many elements, and their indices can be looked up in this many steps: GTK 3 goes through
/// the list of siblings for each element's index.
constexpr std::int64_t kSmallTree = 5000;
constexpr std::int64_t kFewSteps = kSmallTree * kSmallTree;

FactSet needsForEditing(const Facts& facts) {
    return FactSet{Fact::states}.without(facts.asked);
}

/// What follows from an element's position in the tree, and is not asked for.
const FactSet kFromTree{Fact::parent, Fact::parentRole, Fact::editableChild};

}  // namespace

ObservedTree::ObservedTree(AccessibilityBus& bus, WindowOrigins& origins, const Reference& root,
                           const ObservationPlan& plan)
    : bus_(bus),
      maximumElements_(plan.maximumNodes),
      maximumDepth_(plan.maximumDepth),
      end_(BusClock::now() + kLongestObservation),
      wantsActions_(plan.actionNames) {
    for (const std::string_view name : plan.attributes) {
        if (const Attribute* attribute = findAttribute(name)) attributes_.push_back(attribute);
    }
    useCache(root);
    fetch(root);
    awaitDocuments();
    if (isCounting_) count();
    connect();
    if (wantsActions_) findScrollBars();
    // What the walk does not reach is in no known window.
    std::vector<ObservedElement*> elements;
    elements.reserve(elements_.size());
    for (auto& [reference, element] : elements_) {
        if (element.parent || &element == root_) elements.push_back(&element);
    }
    origins.locateTree(elements);
}

/// Fetches what a program gives of all elements in one reply, where that is no burden.
void ObservedTree::useCache(const Reference& root) {
    AtspiProgram& program = bus_.introducedProgram(root.busName);
    if (!program.hasBoundedCache()) return;
    const auto children = [](const Facts& facts) {
        return findAttribute("AXChildren")->needs(facts);
    };
    Facts application, live;
    if (readFacts(bus_, {root.busName, atspi::kRootPath}, children, application) != 0) return;
    // The reply covers the whole program.
    if (application.children != std::vector{root}) return;
    isCounting_ = !program.isSmall(root.path);
    if (isCounting_ || !*program.isSmall(root.path)) return;
    const auto plain = [](const Facts& facts) {
        return FactSet{Fact::role, Fact::name, Fact::states, Fact::childCount}.without(facts.asked);
    };
    if (readFacts(bus_, root, plain, live) != 0) return;
    cache_ = std::make_unique<CachedTree>(bus_, program);
    const Facts* cached = cache_->find(root);
    const bool agrees = cached && cached->role == live.role && cached->name == live.name &&
                        cached->states == live.states && cached->childCount == live.childCount;
    const bool hasReplied = !program.peer().hangs();
    if (hasReplied && (!cached || cache_->size() > kSmallTree)) program.noteSize(root.path, false);
    if (!agrees) cache_ = nullptr;
}

ObservedElement& ObservedTree::element(const Reference& reference) {
    ObservedElement& element = elements_[reference];
    if (element.reference.path.empty()) element.reference = reference;
    return element;
}

ObservedElement* ObservedTree::find(const Reference& reference) {
    const auto found = elements_.find(reference);
    return found == elements_.end() ? nullptr : &found->second;
}

bool ObservedTree::isOverdue() const {
    return BusClock::now() >= end_;
}

FactSet ObservedTree::needs(const ObservedElement& element) const {
    FactSet needs;
    for (const Attribute* attribute : attributes_) needs.add(attribute->needs(element.facts));
    if (wantsActions_) needs.add(needsForActions(element.facts));
    if (&element != root_) needs = needs.without(kFromTree);
    // Few have a selection, and it depends on replies that are still to come.
    return needs.without({Fact::editableChild, Fact::selection}).without(element.pending);
}

void ObservedTree::fetch(const Reference& root) {
    elements_.clear();
    root_ = &element(root);
    fetchUpTo(maximumElements_);
    if (isOverdue()) bus_.program(root.busName).peer().abandon();
}

void ObservedTree::fetchUpTo(std::int64_t maximumElements) {
    reach_ = maximumElements;
    finished_ = WalkPosition(*root_, maximumDepth_);
    for (schedule(); active_ > 0; schedule()) bus_.waitForReplies(end_);
}

/// Whether the program may be asked for everything the next time.
void ObservedTree::count() {
    AtspiProgram& program = bus_.program(root_->reference.busName);
    // Only the lists of what the walk does not reach.
    const auto attributes = std::exchange(attributes_, {findAttribute("AXChildren")});
    const bool wantsActions = std::exchange(wantsActions_, false);
    fetchUpTo(kSmallTree);
    attributes_ = attributes;
    wantsActions_ = wantsActions;
    // What could not be counted because the program hangs is counted another time.
    if (program.peer().hangs() || isOverdue()) return;
    std::int64_t steps = 0;
    bool isWhole = true;
    for (const auto& [reference, element] : elements_) {
        const Facts& facts = element.facts;
        const bool isGone = elementCode(facts) != 0;
        const auto listed = static_cast<std::int64_t>(facts.children.size());
        const bool isListed = facts.knows(Fact::children) && facts.childCount <= listed;
        isWhole = isWhole && element.isBegun && (isListed || isGone);
        steps += listed * listed;
    }
    program.noteSize(root_->reference.path, isWhole && steps <= kFewSteps);
}

void ObservedTree::awaitDocuments() {
    const auto end = BusClock::now() + kDocumentTimeout;
    AtspiProgram& program = bus_.program(root_->reference.busName);
    const Reference root = root_->reference;
    const auto isAwaited = [&](const auto& entry) {
        const Facts& facts = entry.second.facts;
        const bool isEmpty = facts.knows(Fact::childCount) && facts.childCount == 0;
        const bool isLaidOut = facts.knows(Fact::extents) && facts.extents.width > 0;
        return facts.role == AtspiRole::documentWeb && isEmpty && !isLaidOut &&
               !program.staysEmpty(entry.first.path);
    };
    while (std::any_of(elements_.begin(), elements_.end(), isAwaited)) {
        // What is known is worth more than what another look might bring.
        if (program.peer().hangs() || BusClock::now() + kLongestObservation / 2 >= end_) return;
        if (BusClock::now() >= end) {
            for (const auto& entry : elements_) {
                if (isAwaited(entry)) program.noteEmpty(entry.first.path);
            }
            return;
        }
        std::this_thread::sleep_for(kDocumentPollInterval);
        cache_ = nullptr;
        fetch(root);  // the document that fills may be another one
    }
}

/// Asks the elements that the walk will reach, in its order, as far as their number is known.
void ObservedTree::schedule() {
    // Looking costs as much as there are elements that are not finished.
    if (isScheduling_ || repliesSinceLook_ * kLooks < active_ || isOverdue()) return;
    isScheduling_ = true;
    repliesSinceLook_ = 0;
    passFinished();
    const std::int64_t longest = isCounting_ ? std::max(kSmallTree, reach_) : reach_;
    // The walk reaches the children that are being asked for, too.
    std::int64_t coming = 0;
    for (WalkPosition at = finished_; at.element() && active_ < kMaximumActive; at.advance()) {
        if (at.index() + coming >= reach_) break;
        ObservedElement& element = *at.element();
        if (!element.isBegun) begin(element);
        // Of a list, the walk looks at one more to see that it was cut.
        if (needs(element).has(Fact::children))
            ask(element, {Fact::children}, longest - at.index());
        if (element.pending.has(Fact::children)) coming += std::max(element.facts.childCount, 0);
    }
    isScheduling_ = false;
}

void ObservedTree::passFinished() {
    for (; finished_.element() && finished_.index() < reach_; finished_.advance()) {
        const ObservedElement& element = *finished_.element();
        if (!element.isComplete || needs(element).has(Fact::children)) return;
    }
}

void ObservedTree::begin(ObservedElement& element) {
    element.isBegun = true;
    if (const Facts* cached = cache_ ? cache_->find(element.reference) : nullptr) {
        element.facts.take(*cached);
        if (cached->knows(Fact::children)) takeChildren(element);
    }
    proceed(element);
}

/// Asks what can be asked with what is known. Lists of children wait for their turn.
void ObservedTree::proceed(ObservedElement& element) {
    Facts& facts = element.facts;
    const std::int32_t code = elementCode(facts);
    if (code != 0) {
        element.children.clear();
        facts.received(Fact::children, code);
    } else if (facts.knows(Fact::childCount) && facts.childCount == 0) {
        facts.received(Fact::children, 0);
    }
    const FactSet next = code == 0 ? needs(element) : FactSet();
    const FactSet now = withName(element, next.without({Fact::children}));
    if (!now.isEmpty()) return ask(element, now, 0);
    element.isComplete = next.isEmpty() && element.pending.isEmpty();
    schedule();
}

/// Where roles and positions depend on the elements' names, they are asked for with the name, or
/// once the name that was asked for has arrived.
FactSet ObservedTree::withName(const ObservedElement& element, FactSet wanted) {
    const FactSet leaning{Fact::role, Fact::extents};
    const bool leans = wanted.has(Fact::role) || wanted.has(Fact::extents);
    if (!leans || element.facts.asked.has(Fact::name)) return wanted;
    if (!bus_.program(element.reference.busName).hasWindowCoordinates()) return wanted;
    if (element.pending.has(Fact::name)) return wanted.without(leaning);
    wanted.add(Fact::name);
    return wanted;
}

void ObservedTree::ask(ObservedElement& element, FactSet wanted, std::int64_t maximumChildren) {
    ++active_;
    element.pending.add(wanted);
    AtspiProgram& program = bus_.program(element.reference.busName);
    queryFacts({program, element.reference.path, maximumChildren}, wanted, element.facts,
               [this, &element, wanted] {
                   --active_;
                   ++repliesSinceLook_;
                   element.pending = element.pending.without(wanted);
                   if (wanted.has(Fact::children)) takeChildren(element);
                   proceed(element);
               });
}

void ObservedTree::takeChildren(ObservedElement& element) {
    element.children.reserve(element.facts.children.size());
    for (const Reference& child : element.facts.children) {
        element.children.push_back(&this->element(child));
    }
}

/// Notes what elements are to each other.
void ObservedTree::connect() {
    WalkPosition at(*root_, maximumDepth_);
    for (; at.element() && at.index() < maximumElements_; at.advance()) {
        ObservedElement& element = *at.element();
        const Facts& facts = element.facts;
        for (ObservedElement* child : element.children) {
            if (child == root_ || child->parent) continue;
            child->parent = &element;
            child->facts.parentRole = facts.role;
            child->facts.received(Fact::parentRole, facts.code(Fact::role));
        }
        if (facts.role == AtspiRole::comboBox) findEditableChild(element);
    }
}

void ObservedTree::findEditableChild(ObservedElement& element) {
    element.facts.received(Fact::editableChild, 0);
    const std::size_t count = std::min(element.children.size(), kEditableChildCandidates);
    for (std::size_t i = 0; i < count; ++i) {
        const ObservedElement& child = *element.children[i];
        const Facts* facts =
            child.isComplete ? &child.facts : readBeyond(child.reference, needsForEditing);
        if (!facts || !facts->states.has(AtspiState::editable)) continue;
        element.facts.editableChild = child.reference;
        return;
    }
}

/// Most elements cannot be scrolled, and asking each of them would cost much: those that can show a
/// scroll bar in the tree, or say that they are panes.
void ObservedTree::findScrollBars() {
    std::vector<ObservedElement*> candidates;
    for (auto& [reference, element] : elements_) {
        if (element.facts.role == AtspiRole::scrollPane) candidates.push_back(&element);
        if (element.facts.role != AtspiRole::scrollBar || !element.parent) continue;
        candidates.push_back(element.parent);
        if (element.parent->parent) candidates.push_back(element.parent->parent);
    }
    for (ObservedElement* candidate : candidates) findScrollBar(*candidate);
    for (auto& [reference, element] : elements_) element.facts.received(Fact::scrollBar, 0);
}

void ObservedTree::findScrollBar(ObservedElement& element) {
    element.facts.scrollBar = linux_platform::findScrollBar(
        element.facts, [&](const Reference& reference) -> const Facts* {
            const ObservedElement* other = find(reference);
            if (!other || !other->isComplete) return readBeyond(reference, needsForScrollBarSearch);
            return elementCode(other->facts) == 0 ? &other->facts : nullptr;
        });
}

const Facts* ObservedTree::readBeyond(const Reference& reference, const Needs& needs) {
    if (isOverdue()) return nullptr;
    Facts& facts = beyond_[reference];
    return readFacts(bus_, reference, needs, facts, {kScrollBarCandidates, end_}) == 0 ? &facts
                                                                                       : nullptr;
}

}  // namespace quil::linux_platform
