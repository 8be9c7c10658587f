#include "platform/simulated/event_taps.h"

#include <algorithm>
#include <chrono>
#include <deque>

namespace quil::simulated {
namespace {

class DeliveredEvent : public TappedEvent {
  public:
    explicit DeliveredEvent(const UserEvent& event) : event_(event) {}

    Point location() const override { return event_.location; }
    std::uint64_t timestamp() const override { return event_.timestamp; }
    std::uint64_t flags() const override { return event_.flags; }
    std::int64_t integerValueField(std::uint32_t field) const override {
        if (field == kKeyboardEventKeycode) return event_.keyCode;
        if (field == kScrollWheelEventDeltaAxis1) return event_.scrollLines;
        return 0;
    }
    std::optional<std::string> characters() const override { return event_.characters; }

  private:
    const UserEvent& event_;
};

bool wants(std::uint64_t mask, std::uint32_t type) {
    return type < 64 && (mask >> type) & 1;
}

}  // namespace

/// An event on its way, and whether a password was being typed when it happened.
struct SimulatedEventTaps::Waiting {
    UserEvent event;
    bool duringSecureInput = false;
};

struct SimulatedEventTaps::Tap : EventTap {
    Tap(std::uint64_t mask, EventTapCallback callback)
        : wanted(mask), function(std::move(callback)) {}

    const std::uint64_t wanted;
    const EventTapCallback function;
    bool enabled = true;
    bool valid = true;
    bool inCallback = false;
    std::deque<Waiting> waiting;
};

struct SimulatedEventTaps::Source : RunLoopSource {
    explicit Source(std::shared_ptr<Tap> served) : tap(std::move(served)) {}

    const std::shared_ptr<Tap> tap;
    bool valid = true;
};

struct SimulatedEventTaps::Loop : RunLoop {
    std::vector<std::shared_ptr<Source>> sources;
    /// While a callback runs: whether its event came during secure input.
    std::optional<bool> secureInput;
    bool running = false;
    bool stopped = false;
};

SimulatedEventTaps::SimulatedEventTaps(Gate gate) : gate_(std::move(gate)) {}
SimulatedEventTaps::~SimulatedEventTaps() = default;

EventTapRef SimulatedEventTaps::createTap(std::uint32_t, std::uint32_t, std::uint32_t,
                                          std::uint64_t mask, EventTapCallback callback) {
    if (!gate_("createTap")) return nullptr;
    auto tap = std::make_shared<Tap>(mask, std::move(callback));
    const std::lock_guard lock(mutex_);
    std::erase_if(taps_, [](const auto& other) { return other.expired(); });
    taps_.push_back(tap);
    return tap;
}

void SimulatedEventTaps::enableTap(const EventTapRef& tap, bool enable) {
    const auto own = std::static_pointer_cast<Tap>(tap);
    const std::lock_guard lock(mutex_);
    if (!own->valid) return;
    own->enabled = enable;
    if (!enable) own->waiting.clear();
    changed_.notify_all();
}

void SimulatedEventTaps::invalidateTap(const EventTapRef& tap) {
    const auto own = std::static_pointer_cast<Tap>(tap);
    const std::lock_guard lock(mutex_);
    own->valid = false;
    own->waiting.clear();
    changed_.notify_all();
}

RunLoopSourceRef SimulatedEventTaps::createRunLoopSource(const EventTapRef& tap) {
    if (!gate_("createRunLoopSource")) return nullptr;
    return std::make_shared<Source>(std::static_pointer_cast<Tap>(tap));
}

RunLoopRef SimulatedEventTaps::currentRunLoop() {
    const std::lock_guard lock(mutex_);
    auto& loop = loops_[std::this_thread::get_id()];
    if (!loop) loop = std::make_shared<Loop>();
    return loop;
}

void SimulatedEventTaps::addSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) {
    const std::lock_guard lock(mutex_);
    const auto own = std::static_pointer_cast<Source>(source);
    if (!own->valid) return;
    auto& sources = std::static_pointer_cast<Loop>(runLoop)->sources;
    if (std::ranges::find(sources, own) == sources.end()) sources.push_back(own);
    changed_.notify_all();
}

void SimulatedEventTaps::removeSource(const RunLoopRef& runLoop, const RunLoopSourceRef& source) {
    const std::lock_guard lock(mutex_);
    std::erase(std::static_pointer_cast<Loop>(runLoop)->sources,
               std::static_pointer_cast<Source>(source));
    changed_.notify_all();
}

void SimulatedEventTaps::invalidateSource(const RunLoopSourceRef& source) {
    const std::lock_guard lock(mutex_);
    std::static_pointer_cast<Source>(source)->valid = false;
    changed_.notify_all();
}

void SimulatedEventTaps::runCurrentRunLoop() {
    const auto loop = std::static_pointer_cast<Loop>(currentRunLoop());
    std::unique_lock lock(mutex_);
    loop->running = true;
    while (!loop->stopped && isServed(*loop)) {
        const auto tap = nextReady(*loop);
        if (!tap) {
            changed_.wait(lock);
            continue;
        }
        const Waiting next = std::move(tap->waiting.front());
        tap->waiting.pop_front();
        tap->inCallback = true;
        loop->secureInput = next.duringSecureInput;
        lock.unlock();
        tap->function(next.event.type, DeliveredEvent(next.event));
        lock.lock();
        loop->secureInput.reset();
        tap->inCallback = false;
        changed_.notify_all();
    }
    loop->running = false;
    loop->stopped = false;
    changed_.notify_all();
}

void SimulatedEventTaps::stopRunLoop(const RunLoopRef& runLoop) {
    const std::lock_guard lock(mutex_);
    const auto loop = std::static_pointer_cast<Loop>(runLoop);
    if (loop->running) loop->stopped = true;
    changed_.notify_all();
}

bool SimulatedEventTaps::isSecureEventInputEnabled() {
    const std::lock_guard lock(mutex_);
    const auto loop = loops_.find(std::this_thread::get_id());
    if (loop == loops_.end()) return secureEventInput_;
    return loop->second->secureInput.value_or(secureEventInput_);
}

void SimulatedEventTaps::deliver(const UserEvent& event) {
    const std::lock_guard lock(mutex_);
    for (const auto& entry : taps_) {
        const auto tap = entry.lock();
        if (tap && tap->valid && tap->enabled && wants(tap->wanted, event.type)) {
            tap->waiting.push_back({event, secureEventInput_});
        }
    }
    changed_.notify_all();
}

void SimulatedEventTaps::disableTaps(bool byTimeout) {
    const std::lock_guard lock(mutex_);
    for (const auto& entry : taps_) {
        const auto tap = entry.lock();
        if (!tap || !tap->valid) continue;
        tap->enabled = false;
        const auto type = byTimeout ? kEventTapDisabledByTimeout : kEventTapDisabledByUserInput;
        tap->waiting.push_back({{.type = type}, secureEventInput_});
    }
    changed_.notify_all();
}

void SimulatedEventTaps::setSecureEventInput(bool enabled) {
    const std::lock_guard lock(mutex_);
    secureEventInput_ = enabled;
}

void SimulatedEventTaps::settle() {
    std::unique_lock lock(mutex_);
    if (changed_.wait_for(lock, std::chrono::seconds(2), [&] { return isIdle(); })) return;
    for (const auto& entry : taps_) {
        if (const auto tap = entry.lock()) tap->waiting.clear();
    }
}

int SimulatedEventTaps::validTaps() {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(std::ranges::count_if(taps_, [](const auto& entry) {
        const auto tap = entry.lock();
        return tap && tap->valid;
    }));
}

int SimulatedEventTaps::runningRunLoops() {
    const std::lock_guard lock(mutex_);
    return static_cast<int>(
        std::ranges::count_if(loops_, [](const auto& entry) { return entry.second->running; }));
}

void SimulatedEventTaps::endThread() {
    const std::lock_guard lock(mutex_);
    loops_.erase(std::this_thread::get_id());
}

/// A tap of the loop at which something waits; null when there is none.
std::shared_ptr<SimulatedEventTaps::Tap> SimulatedEventTaps::nextReady(const Loop& loop) const {
    for (const auto& source : loop.sources) {
        if (source->valid && !source->tap->waiting.empty()) return source->tap;
    }
    return nullptr;
}

bool SimulatedEventTaps::isServed(const Loop& loop) const {
    return std::ranges::any_of(
        loop.sources, [](const auto& source) { return source->valid && source->tap->valid; });
}

bool SimulatedEventTaps::isIdle() const {
    return std::ranges::none_of(taps_, [](const auto& entry) {
        const auto tap = entry.lock();
        return tap && (tap->inCallback || !tap->waiting.empty());
    });
}

}  // namespace quil::simulated
