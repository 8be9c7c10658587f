#include "platform/linux/input/spare_key_mapping.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/linux/input/xkb_protocol.h"
#include "platform/linux/x11/properties.h"

namespace quil::linux_platform {
namespace {

/// The keys in use, on the root window.
constexpr std::string_view kKeysProperty = "_QUIL_SPARE_KEYS";
/// Owned by the runtime whose turn it is.
constexpr std::string_view kTurnSelection = "_QUIL_SPARE_KEYS_TURN";
constexpr std::chrono::seconds kTurnPatience{5};
constexpr std::chrono::milliseconds kTurnInterval{10};

using Bytes = std::vector<std::uint8_t>;

template <typename T>
void append(Bytes& bytes, const T& value) {
    const auto* first = reinterpret_cast<const std::uint8_t*>(&value);
    bytes.insert(bytes.end(), first, first + sizeof value);
}

void appendSymbols(Bytes& bytes, std::uint16_t& total, const KeyboardMap::Key& key) {
    xcb_xkb_key_sym_map_t wire{};
    std::copy(key.types.begin(), key.types.end(), std::begin(wire.kt_index));
    wire.groupInfo = key.groupInfo;
    wire.width = key.width;
    wire.nSyms = static_cast<std::uint16_t>(key.symbols.size());
    append(bytes, wire);
    for (const std::uint32_t symbol : key.symbols) append(bytes, symbol);
    total = static_cast<std::uint16_t>(total + key.symbols.size());
}

KeyboardMap::Key spareKey(const SpareKeys& spare, const SpareSymbols& symbols, std::size_t index) {
    KeyboardMap::Key key;
    key.types.fill(static_cast<std::uint8_t>(spare.type));
    key.groupInfo = 1;
    key.width = static_cast<std::uint8_t>(spare.combinations.size());
    key.symbols.assign(key.width, 0);
    for (std::size_t level = 0; level < symbols.size(); ++level) {
        if (index < symbols[level].size()) key.symbols[level] = symbols[level][index];
    }
    return key;
}

}  // namespace

SpareKeyUse::SpareKeyUse(X11Connection& connection, KeyboardMap map)
    : connection_(connection), map_(std::move(map)), owner_(xcb_generate_id(connection.get())) {
    xcb_create_window(connection_.get(), 0, owner_, connection_.root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    takeTurn();
    for (const std::uint32_t code : leftKeys()) {
        if (code >= map_.keys.size() || map_.keys[code].modifiers != 0) continue;
        map_.keys[code] = {};
        isMapped_ = true;
    }
    keys_ = findSpareKeys(map_);
}

SpareKeyUse::~SpareKeyUse() {
    xcb_destroy_window(connection_.get(), owner_);  // ends its turn, too
    xcb_flush(connection_.get());
}

void SpareKeyUse::takeTurn() {
    const xcb_atom_t turn = connection_.atom(kTurnSelection);
    const auto deadline = std::chrono::steady_clock::now() + kTurnPatience;
    while (connection_.isAlive()) {
        xcb_grab_server(connection_.get());
        const auto owner = connection_.reply(xcb_get_selection_owner_reply,
                                             xcb_get_selection_owner(connection_.get(), turn));
        const bool isFree = !owner || owner->owner == XCB_WINDOW_NONE ||
                            std::chrono::steady_clock::now() >= deadline;
        if (isFree) xcb_set_selection_owner(connection_.get(), owner_, turn, XCB_CURRENT_TIME);
        xcb_ungrab_server(connection_.get());
        xcb_flush(connection_.get());
        if (isFree) return;
        std::this_thread::sleep_for(kTurnInterval);
    }
}

std::vector<std::uint32_t> SpareKeyUse::leftKeys() {
    return readProperty(connection_, connection_.root(), kKeysProperty).numbers();
}

bool SpareKeyUse::map(const SpareSymbols& symbols) {
    const std::vector<std::uint32_t> codes(keys_.keyCodes.begin(), keys_.keyCodes.end());
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, connection_.root(),
                        connection_.atom(kKeysProperty), XCB_ATOM_CARDINAL, 32,
                        static_cast<std::uint32_t>(codes.size()), codes.data());
    isMapped_ = true;
    return send(symbols);
}

void SpareKeyUse::unmap() {
    send({});
    isMapped_ = false;
    xcb_delete_property(connection_.get(), connection_.root(), connection_.atom(kKeysProperty));
}

/// One request for all keys from the first to the last spare one: those in between, which have a
/// meaning, are written as they are.
bool SpareKeyUse::send(const SpareSymbols& symbols) {
    if (keys_.keyCodes.empty()) return false;
    xcb_xkb_set_map_request_t request{};
    request.deviceSpec = kCoreKeyboard;
    request.present = XCB_XKB_MAP_PART_KEY_SYMS;
    request.minKeyCode = map_.minKeyCode;
    request.maxKeyCode = map_.maxKeyCode;
    request.firstKeySym = keys_.keyCodes.front();
    request.nKeySyms =
        static_cast<std::uint8_t>(keys_.keyCodes.back() - keys_.keyCodes.front() + 1);
    const std::size_t used = symbols.empty() ? 0 : symbols[keys_.levels.front()].size();
    Bytes values;
    std::size_t index = 0;
    for (std::size_t code = keys_.keyCodes.front(); code <= keys_.keyCodes.back(); ++code) {
        const bool isUsed = index < used && keys_.keyCodes[index] == code;
        appendSymbols(values, request.totalSyms,
                      isUsed ? spareKey(keys_, symbols, index) : map_.keys[code]);
        if (isUsed) ++index;
    }
    return setKeyboardMap(connection_, request, values);
}

void clearSpareKeys(X11Connection& connection) {
    if (!readProperty(connection, connection.root(), kKeysProperty).exists()) return;
    if (!enableXkb(connection)) return;
    auto map = readKeyboardMap(connection);
    if (!map) return;
    SpareKeyUse use(connection, std::move(*map));
    if (use.isMapped()) use.unmap();
}

}  // namespace quil::linux_platform
