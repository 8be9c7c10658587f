#include "runtime/parameters.h"

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

const Json* Parameters::object(std::string_view key) const {
    const Json* value = find(key);
    return value && value->is_object() ? value : nullptr;
}

const Json* Parameters::find(std::string_view key) const {
    const auto entry = object_.find(key);
    return entry == object_.end() ? nullptr : &*entry;
}

}  // namespace quil
