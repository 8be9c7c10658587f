#include "platform/linux/x11/pasteboard/selection_reader.h"

#include <algorithm>
#include <string_view>

#include "text/characters.h"

namespace quil::linux_platform {
namespace {

using Clock = SelectionWindow::Clock;
constexpr std::chrono::milliseconds kOwnerTimeout{1000};
constexpr std::chrono::milliseconds kLongestTransfer{5000};
constexpr std::size_t kMaximumBytes = std::size_t{256} << 20;

/// What the owner wrote into our property.
struct Part {
    xcb_atom_t type = XCB_ATOM_NONE;
    std::string bytes;
};

class Reading {
  public:
    Reading(SelectionWindow& window, xcb_atom_t selection)
        : window_(window),
          connection_(window.connection()),
          selection_(selection),
          property_(connection_.atom("QUIL_SELECTION")),
          end_(Clock::now() + kLongestTransfer) {}

    /// The text in that form. `refused` tells an owner that refuses from one that does not reply.
    std::optional<std::string> in(std::string_view target, bool& refused) {
        refused = false;
        const xcb_timestamp_t time = window_.serverTime();
        xcb_delete_property(connection_.get(), window_.id(), property_);
        xcb_convert_selection(connection_.get(), window_.id(), selection_, connection_.atom(target),
                              property_, time);
        const XcbEvent reply =
            window_.waitFor([&](const xcb_generic_event_t& event) { return isReply(event, time); },
                            replyDeadline());
        if (!reply) return {};
        const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(*reply);
        refused = notify.property == XCB_ATOM_NONE;
        if (refused) return {};
        auto part = takePart();
        if (part && part->type == connection_.atom("INCR")) part = takeParts();
        if (!part) return {};
        refused = part->type == XCB_ATOM_NONE;
        if (refused) return {};
        return part->type == XCB_ATOM_STRING ? latin1ToUtf8(part->bytes) : validUtf8(part->bytes);
    }

  private:
    Clock::time_point replyDeadline() const { return std::min(end_, Clock::now() + kOwnerTimeout); }

    /// A reply that comes too late for its own question must not pass for the next one's.
    bool isReply(const xcb_generic_event_t& event, xcb_timestamp_t time) const {
        if ((event.response_type & 0x7f) != XCB_SELECTION_NOTIFY) return false;
        const auto& notify = reinterpret_cast<const xcb_selection_notify_event_t&>(event);
        return notify.requestor == window_.id() && notify.selection == selection_ &&
               notify.time == time;
    }

    /// Reads our property and deletes it, which asks for the next part of a text in parts.
    std::optional<Part> takePart() {
        const auto reply = connection_.reply(
            xcb_get_property_reply,
            xcb_get_property(connection_.get(), 1, window_.id(), property_, XCB_ATOM_ANY, 0,
                             static_cast<std::uint32_t>(kMaximumBytes / 4)));
        if (!reply) return {};
        const auto* bytes = static_cast<const char*>(xcb_get_property_value(reply.get()));
        const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
        return Part{reply->type, std::string(bytes, length)};
    }

    std::optional<Part> takeParts() {
        Part whole;
        for (;;) {
            const XcbEvent news =
                window_.waitFor([&](const xcb_generic_event_t& event) { return isNewPart(event); },
                                replyDeadline());
            if (!news) return {};
            const auto part = takePart();
            if (!part || whole.bytes.size() + part->bytes.size() > kMaximumBytes) return {};
            if (part->bytes.empty()) return whole;
            whole.type = part->type;
            whole.bytes += part->bytes;
        }
    }

    bool isNewPart(const xcb_generic_event_t& event) const {
        if ((event.response_type & 0x7f) != XCB_PROPERTY_NOTIFY) return false;
        const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        return notify.window == window_.id() && notify.atom == property_ &&
               notify.state == XCB_PROPERTY_NEW_VALUE;
    }

    SelectionWindow& window_;
    X11Connection& connection_;
    const xcb_atom_t selection_;
    const xcb_atom_t property_;
    const Clock::time_point end_;
};

}  // namespace

std::optional<std::string> readSelection(SelectionWindow& window, xcb_atom_t selection) {
    X11Connection& connection = window.connection();
    const auto owner = connection.reply(xcb_get_selection_owner_reply,
                                        xcb_get_selection_owner(connection.get(), selection));
    if (!owner || owner->owner == XCB_WINDOW_NONE) return {};
    Reading reading(window, selection);
    for (const std::string_view target : {"UTF8_STRING", "text/plain;charset=utf-8", "STRING"}) {
        bool refused = false;
        auto text = reading.in(target, refused);
        if (text || !refused) return text;
    }
    return {};
}

}  // namespace quil::linux_platform
