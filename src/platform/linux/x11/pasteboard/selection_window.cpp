#include "platform/linux/x11/pasteboard/selection_window.h"

#include <poll.h>

#include <algorithm>
#include <utility>

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;
constexpr milliseconds kServerTimeout{2000};
constexpr SelectionWindow::Clock::duration kLongestSleep = std::chrono::hours(1);

}  // namespace

SelectionWindow::SelectionWindow(std::shared_ptr<X11Connection> connection, EventHandler handler)
    : connection_(std::move(connection)),
      handler_(std::move(handler)),
      window_(xcb_generate_id(connection_->get())) {
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_->get(), XCB_COPY_FROM_PARENT, window_, connection_->root(), -1,
                      -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                      XCB_CW_EVENT_MASK, &events);
}

SelectionWindow::~SelectionWindow() {
    xcb_destroy_window(connection_->get(), window_);
    xcb_flush(connection_->get());
}

void SelectionWindow::handleEvents() {
    while (const XcbEvent event = nextEvent()) handler_(*event);
}

/// What has arrived, if anything.
XcbEvent SelectionWindow::nextEvent() {
    if (deferred_) return std::move(deferred_);
    return XcbEvent(xcb_poll_for_event(connection_->get()));
}

XcbEvent SelectionWindow::waitFor(const std::function<bool(const xcb_generic_event_t&)>& isWanted,
                                  Clock::time_point deadline) {
    while (connection_->isAlive()) {
        while (XcbEvent event = nextEvent()) {
            if (isWanted(*event)) return event;
            handler_(*event);
        }
        if (Clock::now() >= deadline) break;
        sleepUntil(deadline, -1);
    }
    return nullptr;
}

void SelectionWindow::sleepUntil(Clock::time_point time, int otherDescriptor) {
    xcb_flush(connection_->get());
    // What was read along with a reply is waiting in the library and not at the descriptor.
    if (!deferred_) deferred_.reset(xcb_poll_for_queued_event(connection_->get()));
    if (deferred_) return;
    const auto left = std::chrono::ceil<milliseconds>(std::min(time - Clock::now(), kLongestSleep));
    const auto timeout = std::max<std::int64_t>(left.count(), 0);
    // Of a server that has gone nothing is to be expected; its descriptor would end every sleep.
    const int server = connection_->isAlive() ? xcb_get_file_descriptor(connection_->get()) : -1;
    pollfd sources[] = {{server, POLLIN, 0}, {otherDescriptor, POLLIN, 0}};
    poll(sources, 2, static_cast<int>(timeout));
}

xcb_timestamp_t SelectionWindow::serverTime() {
    // Appending nothing to a property changes nothing and is announced with the time.
    const xcb_atom_t property = connection_->atom("QUIL_TIME");
    xcb_change_property(connection_->get(), XCB_PROP_MODE_APPEND, window_, property,
                        XCB_ATOM_INTEGER, 32, 0, nullptr);
    const XcbEvent event = waitFor(
        [&](const xcb_generic_event_t& candidate) {
            if ((candidate.response_type & 0x7f) != XCB_PROPERTY_NOTIFY) return false;
            const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(candidate);
            return notify.window == window_ && notify.atom == property;
        },
        Clock::now() + kServerTimeout);
    return event ? reinterpret_cast<const xcb_property_notify_event_t&>(*event).time : 0;
}

}  // namespace quil::linux_platform
