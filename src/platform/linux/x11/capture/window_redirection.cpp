#include "platform/linux/x11/capture/window_redirection.h"

#include <poll.h>
#include <xcb/composite.h>
#include <xcb/damage.h>

#include <algorithm>
#include <vector>

#include "platform/linux/x11/windows/window_tree.h"

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;
using Time = Clock::time_point;

/// How long a program may take to paint what had been covered.
constexpr milliseconds kPaintTimeout{500};
/// A program that has not painted for so long has finished.
constexpr milliseconds kQuiet{60};
/// Windows inside one window; no toolkit makes so many.
constexpr std::size_t kMaximumWindows = 2000;

/// The window and all windows inside it.
std::vector<xcb_window_t> treeOf(X11Connection& connection, xcb_window_t window) {
    std::vector<xcb_window_t> windows{window};
    std::vector<xcb_window_t> level = windows;
    while (!level.empty() && windows.size() < kMaximumWindows) {
        level = childrenOf(connection, level);
        windows.insert(windows.end(), level.begin(), level.end());
    }
    return windows;
}

void selectEvents(X11Connection& connection, const std::vector<xcb_window_t>& windows,
                  std::uint32_t mask) {
    for (const xcb_window_t window : windows) {
        xcb_change_window_attributes(connection.get(), window, XCB_CW_EVENT_MASK, &mask);
    }
}

std::uint8_t typeOf(const xcb_generic_event_t& event) {
    return event.response_type & 0x7f;  // without the mark of events that clients send
}

/// Reports what is painted in a window and those inside it, from now on. Uses up the connection's
/// events.
class PaintWatch {
  public:
    PaintWatch(X11Connection& connection, xcb_window_t window) : connection_(connection) {
        if (!connection.hasExtension(xcb_damage_id)) return;
        connection.reply(xcb_damage_query_version_reply,
                         xcb_damage_query_version(connection.get(), 1, 1));
        damage_ = xcb_generate_id(connection.get());
        xcb_damage_create(connection.get(), damage_, window,
                          XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        firstEvent_ = xcb_get_extension_data(connection.get(), &xcb_damage_id)->first_event;
    }
    ~PaintWatch() {
        if (damage_ == XCB_NONE) return;
        xcb_damage_destroy(connection_.get(), damage_);
        xcb_flush(connection_.get());
    }
    PaintWatch(const PaintWatch&) = delete;
    PaintWatch& operator=(const PaintWatch&) = delete;

    /// Waits until something has been painted and then nothing for a while, or until that time.
    void waitUntilDone(Time deadline) {
        if (damage_ == XCB_NONE || !waitForPainting(deadline)) return;
        while (Clock::now() < deadline &&
               waitForPainting(std::min(deadline, Clock::now() + kQuiet))) {
        }
    }

  private:
    bool waitForPainting(Time deadline) {
        xcb_flush(connection_.get());
        while (connection_.isAlive()) {
            while (const XcbPointer<xcb_generic_event_t> event{
                xcb_poll_for_event(connection_.get())}) {
                if (typeOf(*event) == firstEvent_ + XCB_DAMAGE_NOTIFY) return true;
            }
            const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
            if (left <= milliseconds::zero()) return false;
            pollfd socket{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
            poll(&socket, 1, static_cast<int>(left.count()));
        }
        return false;
    }

    X11Connection& connection_;
    xcb_damage_damage_t damage_ = XCB_NONE;
    int firstEvent_ = 0;
};

}  // namespace

bool WindowRedirection::keepContent(xcb_window_t window) {
    if (!isRedirected_) return redirect(window);
    // A program may still be painting, other than the one whose window came first.
    if (window != paintedFirst_ && Clock::now() < paintedBy_) {
        PaintWatch(*connection_, window).waitUntilDone(paintedBy_);
    }
    return true;
}

bool WindowRedirection::redirect(xcb_window_t window) {
    const std::vector<xcb_window_t> windows = treeOf(*connection_, window);
    PaintWatch watch(*connection_, window);
    connection_->discardEvents();
    selectEvents(*connection_, windows, XCB_EVENT_MASK_EXPOSURE);
    isRedirected_ = connection_->succeeded(xcb_composite_redirect_subwindows_checked(
        connection_->get(), connection_->root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC));
    selectEvents(*connection_, windows, XCB_EVENT_MASK_NO_EVENT);
    // Programs are asked to paint what was covered, and nothing else. These events precede the
    // reply that has just come; what the server itself painted instead has been reported, too.
    bool wasCovered = false;
    while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(connection_->get())}) {
        wasCovered = wasCovered || typeOf(*event) == XCB_EXPOSE;
    }
    paintedFirst_ = window;
    paintedBy_ = Clock::now() + kPaintTimeout;
    if (wasCovered) watch.waitUntilDone(paintedBy_);
    return isRedirected_;
}

}  // namespace quil::linux_platform
