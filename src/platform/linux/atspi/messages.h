#pragma once

#include <systemd/sd-bus.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/atspi/facts.h"

/// Readers of what the accessibility bus replies. A message that does not hold what it should gives
/// nothing.
namespace quil::linux_platform {

namespace atspi {
inline constexpr const char* kAccessible = "org.a11y.atspi.Accessible";
inline constexpr const char* kAction = "org.a11y.atspi.Action";
inline constexpr const char* kApplication = "org.a11y.atspi.Application";
inline constexpr const char* kComponent = "org.a11y.atspi.Component";
inline constexpr const char* kEditableText = "org.a11y.atspi.EditableText";
inline constexpr const char* kSelection = "org.a11y.atspi.Selection";
inline constexpr const char* kTable = "org.a11y.atspi.Table";
inline constexpr const char* kText = "org.a11y.atspi.Text";
inline constexpr const char* kValue = "org.a11y.atspi.Value";
inline constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
inline constexpr const char* kRegistry = "org.a11y.atspi.Registry";
inline constexpr const char* kRootPath = "/org/a11y/atspi/accessible/root";
}  // namespace atspi

std::optional<std::string> readString(sd_bus_message* message);
std::optional<std::int32_t> readInt32(sd_bus_message* message);
std::optional<std::uint32_t> readUint32(sd_bus_message* message);
std::optional<double> readDouble(sd_bus_message* message);
/// An element; a null element reads as an empty path.
std::optional<Reference> readReference(sd_bus_message* message);
/// A list of elements, without the null ones.
std::optional<std::vector<Reference>> readReferences(sd_bus_message* message);
std::optional<States> readStates(sd_bus_message* message);
std::optional<Interfaces> readInterfaces(sd_bus_message* message);
std::optional<Rect> readRect(sd_bus_message* message);

/// The property in a variant, read by one of the readers above, which expects that type.
template <typename Result>
std::optional<Result> readVariant(sd_bus_message* message, const char* type,
                                  std::optional<Result> (*read)(sd_bus_message*)) {
    if (sd_bus_message_enter_container(message, 'v', type) < 0) return {};
    auto result = read(message);
    if (result && sd_bus_message_exit_container(message) < 0) return {};
    return result;
}

}  // namespace quil::linux_platform
