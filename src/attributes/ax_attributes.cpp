#include "attributes/ax_attributes.h"

#include <cmath>
#include <cstdio>

#include "text/characters.h"

namespace quil {
namespace {

std::optional<std::int64_t> roundedCoordinate(double coordinate) {
    return Value(std::round(coordinate)).integer();
}

/// A floating-point number with 16 significant digits, as NSNumber's `stringValue` is documented to
/// write it ("%0.16g"); what is no number without the sign that it may bear.
std::string numberText(double number) {
    if (std::isnan(number)) return "nan";
    char text[32];
    std::snprintf(text, sizeof text, "%0.16g", number);
    return text;
}

}  // namespace

std::optional<Value> axAttribute(Accessibility& accessibility, const ElementRef& element,
                                 std::string_view attribute) {
    std::optional<Value> value;
    if (accessibility.copyAttributeValue(element, attribute, value) != kAxSuccess) return {};
    return value;
}

std::optional<std::string> axString(Accessibility& accessibility, const ElementRef& element,
                                    std::string_view attribute) {
    const auto value = axAttribute(accessibility, element, attribute);
    if (!value || !value->string()) return {};
    return *value->string();
}

std::vector<ElementRef> axChildren(Accessibility& accessibility, const ElementRef& element) {
    const auto value = axAttribute(accessibility, element, "AXChildren");
    if (!value || !value->list()) return {};
    std::vector<ElementRef> children;
    children.reserve(value->list()->size());
    for (const Value& entry : *value->list()) {
        ElementRef child = entry.element();
        if (!child) return {};
        children.push_back(std::move(child));
    }
    return children;
}

ElementRef axFocusedWindow(Accessibility& accessibility, std::int32_t pid) {
    ElementRef application = accessibility.createApplication(pid);
    const auto value = axAttribute(accessibility, application, "AXFocusedWindow");
    ElementRef window = value ? value->element() : nullptr;
    return window ? window : application;
}

std::optional<Point> axPointAttribute(Accessibility& accessibility, const ElementRef& element,
                                      std::string_view attribute) {
    const auto value = axAttribute(accessibility, element, attribute);
    return value ? value->point() : std::nullopt;
}

std::optional<Size> axSizeAttribute(Accessibility& accessibility, const ElementRef& element,
                                    std::string_view attribute) {
    const auto value = axAttribute(accessibility, element, attribute);
    return value ? value->size() : std::nullopt;
}

std::optional<AxBounds> axBounds(Accessibility& accessibility, const ElementRef& element) {
    const auto position = axPointAttribute(accessibility, element, "AXPosition");
    if (!position) return {};
    const auto size = axSizeAttribute(accessibility, element, "AXSize");
    if (!size) return {};
    const auto x = roundedCoordinate(position->x);
    const auto y = roundedCoordinate(position->y);
    const auto width = roundedCoordinate(size->width);
    const auto height = roundedCoordinate(size->height);
    if (!x || !y || !width || !height) return {};
    return AxBounds{*x, *y, *width, *height};
}

std::optional<std::string> axValueString(Accessibility& accessibility, const ElementRef& element) {
    const auto value = axAttribute(accessibility, element, "AXValue");
    if (!value) return {};
    if (value->string()) return *value->string();
    if (const auto boolean = value->boolean()) return *boolean ? "1" : "0";
    if (value->isInteger()) return std::to_string(*value->integer());
    if (const auto number = value->number()) return numberText(*number);
    return {};
}

std::optional<std::string> clipAxField(const std::optional<std::string>& text) {
    if (!text || text->empty()) return {};
    return std::string(characterPrefix(*text, AX_FIELD_LIMIT));
}

std::optional<bool> axEnabled(Accessibility& accessibility, const ElementRef& element) {
    const auto value = axAttribute(accessibility, element, "AXEnabled");
    return value ? value->boolean() : std::nullopt;
}

std::vector<std::string> axActionNames(Accessibility& accessibility, const ElementRef& element) {
    std::optional<Value> value;
    if (accessibility.copyActionNames(element, value) != kAxSuccess) return {};
    if (!value || !value->list()) return {};
    std::vector<std::string> names;
    names.reserve(value->list()->size());
    for (const Value& entry : *value->list()) {
        if (!entry.string()) return {};
        names.push_back(*entry.string());
    }
    return names;
}

}  // namespace quil
