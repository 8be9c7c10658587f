#include "platform/linux/x11/tap/record_stream.h"

#include <poll.h>
#include <xcb/xinput.h>
#include <xcb/xproto.h>

#include <chrono>
#include <cstring>
#include <span>
#include <utility>

#include "platform/linux/x11/keyboard/xkb_protocol.h"

namespace quil::linux_platform {
namespace {

constexpr std::chrono::seconds kServerTimeout{2};

// The category of a reply, as the protocol numbers them.
constexpr std::uint8_t kFromServer = 0;
constexpr std::uint8_t kFromClient = 1;
constexpr std::uint8_t kClientDied = 3;
constexpr std::uint8_t kStartOfData = 4;

constexpr std::uint8_t kReplyType = 1;

using Bytes = std::span<const std::uint8_t>;

template <typename T>
T readAs(Bytes bytes) {
    T value{};
    std::memcpy(&value, bytes.data(), std::min(sizeof value, bytes.size()));
    return value;
}

/// The server puts its time before each event, which are all of the same length.
constexpr std::size_t kTimeLength = 4;
constexpr std::size_t kElementLength = kTimeLength + 32;

/// The length of the request that begins there; 0 when it is not whole.
std::size_t requestLength(Bytes bytes) {
    if (bytes.size() < 4) return 0;
    std::size_t length = std::size_t{readAs<std::uint16_t>(bytes.subspan(2))} * 4;
    if (length == 0 && bytes.size() >= 8) {
        length = std::size_t{readAs<std::uint32_t>(bytes.subspan(4))} * 4;
    }
    return length >= 4 && length <= bytes.size() ? length : 0;
}

KeysymsChange readKeysymsChange(Bytes request) {
    const auto header = readAs<xcb_change_keyboard_mapping_request_t>(request);
    KeysymsChange change{header.first_keycode, header.keysyms_per_keycode, {}};
    const std::size_t wanted = std::size_t{header.keycode_count} * header.keysyms_per_keycode;
    for (std::size_t at = sizeof header; at < request.size() && change.keysyms.size() < wanted;
         at += 4) {
        change.keysyms.push_back(readAs<std::uint32_t>(request.subspan(at)));
    }
    return change;
}

/// An event, or a reply to a request for a grab.
void readFromServer(Bytes element, std::uint32_t client, std::deque<StreamItem>& items) {
    const Bytes bytes = element.subspan(kTimeLength);
    const std::uint8_t type = bytes[0] & 0x7F;
    if (type == kReplyType) {
        items.emplace_back(GrabReply{client, readAs<xcb_grab_keyboard_reply_t>(bytes).status,
                                     readAs<xcb_input_xi_grab_device_reply_t>(bytes).status,
                                     readAs<std::uint32_t>(element)});
        return;
    }
    if (type == XCB_FOCUS_IN || type == XCB_FOCUS_OUT) {
        items.emplace_back(
            FocusChange{readAs<xcb_focus_in_event_t>(bytes).mode, readAs<std::uint32_t>(element)});
        return;
    }
    // All of these are laid out alike.
    const auto event = readAs<xcb_key_press_event_t>(bytes);
    items.emplace_back(
        DeviceEvent{type, event.detail, event.state, event.time, event.root_x, event.root_y});
}

}  // namespace

std::unique_ptr<RecordStream> RecordStream::open(bool withMotion) {
    auto control = X11Display().connection();
    if (!control || !control->hasExtension(xcb_record_id)) return nullptr;
    std::unique_ptr<RecordStream> stream(new RecordStream(std::move(control)));
    return stream->begin(withMotion) ? std::move(stream) : nullptr;
}

bool RecordStream::begin(bool withMotion) {
    auto data = X11Display().connection();
    if (!data) return false;
    const std::uint32_t context = xcb_generate_id(control_->get());
    const auto ranges = this->ranges(withMotion);
    const xcb_record_client_spec_t everyone = XCB_RECORD_CS_ALL_CLIENTS;
    if (!control_->reply(xcb_record_query_version_reply,
                         xcb_record_query_version(control_->get(), XCB_RECORD_MAJOR_VERSION,
                                                  XCB_RECORD_MINOR_VERSION)) ||
        !control_->succeeded(xcb_record_create_context_checked(
            control_->get(), context, XCB_RECORD_H_TYPE_FROM_SERVER_TIME, 1,
            static_cast<std::uint32_t>(ranges.size()), &everyone, ranges.data()))) {
        return false;
    }
    replies_ = RecordReplies::open(std::move(data), context);
    return replies_ && awaitStart();
}

std::vector<xcb_record_range_t> RecordStream::ranges(bool withMotion) {
    const auto opcodeOf = [&](xcb_extension_t& extension) -> std::uint8_t {
        if (!control_->hasExtension(extension)) return 0;
        return xcb_get_extension_data(control_->get(), &extension)->major_opcode;
    };
    // The fewer they are, the longer the connection has room for them.
    xcb_record_range_t keys{};
    keys.device_events = {XCB_KEY_PRESS, XCB_KEY_PRESS};
    keys.delivered_events = {XCB_FOCUS_IN, XCB_FOCUS_OUT};
    keys.core_requests = {XCB_CHANGE_KEYBOARD_MAPPING, XCB_CHANGE_KEYBOARD_MAPPING};
    keys.client_died = 1;
    xcb_record_range_t pointer{};
    pointer.device_events = {XCB_BUTTON_PRESS, withMotion ? std::uint8_t{XCB_MOTION_NOTIFY}
                                                          : std::uint8_t{XCB_BUTTON_RELEASE}};
    xcb_record_range_t grabs{};
    grabs.core_requests = {XCB_GRAB_KEYBOARD, XCB_UNGRAB_KEYBOARD};
    grabs.core_replies = {XCB_GRAB_KEYBOARD, XCB_GRAB_KEYBOARD};
    std::vector<xcb_record_range_t> ranges{keys, pointer, grabs};
    const auto addRequests = [&](std::uint8_t major, std::uint8_t first, std::uint8_t last) {
        if (major == 0) return;
        xcb_record_range_t range{};
        range.ext_requests = {{major, major}, {first, last}};
        ranges.push_back(range);
    };
    xkbOpcode_ = opcodeOf(xcb_xkb_id);
    xinputOpcode_ = opcodeOf(xcb_input_id);
    addRequests(xkbOpcode_, XCB_XKB_SET_MAP, XCB_XKB_SET_MAP);
    addRequests(xkbOpcode_, XCB_XKB_GET_KBD_BY_NAME, XCB_XKB_GET_KBD_BY_NAME);
    addRequests(xinputOpcode_, XCB_INPUT_XI_GRAB_DEVICE, XCB_INPUT_XI_UNGRAB_DEVICE);
    if (xinputOpcode_ != 0) {
        ranges.back().ext_replies = {{xinputOpcode_, xinputOpcode_},
                                     {XCB_INPUT_XI_GRAB_DEVICE, XCB_INPUT_XI_GRAB_DEVICE}};
    }
    return ranges;
}

bool RecordStream::awaitStart() {
    using std::chrono::milliseconds;
    const auto deadline = std::chrono::steady_clock::now() + kServerTimeout;
    while (isAlive()) {
        if (const Reply reply = replies_->next()) {
            startTime_ = reply->server_time;
            return reply->category == kStartOfData;
        }
        const auto left =
            std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left <= milliseconds::zero()) return false;
        pollfd socket{descriptor(), POLLIN, 0};
        poll(&socket, 1, static_cast<int>(left.count()));
    }
    return false;
}

void RecordStream::fetch() {
    // The server writes the recording when it is about to write replies: by the second one it has
    // written all that it had before the first.
    control_->sync();
    control_->sync();
    replies_->receive();
}

void RecordStream::read(std::deque<StreamItem>& items) {
    for (Reply reply = replies_->next(); reply; reply = replies_->next()) {
        if (reply->category == kFromClient) readRequests(*reply, items);
        if (reply->category == kClientDied) items.emplace_back(ClientEnd{reply->xid_base});
        if (reply->category != kFromServer) continue;
        Bytes bytes(xcb_record_enable_context_data(reply.get()),
                    static_cast<std::size_t>(xcb_record_enable_context_data_length(reply.get())));
        for (; bytes.size() >= kElementLength; bytes = bytes.subspan(kElementLength)) {
            readFromServer(bytes.first(kElementLength), reply->xid_base, items);
        }
    }
}

void RecordStream::readRequests(const xcb_record_enable_context_reply_t& reply,
                                std::deque<StreamItem>& items) const {
    if (reply.client_swapped) {
        items.emplace_back(KeyboardChange{});
        items.emplace_back(UnreadRequest{});
        return;
    }
    Bytes bytes(xcb_record_enable_context_data(&reply),
                static_cast<std::size_t>(xcb_record_enable_context_data_length(&reply)));
    for (std::size_t length = requestLength(bytes); length > 0; length = requestLength(bytes)) {
        readRequest(bytes.first(length), reply.xid_base, items);
        bytes = bytes.subspan(length);
    }
}

void RecordStream::readRequest(Bytes request, std::uint32_t client,
                               std::deque<StreamItem>& items) const {
    const std::uint8_t major = request[0];
    const std::uint8_t minor = request[1];
    if (major == XCB_CHANGE_KEYBOARD_MAPPING) {
        items.emplace_back(readKeysymsChange(request));
    } else if (major == XCB_GRAB_KEYBOARD) {
        const auto grab = readAs<xcb_grab_keyboard_request_t>(request);
        items.emplace_back(GrabRequest{client, true, {}, grab.time});
    } else if (major == XCB_UNGRAB_KEYBOARD) {
        const auto release = readAs<xcb_ungrab_keyboard_request_t>(request);
        items.emplace_back(GrabRequest{client, false, {}, release.time});
    } else if (major == xinputOpcode_ && minor == XCB_INPUT_XI_GRAB_DEVICE) {
        const auto grab = readAs<xcb_input_xi_grab_device_request_t>(request);
        items.emplace_back(GrabRequest{client, true, grab.deviceid, grab.time});
    } else if (major == xinputOpcode_) {
        const auto release = readAs<xcb_input_xi_ungrab_device_request_t>(request);
        items.emplace_back(GrabRequest{client, false, release.deviceid, release.time});
    } else if (major == xkbOpcode_) {
        items.emplace_back(KeyboardChange{});
    }
}

}  // namespace quil::linux_platform
