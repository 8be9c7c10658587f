#include "platform/linux/x11/properties.h"

#include "text/characters.h"

namespace quil::linux_platform {
namespace {

/// The most that is read of one property, in units of four bytes: a megabyte.
constexpr std::uint32_t kMaximumUnits = 1 << 18;

std::string latin1ToUtf8(std::string_view bytes) {
    std::u16string units;
    for (const char byte : bytes) units.push_back(static_cast<unsigned char>(byte));
    return toUtf8(units);
}

}  // namespace

PropertyRequest::PropertyRequest(X11Connection& connection, xcb_window_t window,
                                 std::string_view name)
    : cookie_(xcb_get_property(connection.get(), 0, window, connection.atom(name), XCB_ATOM_ANY, 0,
                               kMaximumUnits)) {}

void PropertyRequest::read(X11Connection& connection) {
    const auto answer = connection.reply(xcb_get_property_reply, cookie_);
    if (!answer) return;
    const auto length = static_cast<std::size_t>(xcb_get_property_value_length(answer.get()));
    const void* data = xcb_get_property_value(answer.get());
    if (answer->format == 32) {
        const auto* items = static_cast<const std::uint32_t*>(data);
        numbers_.assign(items, items + length / sizeof(std::uint32_t));
    } else if (answer->format == 8) {
        const std::string_view bytes(static_cast<const char*>(data), length);
        text_ = answer->type == XCB_ATOM_STRING ? latin1ToUtf8(bytes) : validUtf8(bytes);
    }
}

std::vector<std::uint32_t> readNumbers(X11Connection& connection, xcb_window_t window,
                                       std::string_view name) {
    PropertyRequest request(connection, window, name);
    request.read(connection);
    return request.numbers();
}

}  // namespace quil::linux_platform
