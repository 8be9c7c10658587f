#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/keyboard/keyboard_map.h"
#include "platform/linux/x11/tap/compose.h"
#include "platform/linux/x11/tap/record_stream.h"

namespace quil::linux_platform {

/// A key that went down, as the user meant it.
struct KeyPress {
    std::uint16_t virtualKeyCode = 0;
    /// Modifier flags of keyboard events. The Control key is the control flag, Alt the option flag.
    /// What chooses among a key's keysyms without being one of these (AltGr, Num Lock) is no flag.
    std::uint64_t flags = 0;
    /// What it types, a whole sequence for the key that ends one.
    std::string characters;
};

/// Reads key presses by the layout, which it follows as it changes.
class KeyReader {
  public:
    explicit KeyReader(std::shared_ptr<X11Connection> connection);

    /// Notices that the server has another keyboard or map.
    void followKeyboard();
    /// The flags of an event in that state.
    std::uint64_t flags(std::uint16_t state);
    /// The press of a key in that state. Nothing for a modifier key, for a key of a sequence before
    /// its last, and for one with a modifier that has no flag (Super).
    std::optional<KeyPress> press(std::uint8_t keyCode, std::uint16_t state);
    void keysymsChanged(const KeysymsChange& change);
    void keyboardChanged();
    /// What was composed is given up, as when the focus moves.
    void resetCompose() { compose_.reset(); }

  private:
    void readMap();
    bool isModifier(std::uint8_t keyCode, std::uint32_t keysym) const;
    std::uint32_t keysym(std::uint8_t keyCode, std::uint16_t state) const;
    std::uint32_t mappedKeysym(const KeyboardMap::Key& key, std::uint16_t state) const;

    std::shared_ptr<X11Connection> connection_;
    Compose compose_;
    bool isMapOutdated_ = true;
    KeyboardMap map_;
    std::uint8_t option_ = 0;
    std::uint8_t foreign_ = 0;
    /// What programs gave single keys since the map was read, in the order of the events.
    std::array<std::optional<std::vector<std::uint32_t>>, 256> changedKeysyms_;
};

}  // namespace quil::linux_platform
