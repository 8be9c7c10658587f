#include "platform/linux/x11/tap/input_tap.h"

#include <xcb/xproto.h>

#include <utility>

#include "platform/event_posting.h"
#include "platform/linux/x11/pointer_buttons.h"
#include "platform/virtual_keys.h"

namespace quil::linux_platform {
namespace {

/// For so long a flush waits: as long as it takes to know where keys went, unless a program is
/// stuck.
constexpr std::chrono::milliseconds kFlushTimeout{500};

std::int64_t wheelLines(std::uint8_t button) {
    if (button == kWheelUp) return 1;
    return button == kWheelDown ? -1 : 0;
}

/// Whether the key writes or erases text, and so leaves the focus where it is.
bool edits(const KeyPress& press) {
    if (press.flags & (kEventFlagMaskControl | kEventFlagMaskAlternate)) return false;
    if (press.virtualKeyCode == virtual_key::deleteKey ||
        press.virtualKeyCode == virtual_key::forwardDelete) {
        return true;
    }
    return !press.characters.empty() && static_cast<unsigned char>(press.characters.front()) >= ' ';
}

}  // namespace

struct InputTap::Event : TappedEvent {
    std::uint32_t type = 0;
    TapTime time;
    Point at;
    std::uint64_t flagBits = 0;
    std::int64_t lines = 0;
    std::optional<KeyPress> key;
    /// The clients that had grabbed a keyboard.
    std::vector<ClientId> grabbers;

    Point location() const override { return at; }
    std::uint64_t timestamp() const override {
        return static_cast<std::uint64_t>(
            std::chrono::nanoseconds(time.time_since_epoch()).count());
    }
    std::uint64_t flags() const override { return flagBits; }
    std::int64_t integerValueField(std::uint32_t field) const override {
        if (field == kKeyboardEventKeycode && key) return key->virtualKeyCode;
        return field == kScrollWheelEventDeltaAxis1 ? lines : 0;
    }
    std::optional<std::string> characters() const override {
        return key ? std::optional(key->characters) : std::nullopt;
    }
};

std::shared_ptr<InputTap> InputTap::open(std::uint64_t mask, EventTapCallback callback) {
    auto connection = X11Display().connection();
    if (!connection) return nullptr;
    const bool withMotion = (mask >> kEventLeftMouseDragged) & 1;
    auto stream = RecordStream::open(withMotion);
    if (!stream) return nullptr;
    const ServerClock clock(stream->startTime(), uptimeMilliseconds());
    return std::shared_ptr<InputTap>(
        new InputTap(mask, std::move(callback), std::move(stream), std::move(connection), clock));
}

InputTap::InputTap(std::uint64_t mask, EventTapCallback callback,
                   std::unique_ptr<RecordStream> stream, std::shared_ptr<X11Connection> connection,
                   ServerClock clock)
    : mask_(mask),
      callback_(std::move(callback)),
      stream_(std::move(stream)),
      clock_(clock),
      keys_(connection),
      grabs_(std::move(connection)),
      focus_(display_, clock_),
      secrets_(focus_) {}

InputTap::~InputTap() = default;

std::chrono::milliseconds InputTap::prepareToWait(std::vector<pollfd>& descriptors) {
    using std::chrono::milliseconds;
    descriptors.push_back({stream_->descriptor(), POLLIN, 0});
    focus_.prepareToWait(descriptors);
    const auto nextLook = secrets_.nextLook();
    if (!nextLook) return milliseconds::max();
    return std::max(milliseconds::zero(),
                    std::chrono::ceil<milliseconds>(*nextLook - TapTime::clock::now()));
}

void InputTap::invalidate() {
    const std::lock_guard guard(flushLock_);
    isValid_ = false;
    flushEnded_.notify_all();
}

int InputTap::requestFlush() {
    const std::lock_guard guard(flushLock_);
    return ++flushRequests_;
}

void InputTap::awaitFlush(int request) {
    std::unique_lock guard(flushLock_);
    flushEnded_.wait_for(guard, kFlushTimeout,
                         [&] { return flushesDone_ >= request || !isValid_; });
}

/// Notes how many events there are to deliver before a flush is done.
void InputTap::fetchForFlush() {
    {
        const std::lock_guard guard(flushLock_);
        if (flush_ == flushRequests_) return;
        flush_ = flushRequests_;
    }
    stream_->fetch();
    read();
    toFlush_ = waiting_.size();
}

void InputTap::endFlush() {
    if (toFlush_ > 0 || flush_ == flushesDone_) return;
    const std::lock_guard guard(flushLock_);
    flushesDone_ = flush_;
    flushEnded_.notify_all();
}

void InputTap::dispatch() {
    read();
    fetchForFlush();
    secrets_.process();
    deliverWaiting();
    endFlush();
    if (!stream_->isAlive() && waiting_.empty()) isValid_ = false;
}

void InputTap::deliverWaiting() {
    for (; !waiting_.empty() && isValid_; waiting_.pop_front()) {
        const Event& event = waiting_.front();
        if (event.key) {
            const auto isSecret = secrets_.isSecret(event.time, event.grabbers);
            if (!isSecret) return;
            isSecure_ = *isSecret;
        }
        deliver(event);
        isSecure_ = false;
        if (toFlush_ > 0) --toFlush_;
    }
}

void InputTap::read() {
    std::deque<StreamItem> items;
    stream_->read(items);
    if (!items.empty()) keys_.followKeyboard();
    for (const StreamItem& item : items) {
        if (const auto* event = std::get_if<DeviceEvent>(&item)) {
            read(*event);
        } else if (const auto* keysyms = std::get_if<KeysymsChange>(&item)) {
            keys_.keysymsChanged(*keysyms);
        } else if (std::holds_alternative<KeyboardChange>(item)) {
            keys_.keyboardChanged();
        } else if (const auto* focus = std::get_if<FocusChange>(&item)) {
            read(*focus);
        } else if (const auto* request = std::get_if<GrabRequest>(&item)) {
            grabs_.read(*request);
        } else if (const auto* reply = std::get_if<GrabReply>(&item)) {
            grabs_.read(*reply);
        } else if (const auto* unread = std::get_if<UnreadRequest>(&item)) {
            grabs_.read(*unread);
        } else if (const auto* end = std::get_if<ClientEnd>(&item)) {
            grabs_.read(*end);
        }
    }
    if (!items.empty()) grabs_.caughtUp();
}

void InputTap::read(const FocusChange& change) {
    if (change.mode == XCB_NOTIFY_MODE_UNGRAB) grabs_.released();
    if (change.mode != XCB_NOTIFY_MODE_NORMAL && change.mode != XCB_NOTIFY_MODE_WHILE_GRABBED) {
        return;
    }
    keys_.resetCompose();
    secrets_.windowGotFocus(clock_.timeOf(change.time));
}

void InputTap::read(const DeviceEvent& event) {
    if (event.type == XCB_KEY_PRESS) {
        readKey(event);
    } else if (event.type == XCB_BUTTON_PRESS || event.type == XCB_BUTTON_RELEASE) {
        readButton(event);
    } else if (event.type == XCB_MOTION_NOTIFY && (event.state & XCB_BUTTON_MASK_1)) {
        waiting_.push_back(makeEvent(kEventLeftMouseDragged, event));
    }
}

void InputTap::readKey(const DeviceEvent& event) {
    auto press = keys_.press(event.detail, event.state);
    if (!press) return;
    Event key = makeEvent(kEventKeyDown, event);
    if (!edits(*press)) {
        secrets_.mayMoveFocus(key.time, FocusMoves::Kind::press);
    }
    key.grabbers = grabs_.grabbers(key.time);
    key.flagBits = press->flags;
    key.key = std::move(press);
    waiting_.push_back(std::move(key));
}

void InputTap::readButton(const DeviceEvent& event) {
    const bool isPress = event.type == XCB_BUTTON_PRESS;
    if (event.detail >= kWheelUp && event.detail <= kWheelRight) {
        if (!isPress) return;
        waiting_.push_back(makeEvent(kEventScrollWheel, event));
        waiting_.back().lines = wheelLines(event.detail);
        return;
    }
    if (isPress) keys_.resetCompose();
    secrets_.mayMoveFocus(clock_.timeOf(event.time),
                          isPress ? FocusMoves::Kind::press : FocusMoves::Kind::release);
    if (event.detail != kLeftButton) return;
    waiting_.push_back(makeEvent(isPress ? kEventLeftMouseDown : kEventLeftMouseUp, event));
}

InputTap::Event InputTap::makeEvent(std::uint32_t type, const DeviceEvent& event) {
    Event made;
    made.type = type;
    made.time = clock_.timeOf(event.time);
    made.at = {static_cast<double>(event.x), static_cast<double>(event.y)};
    made.flagBits = keys_.flags(event.state);
    return made;
}

void InputTap::deliver(const Event& event) {
    if (isEnabled_ && isValid_ && ((mask_ >> event.type) & 1)) callback_(event.type, event);
}

}  // namespace quil::linux_platform
