#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "runtime/parameters.h"

namespace quil {

/// One request of the host.
struct Request {
    /// Copied into the response.
    std::int64_t id = 0;
    std::string method;
    Parameters parameters;
};

/// The request that a line holds; nothing when it is not a JSON object with an integral "id" and a
/// string "method". "params" that are not an object count as empty.
std::optional<Request> parseRequest(std::string_view line);

}  // namespace quil
