#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quil::linux_platform {

/// What an xcb call hands over to be freed.
struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using XcbPointer = std::unique_ptr<T, FreeDeleter>;

/// A connection to the X server. Errors of requests never end the process; a request whose reply
/// does not come gives nothing. The members may be used from any thread.
class X11Connection {
  public:
    /// Connects to the display that $DISPLAY names; null when there is none.
    static std::shared_ptr<X11Connection> open();
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    const xcb_screen_t& screen() const { return *screen_; }
    xcb_window_t root() const { return screen_->root; }
    /// False once the server has gone; the connection then never works again.
    bool isAlive() const { return xcb_connection_has_error(connection_) == 0; }
    /// The atom of that name, asked for once per connection.
    xcb_atom_t atom(std::string_view name);
    /// The name of an atom; empty when it has none.
    std::string atomName(xcb_atom_t atom);
    /// Whether the server has the extension.
    bool hasExtension(xcb_extension_t& extension) const;
    /// Throws away the events that have arrived (errors of requests without a reply among them).
    void discardEvents();

    /// The reply to a request, or null when it failed: reply(xcb_get_geometry_reply, cookie).
    template <typename ReplyFunction, typename Cookie>
    auto reply(ReplyFunction function, Cookie cookie) {
        xcb_generic_error_t* error = nullptr;
        auto* answer = function(connection_, cookie, &error);
        std::free(error);
        return XcbPointer<std::remove_pointer_t<decltype(answer)>>(answer);
    }

  private:
    X11Connection(xcb_connection_t* connection, const xcb_screen_t* screen)
        : connection_(connection), screen_(screen) {}

    xcb_connection_t* connection_;
    const xcb_screen_t* screen_;  // belongs to the connection
    std::mutex atomsLock_;
    std::map<std::string, xcb_atom_t, std::less<>> atoms_;
};

/// The connection that the services of one thread share. A server that has gone or has not started
/// yet is looked for again at every request.
class X11Display {
  public:
    /// The live connection; null when there is no X server.
    std::shared_ptr<X11Connection> connection();

  private:
    std::shared_ptr<X11Connection> connection_;
};

}  // namespace quil::linux_platform
