#include "platform/value.h"

#include <cmath>

namespace quil {

ElementRef Value::element() const {
    const ElementRef* value = std::get_if<ElementRef>(&data_);
    return value ? *value : nullptr;
}

const Value::List* Value::list() const {
    const auto* value = std::get_if<std::shared_ptr<const List>>(&data_);
    return value ? value->get() : nullptr;
}

const Value::Dictionary* Value::dictionary() const {
    const auto* value = std::get_if<std::shared_ptr<const Dictionary>>(&data_);
    return value ? value->get() : nullptr;
}

std::optional<std::int64_t> Value::integer() const {
    if (auto value = get<std::int64_t>()) return value;
    const auto value = get<double>();
    // 2^63 is the first double above the range; its negative is the last one inside it.
    constexpr double kLimit = 9223372036854775808.0;
    if (!value || !(*value >= -kLimit && *value < kLimit) || std::trunc(*value) != *value)
        return {};
    return static_cast<std::int64_t>(*value);
}

std::optional<double> Value::number() const {
    if (auto value = get<std::int64_t>()) return static_cast<double>(*value);
    return get<double>();
}

bool Value::operator==(const Value& other) const {
    if (list() && other.list()) return *list() == *other.list();
    if (dictionary() && other.dictionary()) return *dictionary() == *other.dictionary();
    return data_ == other.data_;
}

const Value* findMember(const Value::Dictionary& dictionary, std::string_view key) {
    const auto entry = dictionary.find(key);
    return entry == dictionary.end() ? nullptr : &entry->second;
}

const std::string* findString(const Value::Dictionary& dictionary, std::string_view key) {
    const Value* member = findMember(dictionary, key);
    return member ? member->string() : nullptr;
}

}  // namespace quil
