#include "platform/linux/applications/application_identities.h"

#include <algorithm>

#include "platform/linux/applications/processes.h"

namespace quil::linux_platform {
namespace {

/// So many identities are kept before the ended processes among them are looked for.
constexpr std::size_t kMaximumIdentities = 256;
/// So many kinds of windows of one process are remembered.
constexpr std::size_t kMaximumEntries = 64;

std::optional<std::string> nonEmpty(std::string text) {
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

}  // namespace

void ApplicationIdentities::forgetOutdated() {
    const std::string& installed = matcher_.installedEntriesStamp();
    if (installed != installedEntries_) identities_.clear();
    installedEntries_ = installed;
    if (identities_.size() < kMaximumIdentities) return;
    std::erase_if(identities_, [](const auto& known) {
        const auto startTime = startTimeOf(known.first);
        return !startTime || startTime != known.second.startTime;
    });
}

ApplicationIdentities::Identity& ApplicationIdentities::identityOf(std::int32_t pid) {
    forgetOutdated();
    Identity& identity = identities_[pid];
    const auto startTime = startTimeOf(pid);
    if (!startTime || identity.startTime != startTime) identity = {startTime, {}, {}};
    return identity;
}

std::optional<RunningApplication> ApplicationIdentities::identified(std::int32_t pid) {
    return identityOf(pid).application;
}

std::optional<MatchedEntry> ApplicationIdentities::entryOf(const ApplicationHints& hints,
                                                           const IsOnDisplay& isOnDisplay) {
    auto& entries = identityOf(hints.pid).entries;
    const auto known =
        std::ranges::find(entries, hints, &decltype(Identity::entries)::value_type::first);
    if (known != entries.end()) return known->second;
    if (entries.size() == kMaximumEntries) entries.clear();
    return entries.emplace_back(hints, matcher_.find(hints, isOnDisplay)).second;
}

RunningApplication ApplicationIdentities::identify(const ApplicationHints& hints,
                                                   const std::optional<MatchedEntry>& entry) {
    RunningApplication application;
    application.processIdentifier = hints.pid;
    application.executablePath = executableOf(hints.pid);
    if (entry) {
        application.bundleIdentifier = entry->id;
        application.localizedName = nonEmpty(entry->localizedName);
    }
    if (!application.localizedName) application.localizedName = nonEmpty(hints.className);
    if (!application.localizedName) application.localizedName = nonEmpty(processName(hints.pid));
    return identityOf(hints.pid).application.emplace(std::move(application));
}

}  // namespace quil::linux_platform
