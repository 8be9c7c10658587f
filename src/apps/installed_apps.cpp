#include "apps/installed_apps.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "target/capture_target.h"

namespace quil {
namespace {

/// Records by "appId": each application once.
using Catalogue = std::map<std::string, Json>;

std::string without(std::string text, std::string_view part) {
    if (part.empty()) return text;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at)) {
        text.erase(at, part.size());
    }
    return text;
}

/// Null when nothing identifies the application.
Json appRecord(CodeSigning& codeSigning, const RunningApplication& application) {
    const auto path = executablePath(application);
    const std::string appId = application.bundleIdentifier.value_or(path.value_or(""));
    if (appId.empty()) return nullptr;
    Json record = {
        {"appId", appId}, {"name", application.localizedName.value_or(appId)}, {"running", true}};
    setOptional(record, "bundleIdentifier", application.bundleIdentifier);
    setOptional(record, "executablePath", path);
    setOptional(record, "signingIdentity",
                signingIdentity(codeSigning, application.processIdentifier));
    return record;
}

void addRunning(Catalogue& catalogue, Platform& platform) {
    for (const RunningApplication& application : platform.workspace().runningApplications()) {
        if (application.activationPolicy != kActivationPolicyRegular) continue;
        Json record = appRecord(platform.codeSigning(), application);
        if (record.is_null()) continue;
        auto appId = record["appId"].get<std::string>();
        catalogue.insert_or_assign(std::move(appId), std::move(record));
    }
}

/// Leaves an application that the catalogue already holds as it is.
void addBundle(Catalogue& catalogue, Bundles& bundles, const std::string& folder,
               const std::string& entryName, std::string_view suffix) {
    const std::string path = folder + '/' + entryName;
    const auto bundle = bundles.openBundle(path);
    const auto identifier = bundle ? bundle->bundleIdentifier : std::nullopt;
    const std::string appId = identifier.value_or(path);
    if (catalogue.contains(appId)) return;

    const std::string* name = nullptr;
    if (bundle) name = findString(bundle->infoDictionary, "CFBundleDisplayName");
    if (bundle && !name) name = findString(bundle->infoDictionary, "CFBundleName");
    Json record = {{"appId", appId},
                   {"name", name ? *name : without(entryName, suffix)},
                   {"executablePath", path},
                   {"running", false}};
    setOptional(record, "bundleIdentifier", identifier);
    catalogue.emplace(appId, std::move(record));
}

void addInstalled(Catalogue& catalogue, Bundles& bundles) {
    const std::string suffix = bundles.bundleSuffix();
    for (const std::string& folder : bundles.applicationFolders()) {
        const auto entries = bundles.contentsOfDirectory(folder);
        if (!entries) continue;
        for (const std::string& entry : *entries) {
            if (entry.ends_with(suffix)) addBundle(catalogue, bundles, folder, entry, suffix);
        }
    }
}

}  // namespace

Json installedApps(Platform& platform) {
    Catalogue catalogue;
    addRunning(catalogue, platform);
    addInstalled(catalogue, platform.bundles());

    Json::array_t records;
    records.reserve(catalogue.size());
    for (auto& [appId, record] : catalogue) records.push_back(std::move(record));
    const auto nameOf = [](const Json& record) -> const std::string& {
        return record["name"].get_ref<const std::string&>();
    };
    Collation& collation = platform.collation();
    std::stable_sort(records.begin(), records.end(), [&](const Json& a, const Json& b) {
        return collation.localizedCaseInsensitiveCompare(nameOf(a), nameOf(b)) < 0;
    });
    records.resize(std::min(records.size(), kMaximumApps));
    return Json(std::move(records));
}

}  // namespace quil
