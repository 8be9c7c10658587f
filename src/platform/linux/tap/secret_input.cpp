#include "platform/linux/tap/secret_input.h"

#include <algorithm>
#include <array>

#include "platform/linux/processes.h"
#include "platform/linux/x11/window_stack.h"

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;

/// In that time a program says that its focus has moved.
constexpr milliseconds kSettling{150};
/// Nobody waits longer than this for a program that does not answer.
constexpr milliseconds kPatience{1000};
constexpr std::size_t kKeptMoves = 64;
constexpr int kMostGenerations = 16;

}  // namespace

SecretInput::SecretInput(X11Display& display)
    : display_(display), reports_(FocusReports::open(display)) {
    check();
}

void SecretInput::mayMoveFocus(TapTime time, bool isLikely) {
    // Only what comes after it goes elsewhere.
    moves_.push_back({time + std::chrono::nanoseconds(1), isLikely});
    if (moves_.size() > kKeptMoves) moves_.pop_front();
}

void SecretInput::windowGotFocus(TapTime time) {
    mayMoveFocus(time, true);
    windowGotFocus_ = time;
}

void SecretInput::ungrabs(std::optional<std::uint32_t> client) {
    if (!client || client == grabber_) grabber_.reset();
}

void SecretInput::prepareToWait(std::vector<pollfd>& descriptors) {
    if (reports_) descriptors.push_back(reports_->waiting());
}

std::optional<TapTime> SecretInput::process() {
    return reports_ ? reports_->process() : std::nullopt;
}

std::optional<TapTime> SecretInput::waitsUntil(TapTime key) {
    const TapTime now = TapTime::clock::now();
    const TapTime limit = key + kPatience;
    if (now >= limit) return {};
    const auto move = std::find_if(moves_.rbegin(), moves_.rend(),
                                   [&](const FocusMove& entry) { return entry.time <= key; });
    if (move != moves_.rend()) {
        const TapTime settled = move->time + (reports_ ? kSettling : milliseconds::zero());
        if (now < settled) return std::min(limit, settled);
        if (checked_ < settled) check();
    }
    return reports_ && reports_->isAsking() ? std::optional(limit) : std::nullopt;
}

/// Finds the active program, and asks it what has the focus: it answers after it has dealt with
/// what came before.
void SecretInput::check() {
    checked_ = TapTime::clock::now();
    lookAtActiveProgram();
    if (reports_ && active_.pid) reports_->askAgain(*active_.pid);
}

void SecretInput::lookAtActiveProgram() {
    active_ = {};
    speakers_.clear();
    const auto connection = display_.connection();
    const auto window = connection ? activeWindow(*connection) : std::nullopt;
    if (!window) return;
    const std::uint32_t mask = xcb_get_setup(connection->get())->resource_id_mask;
    active_ = {.pid = window->pid, .client = window->id & ~mask};
}

/// Whether that is the active program's process or a helper of it: one that it started, itself or
/// through others, and that has no window of its own (the processes of a web browser's pages).
bool SecretInput::speaksForActive(std::int32_t pid) {
    if (!active_.pid) return false;
    const auto [entry, isNew] = speakers_.try_emplace(pid);
    if (!isNew) return entry->second;
    std::optional<std::int32_t> ancestor = pid;
    for (int i = 0; i < kMostGenerations && ancestor && ancestor != active_.pid; ++i) {
        ancestor = parentOf(*ancestor);
    }
    entry->second = ancestor == active_.pid;
    const auto connection = entry->second && pid != active_.pid ? display_.connection() : nullptr;
    if (connection) {
        const auto windows = topLevelWindows(*connection);
        entry->second = std::ranges::none_of(
            windows, [&](const X11Window& window) { return window.pid == pid; });
    }
    return entry->second;
}

/// What the active program said, or all programs when another has become active since. When it says
/// nothing, what any said since its window is in front: a program in a sandbox talks through
/// another process.
std::vector<const FocusReport*> SecretInput::relevantReports(TapTime key) {
    std::vector<const FocusReport*> relevant;
    if (!reports_) return relevant;
    const auto select = [&](auto isWanted) {
        for (const FocusReport& report : reports_->reports()) {
            if (isWanted(report)) relevant.push_back(&report);
        }
    };
    const bool isActiveStill = windowGotFocus_ <= key;
    select([&](const FocusReport& report) {
        const auto pid = reports_->processOf(report);
        return !isActiveStill || (pid && speaksForActive(*pid));
    });
    if (relevant.empty()) {
        select([&](const FocusReport& report) { return report.arrival > windowGotFocus_; });
    }
    return relevant;
}

bool SecretInput::isSecret(TapTime key) {
    if (grabber_ && grabber_ != active_.client) return true;
    const auto reports = relevantReports(key);
    std::vector<TapTime> arrivals;
    arrivals.reserve(reports.size());
    for (const FocusReport* report : reports) arrivals.push_back(report->arrival);
    // Of two explanations, the one that keeps the secret.
    return std::ranges::any_of(
        std::array{FocusGuess::unlikelyMovesFailed, FocusGuess::earlyMovesFailed},
        [&](FocusGuess guess) {
            const auto since = focusChangeTimes({moves_.begin(), moves_.end()}, arrivals, guess);
            const auto next = std::ranges::upper_bound(since, key);
            if (next == since.begin()) return grabber_.has_value();
            const auto* report = reports[static_cast<std::size_t>(next - since.begin()) - 1];
            return report->content != FocusReport::Content::plain;
        });
}

}  // namespace quil::linux_platform
