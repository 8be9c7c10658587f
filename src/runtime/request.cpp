#include "runtime/request.h"

namespace quil {

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
