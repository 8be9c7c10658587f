#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "json/json.h"

namespace quil {

/// A request's parameters, read by key, case-sensitively. A member of another JSON type than the
/// one asked for counts as absent.
class Parameters {
  public:
    /// `object` is a JSON object; anything else counts as an empty one.
    explicit Parameters(Json object = Json::object());

    /// A JSON string, the empty one included.
    std::optional<std::string> string(std::string_view key) const;
    /// A JSON number that is exactly an integer in the signed 64-bit range.
    std::optional<std::int64_t> integer(std::string_view key) const;
    /// A JSON number.
    std::optional<double> number(std::string_view key) const;
    /// A JSON list; null when absent. Lives as long as these parameters.
    const Json* list(std::string_view key) const;
    /// A JSON object; null when absent. Lives as long as these parameters.
    const Json* object(std::string_view key) const;

  private:
    const Json* find(std::string_view key) const;

    Json object_;
};

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
