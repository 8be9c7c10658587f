#pragma once

#include <cstdint>
#include <functional>

#include "platform/simulated/scenario/names.h"
#include "platform/value.h"

namespace quil {
class SimulatedDesktop;
}

namespace quil::simulated {

/// A value as a scenario writes it: a string, a boolean, a number (an integer if it is written as
/// one and fits into 64 bits), a list of values, or an object with one member:
///
///     {"point": [x, y]}   {"size": [width, height]}   {"element": "id"}
///     {"dictionary": {"name": value}}   {"opaque": "a type's name"}
struct ValueSource {
    /// The value on that desktop as it is now. An element that is not there becomes a handle on
    /// which every call fails.
    std::function<Value(SimulatedDesktop&)> get;
    /// Whether elements are mentioned, so that it exists only once they do.
    bool mentionsElements = false;
};

/// Reads a value; fails when it has none of these forms.
ValueSource readValue(const Node& node, Names& names);

/// A result code of the accessibility calls: a number, or a name such as "cannotComplete".
std::int32_t readResultCode(const Node& node);

}  // namespace quil::simulated
