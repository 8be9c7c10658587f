#include "platform/linux/tap/input_tap.h"

#include <xcb/xproto.h>

#include <utility>

#include "platform/event_posting.h"
#include "platform/posix/posix_clock.h"

namespace quil::linux_platform {
namespace {

constexpr std::uint8_t kLeftButton = 1;
constexpr std::uint8_t kWheelUp = 4;
constexpr std::uint8_t kWheelDown = 5;
constexpr std::uint8_t kWheelRight = 7;

std::uint64_t uptimeMilliseconds() {
    return static_cast<std::uint64_t>(PosixClock().systemUptime() * 1000);
}

}  // namespace

class InputTap::Event : public TappedEvent {
  public:
    Event(const DeviceEvent& event, const ServerClock& clock, std::uint64_t flags)
        : location_{static_cast<double>(event.x), static_cast<double>(event.y)},
          timestamp_(clock.uptimeNanoseconds(event.time, uptimeMilliseconds())),
          flags_(flags) {}

    Event& withLines(std::int64_t lines) {
        lines_ = lines;
        return *this;
    }
    Event& withKey(KeyPress press) {
        keyCode_ = press.virtualKeyCode;
        characters_ = std::move(press.characters);
        return *this;
    }

    Point location() const override { return location_; }
    std::uint64_t timestamp() const override { return timestamp_; }
    std::uint64_t flags() const override { return flags_; }
    std::int64_t integerValueField(std::uint32_t field) const override {
        if (field == kKeyboardEventKeycode) return keyCode_;
        if (field == kScrollWheelEventDeltaAxis1) return lines_;
        return 0;
    }
    std::optional<std::string> characters() const override { return characters_; }

  private:
    Point location_;
    std::uint64_t timestamp_;
    std::uint64_t flags_;
    std::int64_t keyCode_ = 0;
    std::int64_t lines_ = 0;
    std::optional<std::string> characters_;
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
      keys_(std::move(connection)) {}

void InputTap::invalidate() {
    isValid_ = false;
}

std::chrono::milliseconds InputTap::prepareToWait(std::vector<pollfd>& descriptors) const {
    descriptors.push_back({stream_->descriptor(), POLLIN, 0});
    return std::chrono::milliseconds::max();
}

void InputTap::dispatch() {
    stream_->read(waiting_);
    for (; !waiting_.empty() && isValid_; waiting_.pop_front()) {
        const StreamItem& item = waiting_.front();
        if (const auto* event = std::get_if<DeviceEvent>(&item)) {
            handle(*event);
        } else if (const auto* change = std::get_if<SymbolsChange>(&item)) {
            keys_.symbolsChanged(*change);
        } else if (std::holds_alternative<KeyboardChange>(item)) {
            keys_.keyboardChanged();
        } else if (std::holds_alternative<FocusChange>(item)) {
            keys_.resetCompose();
        }
    }
    if (!stream_->isAlive()) isValid_ = false;
}

bool InputTap::wants(std::uint32_t type) const {
    return (mask_ >> type) & 1;
}

void InputTap::handle(const DeviceEvent& event) {
    switch (event.type) {
        case XCB_KEY_PRESS:
            return handleKey(event);
        case XCB_BUTTON_PRESS:
            keys_.resetCompose();
            if (event.detail == kLeftButton) {
                deliver(kEventLeftMouseDown, Event(event, clock_, keys_.flags(event.state)));
            } else if (event.detail >= kWheelUp && event.detail <= kWheelRight) {
                const std::int64_t lines = event.detail == kWheelUp     ? 1
                                           : event.detail == kWheelDown ? -1
                                                                        : 0;
                deliver(kEventScrollWheel,
                        Event(event, clock_, keys_.flags(event.state)).withLines(lines));
            }
            return;
        case XCB_BUTTON_RELEASE:
            if (event.detail == kLeftButton) {
                deliver(kEventLeftMouseUp, Event(event, clock_, keys_.flags(event.state)));
            }
            return;
        case XCB_MOTION_NOTIFY:
            if (event.state & XCB_BUTTON_MASK_1) {
                deliver(kEventLeftMouseDragged, Event(event, clock_, keys_.flags(event.state)));
            }
            return;
        default:
            return;
    }
}

void InputTap::handleKey(const DeviceEvent& event) {
    auto press = keys_.press(event.detail, event.state);
    if (!press) return;
    const std::uint64_t flags = press->flags;
    deliver(kEventKeyDown, Event(event, clock_, flags).withKey(std::move(*press)));
}

void InputTap::deliver(std::uint32_t type, const Event& event) {
    if (isEnabled_ && isValid_ && wants(type)) callback_(type, event);
}

}  // namespace quil::linux_platform
