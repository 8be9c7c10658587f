#pragma once

#include <mutex>

#include "platform/event_posting.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/input/keyboard_source.h"
#include "platform/linux/x11/input/pointer_effects.h"
#include "platform/linux/x11/input/pointer_output.h"

namespace quil::linux_platform {

/// Input events by the XTEST extension. Pointer events are sent one by one; a source delivers keys
/// and text, by the time that it is released at the latest, and only when the pointer events before
/// them have had their effect. Without a display nothing is made.
class X11EventPosting : public EventPosting {
  public:
    /// Both outlive this service.
    X11EventPosting(X11Display& display, PointerEffects& effects)
        : display_(display), effects_(effects) {}
    ~X11EventPosting() override;
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
    void setIntegerValueField(PostableEvent&, std::uint32_t, std::int64_t) override {}
    void beginClicks(Point at, std::uint32_t button, int count) override {
        pointer_.awaitNewCount(at, button, count);
    }
    void keyboardSetUnicodeString(PostableEvent& event, std::u16string_view text) override;
    void post(std::uint32_t tapLocation, const PostableEvent& event) override;

    /// Nothing more is posted; what is pressed is released, and the keyboard is as before. May be
    /// called from any thread while another one posts, which it takes the connection from. Waits
    /// 1 s at the most for a program that has keys still to read.
    void abandon();

  private:
    /// The connection, when the server takes synthetic input.
    std::shared_ptr<X11Connection> connection();

    X11Display& display_;
    PointerEffects& effects_;
    PointerOutput pointer_;
    /// Guards the others, so that no connection is opened once this has been abandoned.
    std::mutex lock_;
    bool isAbandoned_ = false;
    /// The connection whose server has been cleared of what a runtime that was killed has left, and
    /// a window on it that stands for this process.
    std::weak_ptr<X11Connection> cleared_;
    xcb_window_t window_ = XCB_WINDOW_NONE;
};

}  // namespace quil::linux_platform
