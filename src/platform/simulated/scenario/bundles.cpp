#include <set>

#include "platform/simulated/desktop.h"
#include "platform/simulated/scenario/changes.h"
#include "platform/simulated/scenario/desktop_members.h"
#include "platform/simulated/scenario/values.h"

namespace quil::simulated {
namespace {

Step readBundle(const Node& node, Names& names) {
    node.allowOnly(
        {"path", "identifier", "displayName", "name", "information", "isBundle", "whenLaunched"});
    SimulatedDesktop::BundleFile file{
        .path = node.require("path").string(), .bundle = {}, .isBundle = true, .launch = {}};
    if (!file.path.starts_with('/')) node.require("path").fail("must begin with a slash");
    if (const auto text = node.find("identifier")) file.identifier(text->string());
    if (const auto text = node.find("displayName")) file.displayName(text->string());
    if (const auto text = node.find("name")) file.name(text->string());
    if (const auto isBundle = node.find("isBundle")) file.isBundle = isBundle->boolean();
    if (const auto change = node.find("whenLaunched")) {
        file.whenLaunched(readChange(*change, names));
    }
    std::vector<std::pair<std::string, ValueSource>> information;
    if (const auto members = node.find("information")) {
        for (const auto& [key, value] : members->members()) {
            information.emplace_back(key, readValue(value, names));
        }
    }
    return [file, information](Building& building) {
        auto& added = building.desktop.bundle(file.path);
        added = file;
        for (const auto& [key, value] : information) {
            added.information(key, value.get(building.desktop));
        }
    };
}

}  // namespace

Step readBundles(const Node& node, Names& names) {
    std::vector<Step> bundles;
    std::set<std::string> paths;
    for (const Node& entry : node.list()) {
        bundles.push_back(readBundle(entry, names));
        const Node path = entry.require("path");
        if (!paths.insert(path.string()).second) path.fail("given twice");
    }
    return [bundles](Building& building) {
        for (const Step& add : bundles) add(building);
    };
}

}  // namespace quil::simulated
