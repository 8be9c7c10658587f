#include "platform/linux/x11/pasteboard/selection_contents.h"

#include <algorithm>
#include <utility>

namespace quil::linux_platform {
namespace {

/// A paste makes two (the text, the former text), or four when its steps are far between.
constexpr std::size_t kMaximumOffers = 4;

/// Server times count milliseconds and wrap after 49.7 days.
bool isBefore(xcb_timestamp_t a, xcb_timestamp_t b) {
    return static_cast<std::int32_t>(a - b) < 0;
}

}  // namespace

void SelectionContents::offer(xcb_timestamp_t time, SharedText text) {
    if (!owned_) offers_.clear();
    owned_ = true;
    offers_.push_back({time, std::move(text)});
    if (offers_.size() > kMaximumOffers) offers_.pop_front();
}

void SelectionContents::lose() {
    owned_ = false;
    offers_.clear();
}

void SelectionContents::loseAt(xcb_timestamp_t time) {
    if (!isBefore(time, ownedSince())) lose();
}

SharedText SelectionContents::at(xcb_timestamp_t time) const {
    if (!owned_) return nullptr;
    if (time == XCB_CURRENT_TIME) return current();
    const auto offer = std::find_if(offers_.rbegin(), offers_.rend(),
                                    [&](const Offer& o) { return !isBefore(time, o.time); });
    return offer == offers_.rend() ? nullptr : offer->text;
}

}  // namespace quil::linux_platform
