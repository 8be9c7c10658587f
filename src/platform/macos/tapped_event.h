#pragma once

#import <ApplicationServices/ApplicationServices.h>

#include "platform/event_taps.h"

namespace quil::macos {

/// An event of a tap, borrowed from the tap's callback.
class MacTappedEvent : public TappedEvent {
  public:
    explicit MacTappedEvent(CGEventRef event) : event_(event) {}

    Point location() const override;
    std::uint64_t timestamp() const override;
    std::uint64_t flags() const override;
    std::int64_t integerValueField(std::uint32_t field) const override;
    std::optional<std::string> characters() const override;

  private:
    CGEventRef event_;
};

}  // namespace quil::macos
