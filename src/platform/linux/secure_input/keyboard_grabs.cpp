#include "platform/linux/secure_input/keyboard_grabs.h"

namespace quil::linux_platform {
namespace {

constexpr std::uint8_t kSuccess = 0;  // GrabSuccess of both protocols

}  // namespace

void KeyboardGrabs::replied(ClientId client, std::uint8_t coreStatus, std::uint8_t xinputStatus,
                            std::uint32_t serverTime) {
    const auto request = pending_.extract(client);
    if (request.empty()) return;
    Grab& grab = request.mapped();
    if ((grab.protocol == Protocol::core ? coreStatus : xinputStatus) != kSuccess) return;
    if (grab.time == 0) grab.time = serverTime;
    grabs_[grab.device] = grab;
}

void KeyboardGrabs::released(const Grab& release) {
    const auto held = grabs_.find(release.device);
    if (held == grabs_.end()) return;
    const Grab& grab = held->second;
    const bool isEarlier =
        release.time != 0 && static_cast<std::int32_t>(release.time - grab.time) < 0;
    if (grab.client == release.client && grab.protocol == release.protocol && !isEarlier) {
        grabs_.erase(held);
    }
}

void KeyboardGrabs::clientEnded(ClientId client) {
    pending_.erase(client);
    std::erase_if(grabs_, [&](const auto& entry) { return entry.second.client == client; });
}

bool KeyboardGrabs::isUnsure() const {
    const auto held = grabs_.find(kCoreKeyboard);
    return held != grabs_.end() && held->second.client == kUnknownClient;
}

void KeyboardGrabs::foundFree(TapTime now) {
    if (!isUnsure()) return;
    grabs_.erase(kCoreKeyboard);
    foundUntil_ = now;
}

std::vector<ClientId> KeyboardGrabs::grabbers(TapTime key) const {
    std::vector<ClientId> clients;
    for (const auto& [device, grab] : grabs_) clients.push_back(grab.client);
    if (foundUntil_ && key <= *foundUntil_) clients.push_back(kUnknownClient);
    return clients;
}

}  // namespace quil::linux_platform
