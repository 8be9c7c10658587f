#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/input/input_devices.h"
#include "platform/linux/x11/input/keyboard_lock.h"
#include "platform/linux/x11/input/synthetic_keyboard.h"
#include "platform/linux/x11/keyboard/keyboard_map.h"

namespace quil::linux_platform {

/// The keyboard while keys are posted, which no other runtime does meanwhile. What the user
/// holds, has latched or locked is taken away at the start, so that posted keys have the modifiers
/// that they are posted with and no others, and given back at the end: modifier keys that the
/// user has let go meanwhile stay up. Other keys that are held are released for good; the user
/// presses them again. So are those that the user presses meanwhile, as soon as we look. Num Lock
/// stays as it is. What a runtime that was killed has left pressed or locked is undone first.
class KeyboardSession {
  public:
    explicit KeyboardSession(std::shared_ptr<X11Connection> connection);
    ~KeyboardSession();
    KeyboardSession(const KeyboardSession&) = delete;
    KeyboardSession& operator=(const KeyboardSession&) = delete;

    X11Connection& connection() const { return *connection_; }
    /// Whether the X keyboard extension describes what the keys mean; the map is empty otherwise.
    bool knowsKeys() const { return knowsKeys_; }
    /// The map without spare keys that mean something.
    const KeyboardMap& map() const { return map_; }
    /// Present when the keys are known.
    SyntheticKeyboard& keyboard() { return *keyboard_; }
    /// The map with them, as the server has it.
    const KeyboardMap& shownMap() const { return shownMap_; }
    /// Whether the layout is the one of `group` and `map` still, the server having that map. If it
    /// is not, these are the new one's then: the user has chosen another. To be called when no key
    /// of ours is down.
    bool keepsLayout(const KeyboardMap& shownMap);
    /// To be asked now and then: whether the keyboard is still ours.
    bool keepLock() { return lock_.renew(); }
    /// The layout that is active.
    std::uint8_t group() const { return group_; }

    /// Presses or releases a key with these event flags: their modifier keys go down before it, in
    /// the order control (command is control too), option, shift, and up after it in reverse.
    void key(std::uint8_t keyCode, bool isDown, std::uint64_t flags);
    /// Presses and releases a key as things are.
    void tap(std::uint8_t keyCode);
    /// Makes exactly these modifiers active, and those that stay locked: Shift by its key, which
    /// programs that know keys only can see, the others by locking them.
    void useModifiers(std::uint8_t modifiers);
    /// Back to what the user had locked.
    void useModifiersAsBefore();
    /// Takes away what the user has pressed or locked since the start, or since the last time. To
    /// be called when no key of ours is down.
    void takeNewKeys();
    /// Num Lock if it was locked.
    std::uint8_t keptLocks() const { return locksBefore_ & numLock_; }

  private:
    void useMap(KeyboardMap shownMap);
    void takeKeyboard();
    void releaseHeldKeys();
    void giveHeldKeysBack();
    void releaseFlagKeys();
    void lock(std::uint8_t locks);
    bool hasLatches() const { return latchesBefore_ != 0 || groupLatchBefore_ != 0; }
    void send(std::uint8_t keyCode, bool isDown);
    std::uint8_t flagKey(std::uint32_t keysym, std::uint32_t otherKeysym, std::uint8_t usual) const;
    std::vector<std::uint8_t> flagKeys(std::uint64_t flags) const;

    std::shared_ptr<X11Connection> connection_;
    KeyboardLock lock_;
    bool knowsKeys_ = false;
    std::optional<SyntheticKeyboard> keyboard_;
    KeyboardMap map_;
    KeyboardMap shownMap_;
    std::uint8_t group_ = 0;
    std::uint8_t numLock_ = 0;
    std::uint8_t locksBefore_ = 0;
    std::uint8_t locks_ = 0;
    std::uint8_t latchesBefore_ = 0;
    std::int16_t groupLatchBefore_ = 0;
    /// Modifier keys to be given back.
    KeySet heldBefore_;
    /// The keys that the user held when they were taken away.
    KeySet heldByUserBefore_;
    std::vector<std::uint8_t> pressedFlagKeys_;
    std::uint8_t shiftKey_ = 0;
    bool isShiftPressed_ = false;
};

}  // namespace quil::linux_platform
