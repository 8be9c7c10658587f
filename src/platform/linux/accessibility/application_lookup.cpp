#include "platform/linux/accessibility/application_lookup.h"

namespace quil::linux_platform {

std::vector<std::string> busNamesOf(AccessibilityBus& bus, std::int32_t pid) {
    std::vector<std::string> names;
    for (auto& program : bus.registeredPrograms()) {
        if (program.pid == pid) names.push_back(std::move(program.busName));
    }
    return names;
}

}  // namespace quil::linux_platform
