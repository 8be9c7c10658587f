// Windows and applications, and the members of both.
#include <charconv>

#include "platform/simulated/desktop.h"
#include "platform/simulated/scenario/elements.h"
#include "platform/simulated/scenario/values.h"

namespace quil::simulated {
namespace {

Window& windowOf(Element& element) {
    return static_cast<Window&>(element);
}
Application& applicationOf(Element& element) {
    return static_cast<Application&>(element);
}

std::optional<std::string> textOrNull(const Node& node) {
    if (node.isNull()) return {};
    return node.string();
}

Setting readLayer(const Node& node, Names&) {
    return
        [layer = node.integer32()](Building&, Element& element) { windowOf(element).layer(layer); };
}

Setting readOnScreen(const Node& node, Names&) {
    return [shown = node.boolean()](Building&, Element& element) {
        windowOf(element).onScreen(shown);
    };
}

Setting readDesktopElement(const Node& node, Names&) {
    return [isDesktop = node.boolean()](Building&, Element& element) {
        windowOf(element).desktopElement(isDesktop);
    };
}

Setting readColour(const Node& node, Names&) {
    const std::string text = node.string();
    std::uint32_t rgb = 0;
    const char* const end = text.data() + text.size();
    if (text.size() != 7 || text[0] != '#' ||
        std::from_chars(text.data() + 1, end, rgb, 16).ptr != end) {
        node.fail("must be a colour such as \"#FFCC00\"");
    }
    return [rgb](Building&, Element& element) { windowOf(element).colour(rgb); };
}

Setting readInfo(const Node& node, Names& names) {
    std::vector<std::pair<std::string, std::optional<ValueSource>>> entries;
    for (const auto& [key, value] : node.members()) {
        entries.emplace_back(
            key, value.isNull() ? std::nullopt : std::optional(readValue(value, names)));
    }
    return [entries](Building& building, Element& element) {
        building.later([entries, &element, &desktop = building.desktop] {
            for (const auto& [key, value] : entries) {
                if (value) {
                    windowOf(element).info(key, value->get(desktop));
                } else {
                    windowOf(element).withoutInfo(key);
                }
            }
        });
    };
}

Setting readBundleIdentifier(const Node& node, Names&) {
    return [text = textOrNull(node)](Building&, Element& element) {
        applicationOf(element).bundleIdentifier(text);
    };
}

Setting readExecutablePath(const Node& node, Names&) {
    return [text = textOrNull(node)](Building&, Element& element) {
        applicationOf(element).executablePath(text);
    };
}

Setting readLocalizedName(const Node& node, Names&) {
    return [text = textOrNull(node)](Building&, Element& element) {
        applicationOf(element).localizedName(text);
    };
}

Setting readPolicy(const Node& node, Names&) {
    constexpr std::string_view kPolicies[] = {"regular", "accessory", "prohibited"};
    const std::string text = node.string();
    for (int policy = kActivationPolicyRegular; const std::string_view name : kPolicies) {
        if (name == text) {
            return [policy](Building&, Element& element) {
                applicationOf(element).activationPolicy(policy);
            };
        }
        ++policy;
    }
    node.fail("must be \"regular\", \"accessory\" or \"prohibited\"");
}

Setting readSigning(const Node& node, Names&) {
    node.allowOnly({"team", "identifier"});
    const auto team = node.find("team");
    const auto identifier = node.find("identifier");
    return [team = team ? std::optional(team->string()) : std::nullopt,
            identifier = identifier ? std::optional(identifier->string()) : std::nullopt](
               Building&, Element& element) { applicationOf(element).signing(team, identifier); };
}

Setting readSigningInformation(const Node& node, Names& names) {
    return [value = readValue(node, names)](Building& building, Element& element) {
        building.later([value, &element, &desktop = building.desktop] {
            applicationOf(element).signingInformation(value.get(desktop));
        });
    };
}

template <Application& (Application::*change)(Element*)>
Setting readFocus(const Node& node, Names& names) {
    const std::string id = node.isNull() ? "" : names.refer(node, Kind::element);
    return [id](Building& building, Element& element) {
        building.later([id, &element, &desktop = building.desktop] {
            (applicationOf(element).*change)(id.empty() ? nullptr : desktop.find(id));
        });
    };
}

Setting readWindows(const Node& node, Names& names) {
    std::vector<std::function<void(Building&, Application*)>> windows;
    for (const Node& entry : node.list()) windows.push_back(readWindow(entry, names));
    return [windows](Building& building, Element& element) {
        for (const auto& build : windows) build(building, &applicationOf(element));
    };
}

/// The members that only windows have.
const std::vector<Member>& windowMembers() {
    static const std::vector<Member> members = {
        {"layer", Kind::window, readLayer},
        {"onScreen", Kind::window, readOnScreen},
        {"desktopElement", Kind::window, readDesktopElement},
        {"colour", Kind::window, readColour},
        {"info", Kind::window, readInfo},
    };
    return members;
}

/// The members that only applications have.
const std::vector<Member>& applicationMembers() {
    static const std::vector<Member> members = {
        {"bundleIdentifier", Kind::application, readBundleIdentifier},
        {"executablePath", Kind::application, readExecutablePath},
        {"localizedName", Kind::application, readLocalizedName},
        {"policy", Kind::application, readPolicy},
        {"signing", Kind::application, readSigning},
        {"signingInformation", Kind::application, readSigningInformation},
        {"windows", Kind::application, readWindows},
        {"focusedWindow", Kind::application, readFocus<&Application::focusWindow>},
        {"focusedElement", Kind::application, readFocus<&Application::focusElement>},
    };
    return members;
}

std::vector<std::string_view> namesOf(const std::vector<const std::vector<Member>*>& tables,
                                      std::vector<std::string_view> others) {
    for (const auto* table : tables) {
        for (const Member& member : *table) others.push_back(member.name);
    }
    return others;
}

std::vector<Setting> readTables(const Node& node, Names& names,
                                const std::vector<const std::vector<Member>*>& tables) {
    std::vector<Setting> settings;
    for (const auto* table : tables) {
        for (const Member& member : *table) {
            if (const auto value = node.find(member.name)) {
                settings.push_back(member.read(*value, names));
            }
        }
    }
    return settings;
}

}  // namespace

std::vector<Setting> readMembers(const Node& node, Kind kind, Names& names,
                                 std::vector<std::string_view> others) {
    std::vector<const std::vector<Member>*> tables;
    if (kind == Kind::window) tables.push_back(&windowMembers());
    // The windows come before the application's other children.
    if (kind == Kind::application) tables.push_back(&applicationMembers());
    tables.push_back(&elementMembers());
    node.allowOnly(namesOf(tables, std::move(others)));
    return readTables(node, names, tables);
}

std::vector<Setting> readUpdate(const Node& node, const Node& id, Names& names) {
    const std::vector<const std::vector<Member>*> tables = {&windowMembers(), &applicationMembers(),
                                                            &elementMembers()};
    node.allowOnly(namesOf(tables, {"update"}));
    names.refer(id, Kind::element);
    for (const auto* table : tables) {
        for (const Member& member : *table) {
            if (member.kind == Kind::element || !node.find(member.name)) continue;
            names.require(id, member.kind, " to have \"" + std::string(member.name) + '"');
        }
    }
    return readTables(node, names, tables);
}

std::function<void(Building&, Application*)> readWindow(const Node& node, Names& names) {
    const auto id = node.find("id");
    if (id) names.declare(*id, Kind::window);
    node.require("bounds");
    return [id = id ? id->string() : "", settings = readMembers(node, Kind::window, names, {"id"})](
               Building& building, Application* owner) {
        Window& window = owner ? owner->window("", {}) : building.desktop.window("", {});
        window.id(id);
        apply(settings, building, window);
    };
}

std::int32_t readProcessId(const Node& node) {
    return node.require("pid").integer32();
}

std::function<void(Building&)> readApplication(const Node& node, Names& names) {
    const auto id = node.find("id");
    if (id) names.declare(*id, Kind::application);
    return [id = id ? id->string() : "", pid = readProcessId(node),
            name = node.require("name").string(),
            settings = readMembers(node, Kind::application, names, {"id", "pid", "name"})](
               Building& building) {
        if (Application* running = building.desktop.findApplication(pid)) {
            running->activate();
            return;
        }
        Application& application = building.desktop.application(pid, name);
        application.id(id);
        apply(settings, building, application);
    };
}

}  // namespace quil::simulated
