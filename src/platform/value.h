#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/geometry.h"

namespace quil {

/// One user-interface element of another application, opaque above the backends. Elements are
/// shared handles: the last holder releases the platform's object. A handle may outlive its element
/// or even its application; calls on it then fail with a result code.
class AccessibilityElement {
  public:
    virtual ~AccessibilityElement() = default;

  protected:
    AccessibilityElement() = default;
    AccessibilityElement(const AccessibilityElement&) = default;
    AccessibilityElement& operator=(const AccessibilityElement&) = default;
};

using ElementRef = std::shared_ptr<const AccessibilityElement>;

/// A value of a type that the runtime never looks into (a text range, a URL, an attributed string).
struct OpaqueValue {
    std::string typeName;
    bool operator==(const OpaqueValue&) const = default;
};

/// An untyped value, as a platform call hands it over: the attribute of an element, or a member of
/// an information dictionary. Readers ask for the type they expect and treat any other as absent.
/// Strings are always valid UTF-8.
class Value {
  public:
    using List = std::vector<Value>;
    using Dictionary = std::map<std::string, Value, std::less<>>;

    Value(bool value) : data_(value) {}
    Value(int value) : data_(std::int64_t{value}) {}
    Value(std::int64_t value) : data_(value) {}
    Value(double value) : data_(value) {}
    Value(const char* value) : data_(std::string(value)) {}
    Value(std::string value) : data_(std::move(value)) {}
    Value(Point value) : data_(value) {}
    Value(Size value) : data_(value) {}
    Value(ElementRef value) : data_(std::move(value)) {}
    Value(OpaqueValue value) : data_(std::move(value)) {}
    Value(List value) : data_(std::make_shared<const List>(std::move(value))) {}
    Value(Dictionary value) : data_(std::make_shared<const Dictionary>(std::move(value))) {}

    /// The value when it is of exactly that type, else nothing.
    std::optional<bool> boolean() const { return get<bool>(); }
    std::optional<Point> point() const { return get<Point>(); }
    std::optional<Size> size() const { return get<Size>(); }
    const std::string* string() const { return std::get_if<std::string>(&data_); }
    ElementRef element() const;
    const List* list() const;
    const Dictionary* dictionary() const;

    /// Whether the value is held as an integer (not as a boolean or a floating-point number).
    bool isInteger() const { return std::holds_alternative<std::int64_t>(data_); }
    /// The value when it is a number without a fraction that fits; a boolean is not a number here.
    std::optional<std::int64_t> integer() const;
    /// The value when it is a number; a boolean is not a number here.
    std::optional<double> number() const;

    bool operator==(const Value& other) const;

  private:
    template <typename T>
    std::optional<T> get() const {
        const T* value = std::get_if<T>(&data_);
        return value ? std::optional<T>(*value) : std::nullopt;
    }

    std::variant<bool, std::int64_t, double, std::string, Point, Size, ElementRef, OpaqueValue,
                 std::shared_ptr<const List>, std::shared_ptr<const Dictionary>>
        data_;
};

/// The member of that name; null when there is none. Belongs to the dictionary.
const Value* findMember(const Value::Dictionary& dictionary, std::string_view key);

/// The same, when it is a string; null for any other value.
const std::string* findString(const Value::Dictionary& dictionary, std::string_view key);

}  // namespace quil
