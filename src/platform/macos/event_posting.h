#pragma once

#include "platform/event_posting.h"

namespace quil::macos {

/// The Quartz event services, for posting.
class MacEventPosting : public EventPosting {
  public:
    std::unique_ptr<EventSource> createSource(std::int32_t state) override;
    PostableEventRef createMouseEvent(EventSource* source, std::uint32_t type, Point point,
                                      std::uint32_t button) override;
    PostableEventRef createScrollWheelEvent(EventSource* source, std::uint32_t units,
                                            std::uint32_t wheelCount, std::int32_t wheel1,
                                            std::int32_t wheel2, std::int32_t wheel3) override;
    PostableEventRef createKeyboardEvent(EventSource* source, std::uint16_t keyCode,
                                         bool keyDown) override;
    void setLocation(PostableEvent& event, Point point) override;
    void setFlags(PostableEvent& event, std::uint64_t flags) override;
    void setIntegerValueField(PostableEvent& event, std::uint32_t field,
                              std::int64_t value) override;
    void keyboardSetUnicodeString(PostableEvent& event, std::u16string_view text) override;
    void post(std::uint32_t tapLocation, const PostableEvent& event) override;
};

}  // namespace quil::macos
