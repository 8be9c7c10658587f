#pragma once

#include <cstdint>
#include <optional>

#include "platform/linux/atspi/facts.h"
#include "platform/value.h"

/// What the attribute "AXValue" is made from: the element's text, its number, or its state.
namespace quil::linux_platform {

/// What has to be asked for next to know the value; empty when it is known.
FactSet needsForValue(const Facts& facts);
/// 0 with or without a value, or an error code.
std::int32_t readValue(const Facts& facts, std::optional<Value>& value);

/// Whether what is set is the element's number, and not its text. Needs role, states and
/// interfaces.
bool takesNumber(const Facts& facts);

}  // namespace quil::linux_platform
