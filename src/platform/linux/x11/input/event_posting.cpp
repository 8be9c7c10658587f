#include "platform/linux/x11/input/event_posting.h"
#include "platform/linux/x11/input/modifier_keys.h"

#include <xcb/xtest.h>

#include "platform/linux/x11/input/crash_recovery.h"
#include "platform/linux/x11/input/focused_client.h"
#include "platform/linux/x11/input/spare_key_mapping.h"

namespace quil::linux_platform {
namespace {

constexpr std::chrono::milliseconds kShutdownTimeout{1000};

PostedEvent& contentOf(PostableEvent& event) {
    return static_cast<PostedEvent&>(event);
}

}  // namespace

X11EventPosting::~X11EventPosting() {
    // An unresponsive program may have prevented this before.
    const auto server = cleared_.lock();
    if (server && server->isAlive()) clearSpareKeys(*server);
}

std::shared_ptr<X11Connection> X11EventPosting::connection() {
    const std::lock_guard guard(lock_);
    if (isAbandoned_) return nullptr;
    auto connection = display_.connection();
    if (!connection || !connection->hasExtension(xcb_test_id)) return nullptr;
    if (cleared_.lock() != connection) {
        // Keys that a program has not processed yet are not to come after what is posted now.
        if (recoverFromCrashedRuntime(*connection)) {
            FocusedClient(*connection).waitForDelayedKeys();
        }
        window_ = xcb_generate_id(connection->get());
        xcb_create_window(connection->get(), 0, window_, connection->root(), 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        cleared_ = connection;
    }
    return connection;
}

void X11EventPosting::abandon() {
    const std::lock_guard guard(lock_);
    isAbandoned_ = true;
    if (window_ == XCB_WINDOW_NONE) return;
    X11Display display;
    const auto server = display.connection();
    if (!server) return;
    xcb_kill_client(server->get(), window_);
    if (hasSpareKeys(*server)) {
        FocusedClient client(*server);
        client.sendPing();
        client.waitForPings(0, kShutdownTimeout);
    }
    recoverFromCrashedRuntime(*server);
}

std::unique_ptr<EventSource> X11EventPosting::createSource(std::int32_t) {
    auto server = connection();
    if (!server) return nullptr;
    effects_.settle();
    return std::make_unique<KeyboardSource>(std::move(server));
}

PostableEventRef X11EventPosting::createMouseEvent(EventSource*, std::uint32_t type, Point point,
                                                   std::uint32_t button) {
    auto event = std::make_unique<PostedEvent>();
    event->type = type;
    event->location = point;
    event->button = button;
    return event;
}

PostableEventRef X11EventPosting::createScrollWheelEvent(EventSource*, std::uint32_t units,
                                                         std::uint32_t wheelCount,
                                                         std::int32_t wheel1, std::int32_t wheel2,
                                                         std::int32_t) {
    if (units != kScrollEventUnitLine) return nullptr;
    auto event = std::make_unique<PostedEvent>();
    event->type = kEventScrollWheel;
    event->wheel1 = wheel1;
    event->wheel2 = wheelCount > 1 ? wheel2 : 0;
    return event;
}

PostableEventRef X11EventPosting::createKeyboardEvent(EventSource* source, std::uint16_t keyCode,
                                                      bool keyDown) {
    auto event = std::make_unique<PostedEvent>();
    event->type = keyDown ? kEventKeyDown : kEventKeyUp;
    event->keyCode = keyCode;
    event->source = static_cast<KeyboardSource*>(source);
    return event;
}

void X11EventPosting::setLocation(PostableEvent& event, Point point) {
    contentOf(event).location = point;
}

void X11EventPosting::setFlags(PostableEvent& event, std::uint64_t flags) {
    contentOf(event).flags = flags;
}

void X11EventPosting::keyboardSetUnicodeString(PostableEvent& event, std::u16string_view text) {
    contentOf(event).text = text;
}

void X11EventPosting::post(std::uint32_t, const PostableEvent& event) {
    const auto& posted = static_cast<const PostedEvent&>(event);
    if (isModifierKey(posted)) {
        if (const auto server = connection()) holdModifierKey(*server, posted, window_);
        return;
    }
    if (posted.source) return posted.source->post(posted);
    const auto server = connection();
    if (!server) return;
    if (posted.type == kEventKeyDown || posted.type == kEventKeyUp) {
        effects_.settle();
        return KeyboardSource(server).post(posted);
    }
    pointer_.send(*server, posted, window_);
    const bool isMove = posted.type == kEventMouseMoved;
    effects_.posted(posted.location, !isMove);
    if (isMove) server->sync();
}

}  // namespace quil::linux_platform
