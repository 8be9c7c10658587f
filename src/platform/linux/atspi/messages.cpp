#include "platform/linux/atspi/messages.h"

#include <string_view>

namespace quil::linux_platform {
namespace {

constexpr std::string_view kNullPath = "/org/a11y/atspi/null";

template <typename Number>
std::optional<Number> readNumber(sd_bus_message* message, char type) {
    Number number{};
    return sd_bus_message_read_basic(message, type, &number) > 0 ? std::optional(number)
                                                                 : std::nullopt;
}

struct InterfaceName {
    std::string_view name;
    AtspiInterface interface;
};
constexpr InterfaceName kInterfaceNames[] = {
    {atspi::kAction, AtspiInterface::action},
    {atspi::kComponent, AtspiInterface::component},
    {atspi::kEditableText, AtspiInterface::editableText},
    {atspi::kSelection, AtspiInterface::selection},
    {atspi::kTable, AtspiInterface::table},
    {atspi::kText, AtspiInterface::text},
    {atspi::kValue, AtspiInterface::value},
};

}  // namespace

std::optional<std::string> readString(sd_bus_message* message) {
    const char* text = nullptr;
    if (sd_bus_message_read_basic(message, 's', &text) <= 0) return {};
    return text;
}

std::optional<std::int32_t> readInt32(sd_bus_message* message) {
    return readNumber<std::int32_t>(message, 'i');
}

std::optional<std::uint32_t> readUint32(sd_bus_message* message) {
    return readNumber<std::uint32_t>(message, 'u');
}

std::optional<double> readDouble(sd_bus_message* message) {
    return readNumber<double>(message, 'd');
}

std::optional<Reference> readReference(sd_bus_message* message) {
    const char* name = nullptr;
    const char* path = nullptr;
    if (sd_bus_message_read(message, "(so)", &name, &path) <= 0) return {};
    if (path == kNullPath) return Reference{};
    return Reference{name, path};
}

std::optional<std::vector<Reference>> readReferences(sd_bus_message* message) {
    if (sd_bus_message_enter_container(message, 'a', "(so)") < 0) return {};
    std::vector<Reference> references;
    while (auto reference = readReference(message)) {
        if (!reference->path.empty()) references.push_back(std::move(*reference));
    }
    if (sd_bus_message_exit_container(message) < 0) return {};
    return references;
}

std::optional<States> readStates(sd_bus_message* message) {
    const void* words = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(message, 'u', &words, &size) < 0) return {};
    const auto* word = static_cast<const std::uint32_t*>(words);
    const std::size_t count = size / sizeof *word;
    std::uint64_t bits = count > 0 ? word[0] : 0;
    if (count > 1) bits |= std::uint64_t{word[1]} << 32;
    return States::fromBits(bits);
}

std::optional<Interfaces> readInterfaces(sd_bus_message* message) {
    if (sd_bus_message_enter_container(message, 'a', "s") < 0) return {};
    Interfaces interfaces;
    const char* name = nullptr;
    while (sd_bus_message_read_basic(message, 's', &name) > 0) {
        for (const InterfaceName& known : kInterfaceNames) {
            if (known.name == name) interfaces.add(known.interface);
        }
    }
    if (sd_bus_message_exit_container(message) < 0) return {};
    return interfaces;
}

std::optional<Rect> readRect(sd_bus_message* message) {
    std::int32_t x = 0, y = 0, width = 0, height = 0;
    if (sd_bus_message_read(message, "(iiii)", &x, &y, &width, &height) <= 0) return {};
    return Rect{static_cast<double>(x), static_cast<double>(y), static_cast<double>(width),
                static_cast<double>(height)};
}

}  // namespace quil::linux_platform
