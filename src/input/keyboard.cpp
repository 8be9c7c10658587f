#include "input/keyboard.h"

#include <algorithm>
#include <string>

#include "input/key_combination.h"
#include "text/characters.h"

namespace quil {
namespace {

/// UTF-16 units that one keyboard event carries.
constexpr std::size_t kChunkUnits = 20;
constexpr std::uint32_t kPasteMicroseconds = 250'000;

void postText(EventPosting& events, EventSource* source, std::u16string_view chunk, bool keyDown) {
    const auto event = events.createKeyboardEvent(source, 0, keyDown);
    if (!event) return;
    events.keyboardSetUnicodeString(*event, chunk);
    events.post(kHidEventTap, *event);
}

}  // namespace

void keypress(EventPosting& events, std::string_view combo) {
    const auto combination = parseKeyCombination(combo);
    if (!combination) return;
    const auto source = events.createSource(kEventSourceStateHidSystemState);
    const auto down = events.createKeyboardEvent(source.get(), combination->keyCode, true);
    const auto up = events.createKeyboardEvent(source.get(), combination->keyCode, false);
    for (const PostableEventRef* event : {&down, &up}) {
        if (*event) events.setFlags(**event, combination->flags);
    }
    for (const PostableEventRef* event : {&down, &up}) {
        if (*event) events.post(kHidEventTap, **event);
    }
}

void typeText(EventPosting& events, std::string_view text) {
    const std::u16string units = toUtf16(text);
    if (units.empty()) return;
    const auto source = events.createSource(kEventSourceStateHidSystemState);
    std::u16string_view rest = units;
    while (!rest.empty()) {
        // Pairs stay whole. Half of one never comes alone: `toUtf16` makes U+FFFD of it.
        std::size_t length = std::min(kChunkUnits, rest.size());
        if (length < rest.size() && isHighSurrogate(rest[length - 1])) --length;
        const std::u16string_view chunk = rest.substr(0, length);
        postText(events, source.get(), chunk, true);
        postText(events, source.get(), chunk, false);
        rest.remove_prefix(length);
    }
}

void pasteText(EventPosting& events, Pasteboard& pasteboard, Clock& clock, std::string_view text) {
    const auto previous = pasteboard.stringForType(kPasteboardTypeString);
    pasteboard.clearContents();
    pasteboard.setString(text, kPasteboardTypeString);
    keypress(events, "cmd+v");
    clock.sleepMicroseconds(kPasteMicroseconds);
    pasteboard.clearContents();
    if (previous) pasteboard.setString(*previous, kPasteboardTypeString);
}

}  // namespace quil
