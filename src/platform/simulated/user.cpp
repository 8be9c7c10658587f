#include "platform/simulated/user.h"

#include <cmath>

#include "platform/event_posting.h"
#include "platform/simulated/desktop.h"
#include "platform/simulated/us_keyboard.h"
#include "text/characters.h"

namespace quil::simulated {

User& User::click(Point point) {
    event({.type = kEventLeftMouseDown, .location = point});
    return event({.type = kEventLeftMouseUp, .location = point});
}

User& User::drag(Point from, Point to) {
    event({.type = kEventLeftMouseDown, .location = from});
    event({.type = kEventLeftMouseDragged, .location = to});
    return event({.type = kEventLeftMouseUp, .location = to});
}

User& User::scroll(Point point, std::int64_t lines) {
    return event({.type = kEventScrollWheel, .location = point, .scrollLines = lines});
}

User& User::key(std::int64_t keyCode, std::optional<std::string> characters, std::uint64_t flags) {
    UserEvent key{.type = kEventKeyDown,
                  .flags = flags,
                  .keyCode = keyCode,
                  .characters = std::move(characters)};
    event(key);
    key.type = kEventKeyUp;
    return event(key);
}

User& User::type(std::string_view text) {
    while (!text.empty()) {
        const std::string_view character = characterPrefix(text, 1);
        const UsKey key = usKeyFor(character);
        this->key(key.code, std::string(character), key.shifted ? kEventFlagMaskShift : 0);
        text.remove_prefix(character.size());
    }
    return *this;
}

User& User::event(UserEvent event) {
    if (event.timestamp == 0) {
        event.timestamp = static_cast<std::uint64_t>(std::llround(desktop_.clock().uptime() * 1e9));
    }
    desktop_.eventTaps().deliver(event);
    return *this;
}

User& User::disableTapsByTimeout() {
    desktop_.eventTaps().disableTaps(true);
    desktop_.eventTaps().settle();
    return *this;
}

User& User::disableTapsByUserInput() {
    desktop_.eventTaps().disableTaps(false);
    desktop_.eventTaps().settle();
    return *this;
}

User& User::secureInput(bool enabled) {
    desktop_.eventTaps().setSecureEventInput(enabled);
    return *this;
}

}  // namespace quil::simulated
