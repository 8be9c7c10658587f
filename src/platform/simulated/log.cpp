#include "platform/simulated/log.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>

#include "platform/event_posting.h"
#include "platform/event_taps.h"
#include "platform/pasteboard.h"
#include "text/characters.h"

namespace quil::simulated {
namespace {

struct NamedEventType {
    std::uint32_t type;
    const char* name;
};

constexpr NamedEventType kEventTypeNames[] = {
    {kEventLeftMouseDown, "leftMouseDown"},
    {kEventLeftMouseUp, "leftMouseUp"},
    {kEventRightMouseDown, "rightMouseDown"},
    {kEventRightMouseUp, "rightMouseUp"},
    {kEventMouseMoved, "mouseMoved"},
    {kEventLeftMouseDragged, "leftMouseDragged"},
    {kEventRightMouseDragged, "rightMouseDragged"},
    {kEventKeyDown, "keyDown"},
    {kEventKeyUp, "keyUp"},
    {kEventScrollWheel, "scrollWheel"},
    {kEventOtherMouseDown, "otherMouseDown"},
    {kEventOtherMouseUp, "otherMouseUp"},
    {kEventOtherMouseDragged, "otherMouseDragged"},
    {kEventTapDisabledByTimeout, "tapDisabledByTimeout"},
    {kEventTapDisabledByUserInput, "tapDisabledByUserInput"},
};

/// With as few digits as distinguish the number from every other.
std::string decimal(double number) {
    char text[32];
    for (int digits = 15; digits <= 17; ++digits) {
        std::snprintf(text, sizeof text, "%.*g", digits, number);
        if (std::strtod(text, nullptr) == number) break;
    }
    return text;
}

std::string hexadecimal(std::uint64_t number) {
    char digits[16];
    return "0x" +
           std::string(digits, std::to_chars(digits, digits + sizeof digits, number, 16).ptr);
}

std::string inQuotes(std::string_view text) {
    return '"' + std::string(text) + '"';
}

std::string describeValue(const Value& value) {
    if (const auto boolean = value.boolean()) return *boolean ? "true" : "false";
    if (const std::string* string = value.string()) return inQuotes(*string);
    if (value.isInteger()) return std::to_string(*value.integer());
    if (const auto number = value.number()) return decimal(*number);
    return "value";
}

std::string describeLocation(const PostedEvent& event) {
    return ' ' + decimal(event.location.x) + ',' + decimal(event.location.y);
}

std::uint32_t usualButton(std::uint32_t type) {
    switch (type) {
        case kEventRightMouseDown:
        case kEventRightMouseUp:
        case kEventRightMouseDragged:
            return kMouseButtonRight;
        case kEventOtherMouseDown:
        case kEventOtherMouseUp:
        case kEventOtherMouseDragged:
            return kMouseButtonCenter;
        default:
            return kMouseButtonLeft;
    }
}

std::string describeKey(const PostedEvent& event) {
    std::string line = ' ' + std::to_string(event.keyCode);
    if (event.flags) line += " flags " + hexadecimal(*event.flags);
    if (event.text) line += " text " + inQuotes(toUtf8(*event.text));
    if (!event.sourceState) line += " no source";
    if (event.sourceState.value_or(kEventSourceStateHidSystemState) !=
        kEventSourceStateHidSystemState) {
        line += " source " + std::to_string(*event.sourceState);
    }
    return line;
}

std::string describeWheels(const PostedEvent& event) {
    std::string line =
        " wheels " + std::to_string(event.wheel1) + ',' + std::to_string(event.wheel2);
    if (event.wheel3) line += ',' + std::to_string(event.wheel3);
    if (event.units != kScrollEventUnitLine) line += " units " + std::to_string(event.units);
    if (event.wheelCount != 2) line += " count " + std::to_string(event.wheelCount);
    return line;
}

struct Describe {
    std::string operator()(const PostedEvent& event) const {
        std::string line = eventTypeName(event.type);
        if (event.type == kEventKeyDown || event.type == kEventKeyUp) {
            line += describeKey(event);
        } else {
            line += describeLocation(event);
            if (event.type == kEventScrollWheel) line += describeWheels(event);
            if (event.clickState) line += " click " + std::to_string(*event.clickState);
            if (event.flags) line += " flags " + hexadecimal(*event.flags);
            if (event.button != usualButton(event.type)) {
                line += " button " + std::to_string(event.button);
            }
            if (event.sourceState) line += " source " + std::to_string(*event.sourceState);
        }
        if (event.tapLocation != kHidEventTap) line += " tap " + std::to_string(event.tapLocation);
        return line;
    }

    std::string operator()(const PasteboardCall& call) const {
        using Operation = PasteboardCall::Operation;
        if (call.operation == Operation::clearContents) return "clearContents";
        const bool isWrite = call.operation == Operation::setString;
        std::string line = isWrite ? "setString" : "stringForType";
        line += call.text ? ' ' + inQuotes(*call.text) : " nothing";
        if (call.type != kPasteboardTypeString) line += " type " + call.type;
        return call.accepted ? line : line + " refused";
    }

    std::string operator()(const ElementCall& call) const {
        const bool isAction = call.operation == ElementCall::Operation::performAction;
        std::string line = isAction ? "performAction " : "setAttributeValue ";
        line += call.element + ' ' + call.name;
        if (call.value) line += ' ' + describeValue(*call.value);
        return call.result ? line + " result " + std::to_string(call.result) : line;
    }

    std::string operator()(const Pause& pause) const {
        return "sleep " + std::to_string(pause.microseconds);
    }

    std::string operator()(const Launch& launch) const {
        return "openUrl " + launch.path + (launch.opened ? "" : " refused");
    }

    std::string operator()(const WindowActivation& activation) const {
        return "activateWindow " + std::to_string(activation.number) +
               (activation.accepted ? "" : " refused");
    }

    std::string operator()(const PermissionRequest& request) const {
        return request.granted ? "requestListenEventAccess granted"
                               : "requestListenEventAccess refused";
    }
};

}  // namespace

std::string eventTypeName(std::uint32_t type) {
    for (const auto& entry : kEventTypeNames) {
        if (entry.type == type) return entry.name;
    }
    return std::to_string(type);
}

std::optional<std::uint32_t> eventTypeNamed(std::string_view name) {
    for (const auto& entry : kEventTypeNames) {
        if (entry.name == name) return entry.type;
    }
    return {};
}

std::string describe(const LogEntry& entry) {
    return std::visit(Describe{}, entry.what);
}

}  // namespace quil::simulated
