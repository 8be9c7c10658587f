#pragma once

#include <list>

#include "platform/linux/x11/pasteboard/selection_contents.h"
#include "platform/linux/x11/pasteboard/selection_window.h"

namespace quil::linux_platform {

/// Hands the text that we offer to the clients that ask for it, in the form that they ask for
/// (ICCCM, section 2): UTF8_STRING, text/plain, STRING, TEXT; TARGETS, TIMESTAMP, MULTIPLE; large
/// texts in parts (INCR). A transfer goes on when something else is on offer by then.
class SelectionResponder {
  public:
    SelectionResponder(SelectionWindow& window, const SelectionContents& contents)
        : window_(window), connection_(window.connection()), contents_(contents) {}

    /// Responds to a client, also that there is nothing for it.
    void respond(const xcb_selection_request_event_t& request);
    /// A client has taken a part of a text (or changed some other property).
    void propertyChanged(const xcb_property_notify_event_t& event);
    /// A client's window is gone.
    void windowDestroyed(xcb_window_t window);
    /// From when on, unless something comes in between, no client is fetching what is on offer:
    /// none that has asked what there is and not for a text yet, or for a text just now, or is
    /// being handed one in parts.
    SelectionWindow::Clock::time_point quietFrom() const;
    /// When the next transfer that makes no progress is given up; far away when there is none.
    SelectionWindow::Clock::time_point nextDeadline() const;
    /// Gives up the transfers whose time has come.
    void abandonStalled();

  private:
    using Clock = SelectionWindow::Clock;

    /// A text that is handed over in parts, each when the client has deleted the one before.
    struct Transfer {
        xcb_window_t requestor;
        xcb_atom_t property;
        xcb_atom_t type;
        SharedText bytes;
        std::size_t sent;
        Clock::time_point deadline;
    };

    bool convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property,
                 const SharedText& text);
    bool convertMultiple(xcb_window_t requestor, xcb_atom_t property, const SharedText& text);
    void writeTargets(xcb_window_t requestor, xcb_atom_t property, bool hasText);
    void writeText(xcb_window_t requestor, xcb_atom_t property, xcb_atom_t type, SharedText bytes);
    void watch(xcb_window_t requestor, bool isWatched);
    void end(std::list<Transfer>::iterator transfer);

    /// What a client's window has asked for recently.
    struct Fetch {
        xcb_window_t requestor;
        Clock::time_point last;
        bool hasText;
        /// The server time since when what it asked for has been on offer.
        xcb_timestamp_t offer;
        /// Between requests for the same offer, from the first text on.
        Clock::duration longestPause;
    };

    void noteFetch(const xcb_selection_request_event_t& request, bool hasText);

    SelectionWindow& window_;
    X11Connection& connection_;
    const SelectionContents& contents_;
    std::list<Transfer> transfers_;
    std::list<Fetch> fetches_;
};

}  // namespace quil::linux_platform
