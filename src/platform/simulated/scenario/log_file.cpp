#include "platform/simulated/scenario/log_file.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>

#include "platform/event_posting.h"
#include "platform/simulated/desktop.h"
#include "text/characters.h"

namespace quil::simulated {
namespace {

using Json = nlohmann::json;

Json orNull(const auto& optional) {
    return optional ? Json(*optional) : Json(nullptr);
}

Json valueJson(const Value& value) {
    if (const auto boolean = value.boolean()) return *boolean;
    if (const std::string* string = value.string()) return *string;
    if (value.isInteger()) return *value.integer();
    return orNull(value.number());
}

Json keyJson(const PostedEvent& event) {
    return {{"keyCode", event.keyCode},
            {"flags", orNull(event.flags)},
            {"text", event.text ? Json(toUtf8(*event.text)) : Json(nullptr)}};
}

Json mouseJson(const PostedEvent& event) {
    return {{"point", {event.location.x, event.location.y}},
            {"button", event.button},
            {"click", orNull(event.clickState)},
            {"flags", orNull(event.flags)}};
}

Json wheelJson(const PostedEvent& event) {
    return {{"point", {event.location.x, event.location.y}},
            {"wheels", {event.wheel1, event.wheel2, event.wheel3}},
            {"wheelCount", event.wheelCount},
            {"units", event.units}};
}

struct ToJson {
    Json operator()(const PostedEvent& event) const {
        const bool isKey = event.type == kEventKeyDown || event.type == kEventKeyUp;
        Json line = isKey                             ? keyJson(event)
                    : event.type == kEventScrollWheel ? wheelJson(event)
                                                      : mouseJson(event);
        line["call"] = "post";
        line["type"] = eventTypeName(event.type);
        line["tap"] = event.tapLocation;
        line["source"] = orNull(event.sourceState);
        return line;
    }

    Json operator()(const PasteboardCall& call) const {
        using Operation = PasteboardCall::Operation;
        if (call.operation == Operation::clearContents) return {{"call", "clearContents"}};
        Json line = {{"type", call.type}, {"text", orNull(call.text)}};
        const bool isWrite = call.operation == Operation::setString;
        line["call"] = isWrite ? "setString" : "stringForType";
        if (isWrite) line["accepted"] = call.accepted;
        return line;
    }

    Json operator()(const ElementCall& call) const {
        const bool isAction = call.operation == ElementCall::Operation::performAction;
        Json line = {{"element", call.element}, {"result", call.result}};
        line["call"] = isAction ? "performAction" : "setAttributeValue";
        line[isAction ? "action" : "attribute"] = call.name;
        if (call.value) line["value"] = valueJson(*call.value);
        return line;
    }

    Json operator()(const Pause& pause) const {
        return {{"call", "sleep"}, {"microseconds", pause.microseconds}};
    }

    Json operator()(const Launch& launch) const {
        return {{"call", "openUrl"}, {"path", launch.path}, {"opened", launch.opened}};
    }

    Json operator()(const WindowActivation& activation) const {
        return {{"call", "activateWindow"},
                {"window", activation.number},
                {"accepted", activation.accepted}};
    }

    Json operator()(const PermissionRequest& request) const {
        return {{"call", "requestListenEventAccess"}, {"granted", request.granted}};
    }
};

std::string lineFor(const LogEntry& entry) {
    Json line = std::visit(ToJson{}, entry.what);
    line["time"] = entry.time;
    line["request"] = entry.request;
    line["line"] = describe(entry);
    return line.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace

void writeLogTo(const std::string& path, SimulatedDesktop& desktop) {
    const std::shared_ptr<std::FILE> file(std::fopen(path.c_str(), "we"), [](std::FILE* opened) {
        if (opened) std::fclose(opened);
    });
    if (!file)
        throw std::runtime_error("log: " + path + ": " + std::generic_category().message(errno));
    desktop.observeLog([file](const LogEntry& entry) {
        const std::string line = lineFor(entry);
        std::fwrite(line.data(), 1, line.size(), file.get());
        std::fflush(file.get());
    });
}

}  // namespace quil::simulated
