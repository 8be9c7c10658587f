#include "platform/simulated/us_keyboard.h"

#include "platform/virtual_keys.h"

namespace quil::simulated {
namespace {

/// What each virtual key code types, from 0 on, without Shift and with it (the ANSI positions of
/// HIToolbox's Events.h). A space stands for a code that types nothing here.
constexpr std::string_view kPlain = "asdfhgzxcv bqweryt123465=97-80]ou[ip\nlj'k;\\,/nm.\t `";
constexpr std::string_view kShifted = "ASDFHGZXCV BQWERYT!@#$^%+(&_*)}OU{IP\nLJ\"K:|<?NM>\t ~";

}  // namespace

UsKey usKeyFor(std::string_view character) {
    if (character == " ") return {.code = virtual_key::space};
    if (character.size() != 1) return {};
    for (const auto& [keys, shifted] : {std::pair(kPlain, false), std::pair(kShifted, true)}) {
        const std::size_t code = keys.find(character.front());
        if (code != keys.npos) return {static_cast<std::int64_t>(code), shifted};
    }
    return {};
}

}  // namespace quil::simulated
