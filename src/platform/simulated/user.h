#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/simulated/event_taps.h"

namespace quil {
class SimulatedDesktop;
}

namespace quil::simulated {

/// The user at the desktop, whose input the taps see. What the user does happens at once, with
/// the clock's time; the taps' callbacks run on their own threads (`SimulatedDesktop::settle` waits
/// for them). May be used from any thread.
class User {
  public:
    explicit User(SimulatedDesktop& desktop) : desktop_(desktop) {}

    /// Left button down and up.
    User& click(Point point);
    /// Left button down, one drag event, left button up.
    User& drag(Point from, Point to);
    /// Turns the wheel by so many lines, up positive.
    User& scroll(Point point, std::int64_t lines);
    /// A key down and up. Without characters the event converts to no key event with characters.
    User& key(std::int64_t keyCode, std::optional<std::string> characters = {},
              std::uint64_t flags = 0);
    /// Types the text on a US keyboard, a key for each character. Characters that it lacks, and
    /// anything beyond ASCII, come with key code 0.
    User& type(std::string_view text);
    /// Any one event. A timestamp of 0 stands for now.
    User& event(UserEvent event);

    /// The system disables the taps, because one was too slow or because of user input. Returns
    /// when their callbacks have been told, so that what follows finds them as those leave them.
    User& disableTapsByTimeout();
    User& disableTapsByUserInput();
    /// A password is being typed, or no longer.
    User& secureInput(bool enabled);

  private:
    SimulatedDesktop& desktop_;
};

}  // namespace quil::simulated
