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

class NoEventTaps : public EventTaps {
  public:
    EventTapRef createTap(std::uint32_t, std::uint32_t, std::uint32_t, std::uint64_t,
                          EventTapCallback) override {
        return nullptr;
    }
    void enableTap(const EventTapRef&, bool) override {}
    void invalidateTap(const EventTapRef&) override {}
    RunLoopSourceRef createRunLoopSource(const EventTapRef&) override { return nullptr; }
    RunLoopRef currentRunLoop() override { return nullptr; }
    void addSource(const RunLoopRef&, const RunLoopSourceRef&) override {}
    void removeSource(const RunLoopRef&, const RunLoopSourceRef&) override {}
    void invalidateSource(const RunLoopSourceRef&) override {}
    void runCurrentRunLoop() override {}
    void stopRunLoop(const RunLoopRef&) override {}
    bool isSecureEventInputEnabled() override { return false; }
};

}  // namespace quil::linux_platform
