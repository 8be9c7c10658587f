#include "platform/linux/accessibility/gtk_elements.h"

#include <cstddef>

#include "platform/linux/atspi/messages.h"

namespace quil::linux_platform {
namespace {

/// Whether the attributes in a reply name GTK as what makes the element.
bool namesGtk(sd_bus_message* message) {
    if (sd_bus_message_enter_container(message, 'a', "{ss}") < 0) return false;
    while (sd_bus_message_enter_container(message, 'e', "ss") > 0) {
        const auto name = readString(message);
        const auto value = readString(message);
        if (name == "toolkit") return value == "gtk";
        if (!value || sd_bus_message_exit_container(message) < 0) return false;
    }
    return false;
}

}  // namespace

std::vector<const ObservedElement*> gtkElements(
    AccessibilityBus& bus, const std::vector<const ObservedElement*>& elements) {
    std::vector<char> isGtk(elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const Reference& element = elements[i]->reference;
        bus.program(element.busName)
            .peer()
            .call(
                element.path.c_str(), atspi::kAccessible, "GetAttributes",
                [&isGtk, i](Reply reply) { isGtk[i] = reply.message && namesGtk(reply.message); });
    }
    bus.waitForReplies();
    std::vector<const ObservedElement*> found;
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (isGtk[i]) found.push_back(elements[i]);
    }
    return found;
}

}  // namespace quil::linux_platform
