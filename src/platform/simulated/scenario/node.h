#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/geometry.h"
#include "platform/simulated/scenario/document.h"

namespace quil::simulated {

/// One value of a scenario, together with its position in it. Every reader throws a `ScenarioError`
/// when the value is not what it asks for. The document outlives its nodes.
class Node {
  public:
    explicit Node(const Json& root) : json_(&root) {}

    /// Throws a `ScenarioError` that says where the value is and what is wrong with it.
    [[noreturn]] void fail(const std::string& what) const;
    bool isNull() const { return json_->is_null(); }
    bool isString() const { return json_->is_string(); }
    bool isObject() const { return json_->is_object(); }
    bool isList() const { return json_->is_array(); }
    const Json& json() const { return *json_; }

    bool boolean() const;
    std::string string() const;
    /// A finite number.
    double number() const;
    /// A number that is not negative.
    double seconds() const;
    /// The number when it is written as an integer and fits into 64 bits; nothing for any other
    /// value.
    std::optional<std::int64_t> asInteger() const;
    /// An integer within these bounds.
    std::int64_t integer(std::int64_t minimum, std::int64_t maximum) const;
    std::int32_t integer32() const;
    std::uint32_t unsigned32() const;
    /// [x, y]
    Point point() const;
    /// [width, height]
    Size size() const;
    /// [x, y, width, height]
    Rect rect() const;

    /// The entries of a list.
    std::vector<Node> list() const;
    /// The entries of a list, or the value itself when it is none.
    std::vector<Node> oneOrMore() const;
    /// The strings of a list.
    std::vector<std::string> strings() const;
    /// The members of an object whose names are the author's own, by name.
    std::vector<std::pair<std::string, Node>> members() const;
    /// The member of that name of an object; nothing when there is none.
    std::optional<Node> find(std::string_view name) const;
    /// The same; fails when there is none.
    Node require(std::string_view name) const;
    /// Fails when the value is no object or has a member of another name than these.
    void allowOnly(const std::vector<std::string_view>& names) const;

  private:
    Node(const Json& json, std::string path) : json_(&json), path_(std::move(path)) {}
    Node child(const std::string& name, const Json& json) const;
    std::vector<double> numbers(std::size_t count, const char* shape) const;

    const Json* json_;
    std::string path_;
};

}  // namespace quil::simulated
