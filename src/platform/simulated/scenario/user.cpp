// What the user does, as a scenario writes it.
#include <algorithm>
#include <limits>

#include "platform/event_posting.h"
#include "platform/simulated/desktop.h"
#include "platform/simulated/scenario/desktop_members.h"

namespace quil::simulated {
namespace {

using UserAction = std::function<void(User&)>;
using Limits64 = std::numeric_limits<std::int64_t>;

struct NamedFlag {
    std::string_view name;
    std::uint64_t flag;
};

constexpr NamedFlag kFlags[] = {
    {"capsLock", kEventFlagMaskAlphaShift}, {"shift", kEventFlagMaskShift},
    {"control", kEventFlagMaskControl},     {"option", kEventFlagMaskAlternate},
    {"command", kEventFlagMaskCommand},
};

/// A number, or a list of names.
std::uint64_t readFlags(const Node& node) {
    if (!node.isList()) return static_cast<std::uint64_t>(node.integer(0, Limits64::max()));
    std::uint64_t flags = 0;
    for (const Node& entry : node.list()) {
        const auto found = std::ranges::find(kFlags, entry.string(), &NamedFlag::name);
        if (found == std::end(kFlags)) {
            entry.fail("must be \"capsLock\", \"shift\", \"control\", \"option\" or \"command\"");
        }
        flags |= found->flag;
    }
    return flags;
}

std::uint32_t readEventType(const Node& node) {
    if (!node.isString()) return node.unsigned32();
    const auto type = eventTypeNamed(node.string());
    if (!type) node.fail("no event type has this name");
    return *type;
}

UserAction readClick(const Node& node) {
    return [point = node.point()](User& user) { user.click(point); };
}

UserAction readDrag(const Node& node) {
    node.allowOnly({"from", "to"});
    return [from = node.require("from").point(), to = node.require("to").point()](User& user) {
        user.drag(from, to);
    };
}

UserAction readScroll(const Node& node) {
    node.allowOnly({"at", "lines"});
    return [point = node.require("at").point(),
            lines = node.require("lines").integer(Limits64::min(), Limits64::max())](User& user) {
        user.scroll(point, lines);
    };
}

std::optional<std::string> optionalText(const std::optional<Node>& node) {
    return node ? std::optional(node->string()) : std::nullopt;
}

UserAction readKey(const Node& node) {
    node.allowOnly({"code", "characters", "flags"});
    const auto flags = node.find("flags");
    return
        [code = node.require("code").integer(Limits64::min(), Limits64::max()),
         characters = optionalText(node.find("characters")),
         flags = flags ? readFlags(*flags) : 0](User& user) { user.key(code, characters, flags); };
}

UserAction readType(const Node& node) {
    return [text = node.string()](User& user) { user.type(text); };
}

UserAction readEvent(const Node& node) {
    node.allowOnly({"type", "location", "timestamp", "flags", "keyCode", "lines", "characters"});
    UserEvent event{.type = readEventType(node.require("type"))};
    if (const auto value = node.find("location")) event.location = value->point();
    if (const auto value = node.find("timestamp")) {
        event.timestamp = static_cast<std::uint64_t>(value->integer(0, Limits64::max()));
    }
    if (const auto value = node.find("flags")) event.flags = readFlags(*value);
    if (const auto value = node.find("keyCode")) {
        event.keyCode = value->integer(Limits64::min(), Limits64::max());
    }
    if (const auto value = node.find("lines")) {
        event.scrollLines = value->integer(Limits64::min(), Limits64::max());
    }
    event.characters = optionalText(node.find("characters"));
    return [event](User& user) { user.event(event); };
}

UserAction readDisableTaps(const Node& node) {
    const std::string by = node.string();
    if (by == "timeout") return [](User& user) { user.disableTapsByTimeout(); };
    if (by == "userInput") return [](User& user) { user.disableTapsByUserInput(); };
    node.fail("must be \"timeout\" or \"userInput\"");
}

UserAction readSecureInput(const Node& node) {
    return [enabled = node.boolean()](User& user) { user.secureInput(enabled); };
}

struct UserActionReader {
    std::string_view name;
    UserAction (*read)(const Node& node);
};

constexpr UserActionReader kUserActions[] = {
    {"click", readClick},
    {"drag", readDrag},
    {"scroll", readScroll},
    {"key", readKey},
    {"type", readType},
    {"event", readEvent},
    {"disableTaps", readDisableTaps},
    {"secureInput", readSecureInput},
};

UserAction readUserAction(const Node& node) {
    std::vector<std::string_view> known;
    std::optional<UserAction> action;
    for (const UserActionReader& reader : kUserActions) {
        known.push_back(reader.name);
        if (const auto value = node.find(reader.name)) action = reader.read(*value);
    }
    node.allowOnly(known);
    if (!action || node.json().size() != 1) node.fail("must have exactly one member");
    return *action;
}

}  // namespace

Step readUser(const Node& node, Names&) {
    std::vector<UserAction> actions;
    for (const Node& entry : node.oneOrMore()) actions.push_back(readUserAction(entry));
    return [actions](Building& building) {
        for (const UserAction& action : actions) action(building.desktop.user());
    };
}

}  // namespace quil::simulated
