#include "runtime/request.h"

namespace quil {

Parameters::Parameters(Json object) : object_(std::move(object)) {
    if (!object_.is_object()) object_ = Json::object();
}

std::optional<std::string> Parameters::string(std::string_view key) const {
    const Json* value = find(key);
    if (!value || !value->is_string()) return {};
    return value->get<std::string>();
}

std::optional<std::int64_t> Parameters::integer(std::string_view key) const {
    const Json* value = find(key);
    return value ? jsonInteger(*value) : std::nullopt;
}

std::optional<double> Parameters::number(std::string_view key) const {
    const Json* value = find(key);
    return value && value->is_number() ? std::optional(value->get<double>()) : std::nullopt;
}

const Json* Parameters::list(std::string_view key) const {
    const Json* value = find(key);
    return value && value->is_array() ? value : nullptr;
}

const Json* Parameters::object(std::string_view key) const {
    const Json* value = find(key);
    return value && value->is_object() ? value : nullptr;
}

const Json* Parameters::find(std::string_view key) const {
    const auto entry = object_.find(key);
    return entry == object_.end() ? nullptr : &*entry;
}

std::optional<Request> parseRequest(std::string_view line) {
    // Most of what is no request is seen at its first character.
    const std::size_t first = line.find_first_not_of(" \t\r\n");
    if (first == line.npos || line[first] != '{') return {};
    auto json = parseJson(line);
    if (!json || !json->is_object()) return {};
    const auto id = json->find("id");
    const auto method = json->find("method");
    if (id == json->end() || method == json->end() || !method->is_string()) return {};
    const auto number = jsonInteger(*id);
    if (!number) return {};
    const auto params = json->find("params");
    return Request{*number, method->get<std::string>(),
                   params == json->end() ? Parameters() : Parameters(std::move(*params))};
}

}  // namespace quil
