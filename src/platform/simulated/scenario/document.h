#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>

namespace quil::simulated {

using Json = nlohmann::json;

/// Something is wrong with a scenario. The message begins with the position: line and column of
/// text that is not JSON, else the path of the value (`applications[0].windows[1].layer`).
class ScenarioError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// How deeply lists and objects may be nested.
inline constexpr std::size_t kMaximumScenarioDepth = 1000;

/// The JSON value of a text. Throws a `ScenarioError` when it is not JSON, when an object has two
/// members of one name, and when it is nested too deeply.
Json parseDocument(std::string_view text);

}  // namespace quil::simulated
