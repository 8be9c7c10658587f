#include "platform/linux/x11/properties.h"

#include <xcb-imdkit/encoding.h>

#include <algorithm>

#include "text/characters.h"

namespace quil::linux_platform {
namespace {

/// The most that is read of one property, in units of four bytes: a megabyte.
constexpr std::uint32_t kMaximumUnits = 1 << 18;

std::string compoundTextToUtf8(std::string_view bytes) {
    [[maybe_unused]] static const bool isReady = (xcb_compound_text_init(), true);
    std::size_t length = 0;
    const XcbPointer<char> text(xcb_compound_text_to_utf8(bytes.data(), bytes.size(), &length));
    return text ? validUtf8({text.get(), length}) : latin1ToUtf8(bytes);
}

}  // namespace

PropertyRequest::PropertyRequest(X11Connection& connection, xcb_window_t window,
                                 std::string_view name)
    : cookie_(xcb_get_property(connection.get(), 0, window, connection.atom(name), XCB_ATOM_ANY, 0,
                               kMaximumUnits)) {}

void PropertyRequest::read(X11Connection& connection) {
    const auto reply = connection.reply(xcb_get_property_reply, cookie_);
    if (!reply) return;
    exists_ = reply->type != XCB_ATOM_NONE;
    const auto length = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
    const void* data = xcb_get_property_value(reply.get());
    if (reply->format == 32) {
        const auto* items = static_cast<const std::uint32_t*>(data);
        numbers_.assign(items, items + length / sizeof(std::uint32_t));
    }
    if (reply->format != 8) return;
    std::string_view bytes(static_cast<const char*>(data), length);
    do {
        const std::string_view text = bytes.substr(0, bytes.find('\0'));
        if (reply->type == XCB_ATOM_STRING) {
            texts_.push_back(latin1ToUtf8(text));
        } else if (reply->type == connection.atom("COMPOUND_TEXT")) {
            texts_.push_back(compoundTextToUtf8(text));
        } else {
            texts_.push_back(validUtf8(text));
        }
        bytes.remove_prefix(std::min(text.size() + 1, bytes.size()));
    } while (!bytes.empty());
}

bool PropertyRequest::contains(std::uint32_t number) const {
    return std::find(numbers_.begin(), numbers_.end(), number) != numbers_.end();
}

PropertyRequest readProperty(X11Connection& connection, xcb_window_t window,
                             std::string_view name) {
    PropertyRequest request(connection, window, name);
    request.read(connection);
    return request;
}

void writeRootNumbers(X11Connection& connection, std::string_view name,
                      const std::vector<std::uint32_t>& numbers) {
    xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, connection.root(),
                        connection.atom(name), XCB_ATOM_CARDINAL, 32,
                        static_cast<std::uint32_t>(numbers.size()), numbers.data());
}

}  // namespace quil::linux_platform
