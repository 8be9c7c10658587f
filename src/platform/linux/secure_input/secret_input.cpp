#include "platform/linux/secure_input/secret_input.h"

#include <algorithm>
#include <set>
#include <utility>

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;

/// No key waits longer than this for a program that makes no progress.
constexpr milliseconds kVerdictTimeout{20000};
/// How often a program is looked at that has not processed what the user did.
constexpr milliseconds kPollInterval{25};
/// A program that takes longer to reply is busy.
constexpr milliseconds kPromptReply{100};
/// For so long the active window is taken to be the same one, unless windows get the focus.
constexpr milliseconds kActiveProgramLifetime{1000};
constexpr TapTime kNever = TapTime::max();

}  // namespace

SecretInput::SecretInput(FocusSources& sources) : sources_(sources), reports_(sources.reports()) {
    findActiveProgram();
}

void SecretInput::mayMoveFocus(TapTime time, FocusMoves::Kind kind) {
    moves_.add(time, kind);
    judgements_ = {};
}

void SecretInput::windowGotFocus(TapTime time) {
    mayMoveFocus(time, FocusMoves::Kind::windowChange);
    windowGotFocus_ = time;
}

void SecretInput::process() {
    judgements_ = {};
    nextLook_ = reports_ ? reports_->process() : std::nullopt;
    if (!reports_) return;
    if (round_ && round_->replied) finishRound();
    if (moves_.areOpen() || round_) followProgram();
}

/// Looks how much the active program has processed. One that shows no progress is asked something:
/// the user may have done nothing that concerns it, such as a key of the window manager's.
void SecretInput::followProgram() {
    const auto now = sources_.now();
    if (isActiveProgramOutdated(now)) findActiveProgram();
    moves_.programProcessed(sources_.latestPressOf(active_), now);
    if (!moves_.areOpen()) return;
    wakeAt(now + kPollInterval);
    if (now >= std::max(moves_.quietSince() + kSettling, replied_ + kPollInterval)) ask();
}

bool SecretInput::isActiveProgramOutdated(TapTime now) const {
    return activeProgramFound_ < windowGotFocus_ + kSettling ||
           activeProgramFound_ + kActiveProgramLifetime < now;
}

void SecretInput::findActiveProgram() {
    activeProgramFound_ = sources_.now();
    const ActiveProgram found = sources_.activeProgram();
    if (found.pid != active_.pid) {
        previousPid_ = active_.pid;
        if (reports_) reports_->learnPrograms();
    }
    active_ = found;
    belongToActive_.clear();
    judgements_ = {};
}

void SecretInput::wakeAt(TapTime time) {
    nextLook_ = nextLook_ ? std::min(*nextLook_, time) : time;
}

/// Asks the active program what has the focus, and the one before for the sake of its last keys.
void SecretInput::ask() {
    if (round_) return;
    if (isActiveProgramOutdated(sources_.now())) findActiveProgram();
    std::set<std::int32_t> pids;
    if (active_.pid) pids.insert(*active_.pid);
    if (previousPid_) pids.insert(*previousPid_);
    for (const auto& [pid, belongs] : belongToActive_) {
        if (belongs) pids.insert(pid);
    }
    round_ = reports_->askAgain(pids);
    if (round_->replied) finishRound();
}

void SecretInput::finishRound() {
    const auto round = std::exchange(round_, nullptr);
    replied_ = *round->replied;
    judgements_ = {};
    if (round->failed) {
        moves_.programHangs(round->asked);
        return wakeAt(replied_ + kPollInterval);
    }
    if (replied_ - round->asked > kPromptReply) {
        moves_.programWasStuck(round->asked, replied_);
    } else if (passed_ >= moves_.quietSince() + kSettling) {
        // The second reply without any progress in between.
        moves_.programWasIdle(round->asked - kSettling);
    }
    moves_.programReplied(round->asked, replied_);
    passed_ = round->asked;
}

std::optional<bool> SecretInput::isSecret(TapTime key, std::span<const ClientId> grabbers) {
    const bool isKnown = this->isKnown(key);
    if (!isKnown && sources_.now() < verdictDeadline(key)) return {};
    const auto isOther = [&](ClientId grabber) {
        return grabber == kUnknownClient || grabber != active_.client;
    };
    if (!isKnown || std::ranges::any_of(grabbers, isOther)) return true;
    const Judgement& judgement = this->judgement(windowGotFocus_ <= key);
    if (!grabbers.empty() && key < judgement.firstReport) return true;
    return std::ranges::any_of(
        judgement.secrets, [&](const Span& span) { return span.begin <= key && key < span.end; });
}

/// When to give up on the program: it is waited for as long as it works off its events.
TapTime SecretInput::verdictDeadline(TapTime key) const {
    return std::max(key, moves_.latestProgress()) + kVerdictTimeout;
}

/// Whether all is known that a key of that time depends on. If not, says when to look again.
bool SecretInput::isKnown(TapTime key) {
    const auto now = sources_.now();
    const auto waitUntil = [&](TapTime time) {
        wakeAt(std::min(time, verdictDeadline(key)));
        return false;
    };
    const FocusMove* move = moves_.latestBefore(key);
    if (!reports_) {
        if (move && activeProgramFound_ < move->time) findActiveProgram();
        return true;
    }
    if (now < key + kLongestReportDelay) return waitUntil(key + kLongestReportDelay);
    if (move && !move->handled) return waitUntil(now + kPollInterval);
    if (move) {
        if (now < *move->handled + kSettling) return waitUntil(*move->handled + kSettling);
        if (passed_ < *move->handled + kSettling && now >= replied_ + kPollInterval) ask();
        if (round_) return waitUntil(kNever);
        if (passed_ < *move->handled + kSettling) return waitUntil(now + kPollInterval);
    }
    const auto& unknown = judgement(windowGotFocus_ <= key).unknown;
    const bool isOpen = std::ranges::any_of(
        unknown, [&](const Span& span) { return span.begin <= key && key < span.end; });
    return isOpen ? waitUntil(kNever) : true;
}

/// Whether that is the active program's process or a helper of it.
bool SecretInput::belongsToActive(std::int32_t pid) {
    if (!active_.pid) return false;
    const auto [entry, isNew] = belongToActive_.try_emplace(pid);
    if (isNew) entry->second = pid == *active_.pid || sources_.isHelperOf(pid, *active_.pid);
    return entry->second;
}

/// What the active program said, or all programs when another has become active since. When it says
/// nothing, what any said since its window is in front: a program in a sandbox talks through
/// another process.
std::vector<const FocusReport*> SecretInput::relevantReports(bool isActiveStill) {
    std::vector<const FocusReport*> relevant;
    if (!reports_) return relevant;
    const auto select = [&](auto isWanted) {
        for (const FocusReport& report : reports_->reports()) {
            if (isWanted(report)) relevant.push_back(&report);
        }
    };
    select([&](const FocusReport& report) {
        const auto pid = reports_->processOf(report);
        return !isActiveStill || (pid && belongsToActive(*pid));
    });
    if (relevant.empty()) {
        select([&](const FocusReport& report) { return report.arrival > windowGotFocus_; });
    }
    return relevant;
}

const SecretInput::Judgement& SecretInput::judgement(bool isActiveStill) {
    auto& judgement = judgements_[isActiveStill ? 1 : 0];
    if (judgement) return *judgement;
    judgement = Judgement();
    const auto reports = relevantReports(isActiveStill);
    std::vector<ReportedFocus> reported;
    reported.reserve(reports.size());
    for (const FocusReport* report : reports) {
        reported.push_back({report->arrival, report->content != FocusReport::Content::plain});
    }
    if (!reported.empty()) judgement->firstReport = reported.front().arrival;
    if (std::ranges::none_of(reported, &ReportedFocus::isSecret)) return *judgement;
    const auto onsets = focusOnsets(moves_.all(), reported);
    for (std::size_t i = 0; i < reports.size(); ++i) {
        if (!reported[i].isSecret) continue;
        const Span span{onsets[i].earliest, i + 1 < onsets.size() ? onsets[i + 1].latest : kNever};
        const bool isKnown = reports[i]->content == FocusReport::Content::secret;
        (isKnown ? judgement->secrets : judgement->unknown).push_back(span);
    }
    return *judgement;
}

}  // namespace quil::linux_platform
