#include "platform/linux/x11/input/keyboard_session.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <utility>

#include "platform/event_posting.h"
#include "platform/linux/x11/input/crash_recovery.h"
#include "platform/linux/x11/input/spare_key_mapping.h"
#include "platform/linux/x11/keyboard/keysyms.h"
#include "platform/linux/x11/keyboard/xkb_protocol.h"

namespace quil::linux_platform {
namespace {

// X key codes where these keys usually are.
constexpr std::uint8_t kUsualControl = 37;
constexpr std::uint8_t kUsualShift = 50;
constexpr std::uint8_t kUsualAlt = 64;

XcbPointer<xcb_xkb_get_state_reply_t> readState(X11Connection& connection) {
    return connection.reply(xcb_xkb_get_state_reply,
                            xcb_xkb_get_state(connection.get(), kCoreKeyboard));
}

}  // namespace

KeyboardSession::KeyboardSession(std::shared_ptr<X11Connection> connection)
    : connection_(std::move(connection)), lock_(*connection_) {
    if (enableXkb(*connection_)) {
        releaseKeysOfCrashedRuntime(*connection_);
        keyboard_.emplace(*connection_);
        if (auto map = keyboard_->readMap()) {
            useMap(std::move(*map));
            knowsKeys_ = true;
            takeKeyboard();
            return;
        }
    }
    useMap({});
}

void KeyboardSession::useMap(KeyboardMap shownMap) {
    shownMap_ = std::move(shownMap);
    map_ = shownMap_;
    forgetSpareKeys(*connection_, map_);
    numLock_ = map_.modifiersOf(kKeysymNumLock);
    shiftKey_ = flagKey(kKeysymShiftL, kKeysymShiftR, kUsualShift);
}

void KeyboardSession::takeKeyboard() {
    const auto before = readState(*connection_);
    if (!before) return;
    locks_ = locksBefore_ = before->lockedMods;
    latchesBefore_ = before->latchedMods;
    groupLatchBefore_ = before->latchedGroup;
    noteLocks(*connection_, locksBefore_);
    releaseHeldKeys();
    if (hasLatches()) latchForNextKey(*connection_, 0, 0);
    // A key that is held, or a latch, may have led to another group.
    const auto state = readState(*connection_);
    group_ = state ? state->group : before->group;
}

bool KeyboardSession::keepsLayout(const KeyboardMap& shownMap) {
    auto map = keyboard_->readMap();
    const auto state = readState(*connection_);
    if (!map || !state || (*map == shownMap && state->group == group_)) return true;
    useMap(std::move(*map));
    group_ = state->group;
    return false;
}

/// A key that is down already is not pressed by pressing it once more.
void KeyboardSession::releaseHeldKeys() {
    const KeySet down = keysDown(*connection_);
    if (down.none()) return;
    for (const HeldKeys& held : keysHeldByUser(*connection_)) heldByUserBefore_ |= held.keys;
    for (std::size_t code = 0; code < down.size(); ++code) {
        if (!down[code]) continue;
        send(static_cast<std::uint8_t>(code), false);
        // Others are not given back: they would type once more.
        if (map_.keys[code].modifiers != 0) heldBefore_[code] = true;
    }
}

void KeyboardSession::takeNewKeys() {
    releaseHeldKeys();
    const auto state = readState(*connection_);
    if (!state || state->lockedMods == locks_) return;
    locks_ = locksBefore_ = state->lockedMods;
    noteLocks(*connection_, locksBefore_);
}

KeyboardSession::~KeyboardSession() {
    releaseFlagKeys();
    useModifiersAsBefore();
    if (hasLatches()) latchForNextKey(*connection_, latchesBefore_, groupLatchBefore_);
    giveHeldKeysBack();
    noteKeyboardRestored(*connection_);
    connection_->sync();
}

void KeyboardSession::giveHeldKeysBack() {
    if (heldBefore_.none()) return;
    const std::vector<HeldKeys> byUser = keysHeldByUser(*connection_);
    for (std::size_t index = 0; index < heldBefore_.size(); ++index) {
        if (!heldBefore_[index]) continue;
        const auto code = static_cast<std::uint8_t>(index);
        const auto held = std::find_if(byUser.begin(), byUser.end(), [&](const HeldKeys& keyboard) {
            return keyboard.keys[code];
        });
        if (held != byUser.end()) {
            pressHeldKey(*connection_, held->device, code);
        } else if (!heldByUserBefore_[code]) {
            // A program pressed it, on the device on which we have released it.
            send(code, true);
        }
    }
}

void KeyboardSession::send(std::uint8_t keyCode, bool isDown) {
    xcb_test_fake_input(connection_->get(), isDown ? XCB_KEY_PRESS : XCB_KEY_RELEASE, keyCode,
                        XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
}

void KeyboardSession::tap(std::uint8_t keyCode) {
    send(keyCode, true);
    send(keyCode, false);
}

void KeyboardSession::key(std::uint8_t keyCode, bool isDown, std::uint64_t flags) {
    if (isDown) {
        // A key that is a lock itself works on what the user has locked.
        if (map_.keys[keyCode].modifiers == 0) lock(keptLocks());
        for (const std::uint8_t flagKey : flagKeys(flags)) {
            send(flagKey, true);
            pressedFlagKeys_.push_back(flagKey);
        }
    }
    send(keyCode, isDown);
    if (!isDown) releaseFlagKeys();
}

void KeyboardSession::releaseFlagKeys() {
    while (!pressedFlagKeys_.empty()) {
        send(pressedFlagKeys_.back(), false);
        pressedFlagKeys_.pop_back();
    }
}

std::uint8_t KeyboardSession::flagKey(std::uint32_t keysym, std::uint32_t otherKeysym,
                                      std::uint8_t usual) const {
    for (const std::uint32_t wanted : {keysym, otherKeysym}) {
        const auto key = map_.keyWithKeysym(wanted);
        if (key && map_.keys[*key].modifiers != 0) return *key;
    }
    return usual;
}

std::vector<std::uint8_t> KeyboardSession::flagKeys(std::uint64_t flags) const {
    std::vector<std::uint8_t> keys;
    if (flags & (kEventFlagMaskControl | kEventFlagMaskCommand)) {
        keys.push_back(flagKey(kKeysymControlL, kKeysymControlR, kUsualControl));
    }
    if (flags & kEventFlagMaskAlternate)
        keys.push_back(flagKey(kKeysymAltL, kKeysymMetaL, kUsualAlt));
    if (flags & kEventFlagMaskShift) keys.push_back(shiftKey_);
    return keys;
}

void KeyboardSession::useModifiers(std::uint8_t modifiers) {
    const bool needsShift = (modifiers & XCB_MOD_MASK_SHIFT) != 0;
    if (needsShift != isShiftPressed_) send(shiftKey_, needsShift);
    isShiftPressed_ = needsShift;
    lock(static_cast<std::uint8_t>((modifiers & ~XCB_MOD_MASK_SHIFT) | keptLocks()));
}

void KeyboardSession::useModifiersAsBefore() {
    if (isShiftPressed_) send(shiftKey_, false);
    isShiftPressed_ = false;
    lock(locksBefore_);
}

void KeyboardSession::lock(std::uint8_t locks) {
    if (!knowsKeys_ || locks == locks_) return;
    lockModifiers(*connection_, 0xFF, locks);
    locks_ = locks;
}

}  // namespace quil::linux_platform
