#pragma once

#include "platform/platform.h"

/// Services that this platform does not offer yet; each goes when the real one is wired in.
namespace quil::linux_platform {

class NoEventPosting : public EventPosting {
  public:
    std::unique_ptr<EventSource> createSource(std::int32_t) override { return nullptr; }
    PostableEventRef createMouseEvent(EventSource*, std::uint32_t, Point, std::uint32_t) override {
        return nullptr;
    }
    PostableEventRef createScrollWheelEvent(EventSource*, std::uint32_t, std::uint32_t,
                                            std::int32_t, std::int32_t, std::int32_t) override {
        return nullptr;
    }
    PostableEventRef createKeyboardEvent(EventSource*, std::uint16_t, bool) override {
        return nullptr;
    }
    void setLocation(PostableEvent&, Point) override {}
    void setFlags(PostableEvent&, std::uint64_t) override {}
    void keyboardSetUnicodeString(PostableEvent&, std::u16string_view) override {}
    void post(std::uint32_t, const PostableEvent&) override {}
};

}  // namespace quil::linux_platform
