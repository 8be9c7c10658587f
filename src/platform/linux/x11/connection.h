#pragma once

#include <xcb/xcb.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>

namespace quil::linux_platform {

/// What an xcb call hands over to be freed.
struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using XcbPointer = std::unique_ptr<T, FreeDeleter>;

/// A connection to the X server. Errors of requests never end the process; a request whose reply
/// does not come gives nothing. A server that keeps us waiting for 2 s (stopped, or grabbed by a
/// client that hangs) counts as gone. The members may be used from any thread.
class X11Connection {
  public:
    /// Connects to the display that $DISPLAY names; null when there is none. Waits as long as the
    /// server does.
    static std::shared_ptr<X11Connection> open();
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    const xcb_screen_t& screen() const { return *screen_; }
    xcb_window_t root() const { return screen_->root; }
    /// False once the server has gone; the connection then never works again.
    bool isAlive() const { return !hasTimedOut_ && xcb_connection_has_error(connection_) == 0; }
    /// Whether the server counts as gone because a reply was overdue.
    bool hasTimedOut() const { return hasTimedOut_; }
    /// The atom of that name, asked for once per connection.
    xcb_atom_t atom(std::string_view name);
    /// Whether the server has the extension.
    bool hasExtension(xcb_extension_t& extension) const;
    /// Throws away the events that have arrived (errors of requests without a reply among them).
    void discardEvents();

    /// The reply to a request, or null when it failed: reply(xcb_get_geometry_reply, cookie). The
    /// function only gives the reply's type.
    template <typename Reply, typename Cookie>
    XcbPointer<Reply> reply(Reply* (*)(xcb_connection_t*, Cookie, xcb_generic_error_t**),
                            std::type_identity_t<Cookie> cookie) {
        return XcbPointer<Reply>(static_cast<Reply*>(waitForReply(cookie.sequence)));
    }
    /// Waits until the server has processed everything that was sent.
    void sync() { reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection_)); }
    /// Whether there is such a window.
    bool hasWindow(xcb_window_t window) {
        return reply(xcb_get_window_attributes_reply,
                     xcb_get_window_attributes(connection_, window)) != nullptr;
    }
    /// Whether a checked request without a reply has succeeded.
    bool succeeded(xcb_void_cookie_t cookie);

  private:
    X11Connection(xcb_connection_t* connection, const xcb_screen_t* screen)
        : connection_(connection), screen_(screen) {}
    void* waitForReply(unsigned sequence);

    xcb_connection_t* connection_;
    const xcb_screen_t* screen_;  // belongs to the connection
    std::atomic<bool> hasTimedOut_ = false;
    std::mutex atomsLock_;
    std::map<std::string, xcb_atom_t, std::less<>> atoms_;
};

/// The connection that the services of one thread share. A server that has gone or has not started
/// yet is looked for again at every request.
class X11Display {
  public:
    /// The live connection; null when there is no X server. A server that does not reply delays
    /// us by 2 s once, and no more until it replies.
    std::shared_ptr<X11Connection> connection();

  private:
    /// False when the process may have no more threads.
    bool beginAttempt();

    bool serverHangs_ = false;
    std::shared_ptr<X11Connection> connection_;
    std::future<std::shared_ptr<X11Connection>> attempt_;
};

}  // namespace quil::linux_platform
