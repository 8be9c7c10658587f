#include "platform/linux/applications/application_identities.h"

#include "platform/linux/applications/processes.h"

namespace quil::linux_platform {
namespace {

/// So many identities are kept before the ended processes among them are looked for.
constexpr std::size_t kManyIdentities = 256;

std::optional<std::string> nonEmpty(std::string text) {
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

}  // namespace

void ApplicationIdentities::forgetOutdated() {
    const std::string& installed = matcher_.installedEntriesStamp();
    if (installed != installedEntries_) identities_.clear();
    installedEntries_ = installed;
    if (identities_.size() < kManyIdentities) return;
    std::erase_if(identities_, [](const auto& known) {
        return startTimeOf(known.first) != known.second.startTime;
    });
}

std::optional<RunningApplication> ApplicationIdentities::identified(std::int32_t pid) {
    forgetOutdated();
    const auto known = identities_.find(pid);
    const auto startTime = startTimeOf(pid);
    if (known == identities_.end() || !startTime || known->second.startTime != startTime) return {};
    return known->second.application;
}

RunningApplication ApplicationIdentities::identify(const ApplicationHints& hints) {
    // One process can show windows of several entries, so the window has to be the same kind, too.
    const auto last = identified(hints.pid);
    if (last && identities_.at(hints.pid).hints == hints) return *last;

    RunningApplication application;
    application.processIdentifier = hints.pid;
    application.executablePath = executableOf(hints.pid);
    if (auto entry = matcher_.find(hints)) {
        application.bundleIdentifier = std::move(entry->id);
        application.localizedName = nonEmpty(std::move(entry->localizedName));
    }
    if (!application.localizedName) application.localizedName = nonEmpty(hints.className);
    if (!application.localizedName) application.localizedName = nonEmpty(processName(hints.pid));
    identities_[hints.pid] = {hints, startTimeOf(hints.pid), application};
    return application;
}

}  // namespace quil::linux_platform
