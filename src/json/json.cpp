#include "json/json.h"

#include <utility>
#include <vector>

#include "json/exact_integer.h"
#include "json/parser_repair.h"

namespace quil {
namespace {

/// Builds the value of a text, in which every number that is an integer as written is held as one.
class Builder : public nlohmann::json_sax<Json> {
  public:
    Json take() { return std::move(root_); }

    bool null() override { return add(nullptr); }
    bool boolean(bool value) override { return add(value); }
    bool number_integer(number_integer_t value) override { return add(value); }
    bool number_unsigned(number_unsigned_t value) override { return add(value); }
    bool number_float(number_float_t value, const string_t& written) override {
        if (const auto integer = exactInteger(written)) return add(*integer);
        return add(value);
    }
    bool string(string_t& value) override { return add(std::move(value)); }
    bool binary(binary_t& value) override { return add(std::move(value)); }
    bool start_object(std::size_t) override { return open(Json::object()); }
    bool start_array(std::size_t) override { return open(Json::array()); }
    bool key(string_t& name) override {
        member_ = &(*open_.back())[name];
        return true;
    }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override {
        return false;
    }

  private:
    Json* insert(Json value) {
        if (open_.empty()) return &(root_ = std::move(value));
        if (open_.back()->is_array()) return &open_.back()->emplace_back(std::move(value));
        return &(*member_ = std::move(value));
    }
    bool add(Json value) {
        insert(std::move(value));
        return true;
    }
    bool open(Json container) {
        open_.push_back(insert(std::move(container)));
        return true;
    }
    bool close() {
        open_.pop_back();
        return true;
    }

    Json root_;
    std::vector<Json*> open_;  // the containers around what is being read, the innermost last
    Json* member_ = nullptr;   // of the innermost object: the one whose value comes next
};

std::optional<Json> parse(std::string_view text) {
    // The parser takes a NUL for the end of the text, whatever comes behind it.
    if (text.find('\0') != text.npos) return {};
    Builder builder;
    if (!Json::sax_parse(text, &builder)) return {};
    return builder.take();
}

}  // namespace

std::optional<Json> parseJson(std::string_view text) {
    if (auto value = parse(text)) return value;
    const auto readable = repairForParser(text);
    return readable ? parse(*readable) : std::nullopt;
}

std::optional<std::int64_t> jsonInteger(const Json& value) {
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(INT64_MAX)) return {};
        return static_cast<std::int64_t>(number);
    }
    if (value.is_number_integer()) return value.get<std::int64_t>();
    return {};
}

Json jsonFromValue(const Value& value) {
    if (const auto boolean = value.boolean()) return *boolean;
    if (const std::string* string = value.string()) return *string;
    if (const Value::List* list = value.list()) {
        Json result = Json::array();
        for (const Value& entry : *list) result.push_back(jsonFromValue(entry));
        return result;
    }
    if (const Value::Dictionary* dictionary = value.dictionary()) {
        Json result = Json::object();
        for (const auto& [key, member] : *dictionary) result[key] = jsonFromValue(member);
        return result;
    }
    if (value.isInteger()) return *value.integer();
    if (const auto number = value.number()) return *number;
    return nullptr;
}

}  // namespace quil
