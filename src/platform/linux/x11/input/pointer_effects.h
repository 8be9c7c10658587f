#pragma once

#include <optional>

#include "platform/geometry.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/input/window_manager_queue.h"

namespace quil::linux_platform {

/// What posted pointer events have set off. A window manager keeps a click to itself until it has
/// looked at it, and gives the focus to the window then; the program moves its own focus when it
/// gets the click. Keys are held up by neither. So before keys are sent, or the active window is
/// looked for, all of them must have processed the click, as the events of one queue would.
class PointerEffects {
  public:
    /// `display` outlives this.
    explicit PointerEffects(X11Display& display) : display_(display) {}

    /// An event has been sent: a move, or a button's or the wheel's.
    void posted(Point location, bool isButton);

    /// Waits until the window manager, the program that was clicked and the one that has the focus
    /// then have processed what was posted and the focus stays where it is; 2 s at the most. Does
    /// nothing when nothing was posted since the last time.
    void settle();

  private:
    X11Display& display_;
    WindowManagerQueue windowManager_;
    bool isPosted_ = false;
    /// Of the last event of a button or the wheel.
    std::optional<Point> buttonLocation_;
};

}  // namespace quil::linux_platform
