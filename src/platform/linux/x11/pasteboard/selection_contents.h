#pragma once

#include <xcb/xcb.h>

#include <deque>
#include <memory>
#include <string>

namespace quil::linux_platform {

/// A text that several transfers may be handing out at once.
using SharedText = std::shared_ptr<const std::string>;

/// What we offered, and when. A program that pastes asks with the time of the key press that made
/// it paste; when it is slow, something else may be on offer by then, and it still gets what was on
/// offer at that time.
class SelectionContents {
  public:
    /// From that server time on this is on offer; null for nothing.
    void offer(xcb_timestamp_t time, SharedText text);
    /// The selection is not ours.
    void lose();
    /// Another client took the selection at that server time; we may have taken it back since.
    void loseAt(xcb_timestamp_t time);
    /// Whether the selection is ours.
    bool isOwned() const { return owned_; }
    /// The server time at which we took it.
    xcb_timestamp_t ownedSince() const { return offers_.empty() ? 0 : offers_.back().time; }
    /// What is on offer now.
    SharedText current() const { return owned_ ? offers_.back().text : nullptr; }
    /// What was on offer at that server time; what is now when it is 0 (XCB_CURRENT_TIME).
    SharedText at(xcb_timestamp_t time) const;

  private:
    struct Offer {
        xcb_timestamp_t time;
        SharedText text;
    };
    std::deque<Offer> offers_;  // oldest first
    bool owned_ = false;
};

}  // namespace quil::linux_platform
