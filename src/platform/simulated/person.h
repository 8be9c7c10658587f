#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/simulated/event_taps.h"

namespace quil {
class SimulatedDesktop;
}

namespace quil::simulated {

/// The person at the desktop, whose input the taps see. What the person does happens at once, with
/// the clock's time; the taps' callbacks run on their own threads (`SimulatedDesktop::settle` waits
/// for them). May be used from any thread.
class Person {
  public:
    explicit Person(SimulatedDesktop& desktop) : desktop_(desktop) {}

    /// Left button down and up.
    Person& click(Point point);
    /// Left button down, one drag event, left button up.
    Person& drag(Point from, Point to);
    /// Turns the wheel by so many lines, up positive.
    Person& scroll(Point point, std::int64_t lines);
    /// A key down and up. Without characters the event converts to no key event with characters.
    Person& key(std::int64_t keyCode, std::optional<std::string> characters = {},
                std::uint64_t flags = 0);
    /// Types the text on a US keyboard, a key for each character. Characters that it lacks, and
    /// anything beyond ASCII, come with key code 0.
    Person& type(std::string_view text);
    /// Any one event. A timestamp of 0 stands for now.
    Person& event(UserEvent event);

    /// The system disables the taps, because one was too slow or because of user input. Returns
    /// when their callbacks have been told, so that what follows finds them as those leave them.
    Person& disableTapsByTimeout();
    Person& disableTapsByUserInput();
    /// A password is being typed, or no longer.
    Person& secureInput(bool enabled);

  private:
    SimulatedDesktop& desktop_;
};

}  // namespace quil::simulated
