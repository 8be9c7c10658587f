#include "platform/linux/accessibility/observed_tree.h"

#include <algorithm>
#include <thread>

#include "platform/linux/accessibility/element_reader.h"
#include "platform/linux/accessibility/scroll_bars.h"
#include "platform/linux/accessibility/tree_size.h"
#include "platform/linux/atspi/fact_questions.h"
#include "platform/linux/atspi/messages.h"

namespace quil::linux_platform {
namespace {

/// However steadily an application answers, nobody waits longer for its tree.
constexpr std::chrono::seconds kLongestObservation{20};

/// Browsers send their documents only to those who ask, and not at once: this long an empty
/// document is waited for, once, and is looked at this often.
constexpr std::chrono::milliseconds kDocumentPatience{2000};
constexpr std::chrono::milliseconds kDocumentPause{40};

/// Elements that are asked at a time: enough for the application never to wait for us, few enough
/// that little is asked in vain when the elements before them turn out to fill the walk.
constexpr int kMostActive = 128;

/// Answers between two looks at which elements come first.
constexpr int kAnswersBetweenLooks = 32;

}  // namespace

ObservedTree::ObservedTree(AccessibilityBus& bus, ScreenPlaces& places, const Reference& root,
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
    if (wantsActions_) findScrollBars();
    if (places.isWithinWindow(root)) placeOnScreen(places);
}

/// Has everything that a program tells of all elements at once told at once, where that is no
/// burden.
void ObservedTree::useCache(const Reference& root) {
    AtspiProgram& program = bus_.introducedProgram(root.busName);
    if (!program.tellsEverything()) return;
    const auto children = [](const Facts& facts) {
        return findAttribute("AXChildren")->needs(facts);
    };
    Facts application, live;
    if (readFacts(bus_, {root.busName, atspi::kRootPath}, children, application) != 0) return;
    // The answer covers the whole program.
    if (application.children != std::vector{root}) return;
    if (!program.isSmall(root.path)) {
        const bool isSmall = isSmallTree(bus_, root);
        // What could not be counted because the program hangs is counted another time.
        if (program.peer().hangs()) return;
        program.noteSize(root.path, isSmall);
    }
    if (!*program.isSmall(root.path)) return;
    const auto plain = [](const Facts& facts) {
        return FactSet{Fact::role, Fact::name, Fact::states, Fact::childCount}.without(facts.asked);
    };
    if (readFacts(bus_, root, plain, live) != 0) return;
    cache_ = std::make_unique<CachedTree>(bus_, program);
    const Facts* cached = cache_->find(root);
    const bool agrees = cached && cached->role == live.role && cached->name == live.name &&
                        cached->states == live.states && cached->childCount == live.childCount;
    const bool isAnswered = !program.peer().hangs();
    if (isAnswered && (!cached || cache_->size() > kSmallTree)) program.noteSize(root.path, false);
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

FactSet ObservedTree::needs(const Facts& facts) const {
    FactSet needs;
    for (const Attribute* attribute : attributes_) needs.add(attribute->needs(facts));
    if (wantsActions_) needs.add(needsForActions(facts));
    // Few have it, and it leans on answers that are still to come.
    return needs.without({Fact::selection});
}

void ObservedTree::fetch(const Reference& root) {
    elements_.clear();
    root_ = &element(root);
    work_ = {root_};
    expected_ = 1;
    do {
        schedule();
        bus_.waitForAnswers(end_);
        schedule();
    } while (active_ > 0);
    if (isOverdue()) bus_.program(root.busName).peer().giveUp();
}

void ObservedTree::awaitDocuments() {
    const auto end = BusClock::now() + kDocumentPatience;
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
        std::this_thread::sleep_for(kDocumentPause);
        cache_ = nullptr;
        fetch(root);  // the document that fills may be another one
    }
}

void ObservedTree::schedule() {
    if (isScheduling_ || isOverdue()) return;
    isScheduling_ = true;
    if (expected_ <= maximumElements_) {
        scheduleAll();
    } else if (active_ == 0 || ++answersSinceScheduled_ >= kAnswersBetweenLooks) {
        answersSinceScheduled_ = 0;
        scheduleFirst();
    }
    isScheduling_ = false;
}

void ObservedTree::work(ObservedElement& element, std::int64_t maximumChildren) {
    if (!element.isBegun) begin(element);
    if (!element.wantsChildren) return;
    expected_ += element.facts.childCount;
    element.wantsChildren = false;
    ask(element, {Fact::children}, maximumChildren);
}

/// The walk comes to everything that is known of the tree.
void ObservedTree::scheduleAll() {
    while (active_ < kMostActive && !work_.empty()) {
        ObservedElement& element = *work_.front();
        if (element.wantsChildren && expected_ + element.facts.childCount > maximumElements_) {
            expected_ += element.facts.childCount;
            return scheduleFirst();
        }
        work_.pop_front();
        work(element, maximumElements_);
    }
}

/// Goes through what is known of the tree as the walk will, and asks the elements that it will come
/// to and that have not been asked.
void ObservedTree::scheduleFirst() {
    struct Level {
        const std::vector<ObservedElement*>* siblings;
        std::size_t next;
    };
    work_.clear();
    const std::vector<ObservedElement*> top{root_};
    std::vector<Level> path{{&top, 0}};
    for (std::int64_t position = 0; position < maximumElements_ && active_ < kMostActive;) {
        while (!path.empty() && path.back().next == path.back().siblings->size()) path.pop_back();
        if (path.empty()) break;
        ObservedElement& element = *(*path.back().siblings)[path.back().next++];
        // The walk comes to so many more elements, and looks at one more to see that it was cut.
        work(element, maximumElements_ - position);
        ++position;
        if (static_cast<int>(path.size()) == maximumDepth_) continue;
        path.push_back({&element.children, 0});
        // The walk comes to the children that are being asked for, too.
        const Facts& facts = element.facts;
        const bool areComing =
            active_ > 0 && facts.knows(Fact::childCount) && !facts.asked.has(Fact::children);
        if (areComing) position += std::max(facts.childCount, 0);
    }
}

void ObservedTree::begin(ObservedElement& element) {
    element.isBegun = true;
    if (const Facts* cached = cache_ ? cache_->find(element.reference) : nullptr) {
        element.facts.take(*cached);
        if (cached->knows(Fact::children)) {
            expected_ += cached->childCount;
            takeChildren(element);
        }
    }
    proceed(element);
}

/// Asks what can be asked with what is known.
void ObservedTree::proceed(ObservedElement& element) {
    Facts& facts = element.facts;
    FactSet next;
    if (elementCode(facts) == 0) next = needs(facts);
    if (next.has(Fact::children)) {
        if (facts.childCount > 0) {
            element.wantsChildren = true;
            work_.push_back(&element);
        } else {
            facts.answered(Fact::children, facts.code(Fact::childCount));
            return proceed(element);
        }
    }
    next = next.without({Fact::children});
    if (!next.isEmpty()) return ask(element, next, 0);
    if (!element.wantsChildren) element.isComplete = true;
    schedule();
}

void ObservedTree::ask(ObservedElement& element, FactSet wanted, std::int64_t maximumChildren) {
    ++active_;
    AtspiProgram& program = bus_.program(element.reference.busName);
    askFacts({program, element.reference.path, maximumChildren}, wanted, element.facts,
             [this, &element, wanted] {
                 --active_;
                 if (wanted.has(Fact::children)) takeChildren(element);
                 proceed(element);
             });
}

void ObservedTree::takeChildren(ObservedElement& element) {
    for (const Reference& reference : element.facts.children) {
        ObservedElement& child = this->element(reference);
        if (element.facts.knows(Fact::role) && !child.isBegun) {
            child.facts.parentRole = element.facts.role;
            child.facts.answered(Fact::parentRole, 0);
        }
        if (!child.parent && &child != root_) {
            child.parent = &element;
            child.depth = element.depth + 1;
            if (child.depth < maximumDepth_) work_.push_back(&child);
        }
        element.children.push_back(&child);
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
    for (auto& [reference, element] : elements_) element.facts.answered(Fact::scrollBar, 0);
}

void ObservedTree::findScrollBar(ObservedElement& element) {
    element.facts.scrollBar = linux_platform::findScrollBar(
        element.facts, [&](const Reference& reference) -> const Facts* {
            const ObservedElement* other = find(reference);
            if (other && other->isComplete) {
                return elementCode(other->facts) == 0 ? &other->facts : nullptr;
            }
            Facts& facts = beyond_[reference];
            if (isOverdue()) return nullptr;
            const ReadingLimits limits{kScrollBarPlaces, end_};
            const auto code = readFacts(bus_, reference, needsForScrollBarSearch, facts, limits);
            return code == 0 ? &facts : nullptr;
        });
}

void ObservedTree::placeOnScreen(ScreenPlaces& places) {
    std::unordered_map<const ObservedElement*, std::optional<Point>> origins;
    for (auto& [reference, element] : elements_) {
        if (!element.facts.knows(Fact::extents)) continue;
        const ObservedElement* top = &element;
        while (top->parent && top->parent->facts.role != AtspiRole::application) top = top->parent;
        const auto known = origins.find(top);
        const auto origin =
            known != origins.end()
                ? known->second
                : origins.emplace(top, places.origin(places.windowOf(top->reference)))
                      .first->second;
        ScreenPlaces::place(element.facts, origin);
    }
}

}  // namespace quil::linux_platform
