#include "platform/linux/x11/input/spare_key_mapping.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/linux/x11/input/keyboard_lock.h"
#include "platform/linux/x11/keyboard/xkb_protocol.h"
#include "platform/linux/x11/properties.h"

namespace quil::linux_platform {
namespace {

/// The keys in use, on the root window.
constexpr std::string_view kKeysProperty = "_QUIL_SPARE_KEYS";

using Bytes = std::vector<std::uint8_t>;

template <typename T>
void append(Bytes& bytes, const T& value) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(&value);
    bytes.insert(bytes.end(), first, first + sizeof value);
}

void appendKeysyms(Bytes& bytes, std::uint16_t& total, const KeyboardMap::Key& key) {
    xcb_xkb_key_sym_map_t wire{};
    std::copy(key.types.begin(), key.types.end(), std::begin(wire.kt_index));
    wire.groupInfo = key.groupInfo;
    wire.width = key.width;
    wire.nSyms = static_cast<std::uint16_t>(key.keysyms.size());
    append(bytes, wire);
    for (const std::uint32_t keysym : key.keysyms) append(bytes, keysym);
    total = static_cast<std::uint16_t>(total + key.keysyms.size());
}

KeyboardMap::Key spareKey(const SpareKeys& spare, const SpareKeysyms& keysyms, std::size_t index) {
    KeyboardMap::Key key;
    key.types.fill(static_cast<std::uint8_t>(spare.type));
    key.groupInfo = 1;
    key.width = static_cast<std::uint8_t>(spare.combinations.size());
    key.keysyms.assign(key.width, 0);
    for (std::size_t level = 0; level < keysyms.size(); ++level) {
        if (index < keysyms[level].size()) key.keysyms[level] = keysyms[level][index];
    }
    return key;
}

/// Whether the key is one that `spareKey` makes. The user may have chosen another layout since,
/// and keys of one group usually have no types for others.
bool isSpareKey(const KeyboardMap::Key& key) {
    const bool hasOneType = std::all_of(key.types.begin(), key.types.end(),
                                        [&](auto type) { return type == key.types[0]; });
    return key.modifiers == 0 && key.groupInfo == 1 && key.types[0] != 0 && hasOneType;
}

PropertyRequest leftKeys(X11Connection& connection) {
    return readProperty(connection, connection.root(), kKeysProperty);
}

}  // namespace

SpareKeyUse::SpareKeyUse(SyntheticKeyboard& keyboard, KeyboardMap shownMap)
    : keyboard_(keyboard), connection_(keyboard.connection()), shownMap_(std::move(shownMap)) {
    map_ = shownMap_;
    isMapped_ = forgetSpareKeys(connection_, map_);
    keys_ = findSpareKeys(map_);
}

void SpareKeyUse::readShownMap() {
    if (auto map = keyboard_.readMap()) shownMap_ = std::move(*map);
}

bool SpareKeyUse::map(const SpareKeysyms& keysyms) {
    if (keyboard_.readMap() != shownMap_) return false;
    writeRootNumbers(connection_, kKeysProperty, {keys_.keyCodes.begin(), keys_.keyCodes.end()});
    isMapped_ = true;
    const bool isDone = send(keysyms);
    if (!isDone) keys_.keyCodes.clear();
    readShownMap();
    return isDone;
}

void SpareKeyUse::unmap() {
    readShownMap();
    // Another layout may have come, without spare keys.
    map_ = shownMap_;
    forgetSpareKeys(connection_, map_);
    keys_ = findSpareKeys(map_);
    if (map_ != shownMap_) send({});
    isMapped_ = false;
    xcb_delete_property(connection_.get(), connection_.root(), connection_.atom(kKeysProperty));
}

/// One request for all keys from the first to the last spare one: those in between, which have a
/// meaning, are written as they are.
bool SpareKeyUse::send(const SpareKeysyms& keysyms) {
    if (keys_.keyCodes.empty()) return false;
    xcb_xkb_set_map_request_t request{};
    request.present = XCB_XKB_MAP_PART_KEY_SYMS;
    request.minKeyCode = map_.minKeyCode;
    request.maxKeyCode = map_.maxKeyCode;
    request.firstKeySym = keys_.keyCodes.front();
    request.nKeySyms =
        static_cast<std::uint8_t>(keys_.keyCodes.back() - keys_.keyCodes.front() + 1);
    const std::size_t used = keysyms.empty() ? 0 : keysyms[keys_.levels.front()].size();
    Bytes values;
    std::size_t index = 0;
    for (std::size_t code = keys_.keyCodes.front(); code <= keys_.keyCodes.back(); ++code) {
        const bool isUsed = index < used && keys_.keyCodes[index] == code;
        appendKeysyms(values, request.totalSyms,
                      isUsed ? spareKey(keys_, keysyms, index) : map_.keys[code]);
        if (isUsed) ++index;
    }
    return keyboard_.setMap(request, values);
}

bool forgetSpareKeys(X11Connection& connection, KeyboardMap& map) {
    const PropertyRequest left = leftKeys(connection);
    for (const std::uint32_t code : left.numbers()) {
        if (code < map.keys.size() && isSpareKey(map.keys[code])) map.keys[code] = {};
    }
    return left.exists();
}

bool hasSpareKeys(X11Connection& connection) {
    return leftKeys(connection).exists();
}

void clearSpareKeys(X11Connection& connection) {
    if (!hasSpareKeys(connection)) return;
    const KeyboardLock lock(connection);
    if (!enableXkb(connection)) return;
    SyntheticKeyboard keyboard(connection);
    auto map = keyboard.readMap();
    if (!map) return;
    SpareKeyUse use(keyboard, std::move(*map));
    if (use.isMapped()) use.unmap();
}

}  // namespace quil::linux_platform
