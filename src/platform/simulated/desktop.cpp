#include "platform/simulated/desktop.h"

#include <algorithm>
#include <stdexcept>

#include "platform/pasteboard.h"

namespace quil {
namespace {

using simulated::DesktopClock;

simulated::Element* findBelow(simulated::Element& element, std::string_view id) {
    if (element.id() == id) return &element;
    for (const auto& child : element.children()) {
        if (simulated::Element* found = findBelow(*child, id)) return found;
    }
    return nullptr;
}

}  // namespace

SimulatedDesktop::SimulatedDesktop()
    : displays{{1, {0, 0, 1440, 900}, "Built-in Display"}},
      sleepingMainDisplay{1, {0, 0, 1440, 900}, {}},
      applicationFolders{"/Applications", "/Applications/Utilities", "/System/Applications",
                         "/System/Applications/Utilities"},
      eventTaps_([this](std::string_view call) { return !enter(call); }),
      user_(*this) {}

SimulatedDesktop::~SimulatedDesktop() {
    for (const auto* list : {&applications_, &endedApplications_}) {
        for (const auto& application : *list) application->releaseValues();
    }
    for (const auto& window : windows_) window->releaseValues();
}

simulated::Application& SimulatedDesktop::application(std::int32_t pid, std::string name) {
    applications_.push_back(std::make_shared<simulated::Application>(*this, pid, std::move(name)));
    if (!frontmost_ && applications_.size() == 1) frontmost_ = applications_.back().get();
    return *applications_.back();
}

simulated::Application* SimulatedDesktop::findApplication(std::int32_t pid) {
    const auto found = std::ranges::find(
        applications_, pid, [](const auto& application) { return application->pid(); });
    return found == applications_.end() ? nullptr : found->get();
}

simulated::Window& SimulatedDesktop::window(std::string title, Rect frame) {
    addWindow(
        std::make_shared<simulated::Window>(nullptr, nextWindowNumber(), std::move(title), frame));
    return *windows_.back();
}

std::vector<simulated::Window*> SimulatedDesktop::windows() const {
    std::vector<simulated::Window*> result;
    for (const auto& window : windows_) {
        if (window->exists()) result.push_back(window.get());
    }
    return result;
}

void SimulatedDesktop::raise(simulated::Window& window) {
    const auto found =
        std::ranges::find(windows_, &window, [](const auto& entry) { return entry.get(); });
    if (found != windows_.end()) std::rotate(windows_.begin(), found, found + 1);
}

simulated::Element* SimulatedDesktop::find(std::string_view id) {
    for (const auto& application : applications_) {
        if (simulated::Element* found = findBelow(*application, id)) return found;
    }
    for (simulated::Window* window : windows()) {
        if (simulated::Element* found = findBelow(*window, id)) return found;
    }
    return nullptr;
}

std::optional<std::string> SimulatedDesktop::pasteboardText() const {
    const auto found = pasteboard.find(kPasteboardTypeString);
    if (found == pasteboard.end()) return {};
    return found->second;
}

SimulatedDesktop::BundleFile& SimulatedDesktop::BundleFile::identifier(std::string text) {
    bundle.bundleIdentifier = std::move(text);
    return *this;
}

SimulatedDesktop::BundleFile& SimulatedDesktop::BundleFile::displayName(std::string text) {
    return information("CFBundleDisplayName", std::move(text));
}

SimulatedDesktop::BundleFile& SimulatedDesktop::BundleFile::name(std::string text) {
    return information("CFBundleName", std::move(text));
}

SimulatedDesktop::BundleFile& SimulatedDesktop::BundleFile::information(std::string key,
                                                                        Value value) {
    bundle.infoDictionary.insert_or_assign(std::move(key), std::move(value));
    return *this;
}

SimulatedDesktop::BundleFile& SimulatedDesktop::BundleFile::whenLaunched(Change change) {
    launch = std::move(change);
    return *this;
}

SimulatedDesktop::BundleFile& SimulatedDesktop::bundle(std::string path) {
    bundles_.push_back({.path = std::move(path), .bundle = {}, .isBundle = true, .launch = {}});
    return bundles_.back();
}

void SimulatedDesktop::pass(DesktopClock::Nanoseconds time) {
    const auto start = clock_.passed();
    const auto end = start + std::min(time, DesktopClock::Nanoseconds::max() - start);
    for (;;) {
        const auto next = std::min(end, nextChange().value_or(end));
        clock_.pass(std::max(next - clock_.passed(), DesktopClock::Nanoseconds::zero()));
        const auto guard = lock();
        makeDueChanges();
        if (next >= end) break;
    }
    settle();
}

bool SimulatedDesktop::passUntilChange(double seconds) {
    const auto limit = simulated::DesktopClock::nanoseconds(seconds);
    const auto next = nextChange();
    const auto left = next ? *next - clock_.passed() : limit;
    pass(std::clamp(left, simulated::DesktopClock::Nanoseconds::zero(), limit));
    return next && left < limit;
}

simulated::Rule& SimulatedDesktop::on(std::string_view call) {
    if (std::ranges::find(simulated::callNames(), call) == simulated::callNames().end()) {
        throw std::invalid_argument("no call of the platform: " + std::string(call));
    }
    return rules_.emplace_back(call);
}

void SimulatedDesktop::at(double seconds, Change change) {
    const auto time = DesktopClock::nanoseconds(seconds);
    const auto position = std::ranges::upper_bound(timedChanges_, time, {}, &TimedChange::time);
    timedChanges_.insert(position, {time, std::move(change)});
}

void SimulatedDesktop::onRequest(int n, Change change) {
    requestChanges_.emplace(n, std::move(change));
}

int SimulatedDesktop::callCount(std::string_view call) const {
    const auto guard = lock();
    const auto found = callCounts_.find(call);
    return found == callCounts_.end() ? 0 : found->second;
}

void SimulatedDesktop::observeLog(std::function<void(const simulated::LogEntry&)> observer) {
    const auto guard = lock();
    logObserver_ = std::move(observer);
}

void SimulatedDesktop::locked(const std::function<void()>& body) const {
    const auto guard = lock();
    body();
}

std::optional<simulated::Failure> SimulatedDesktop::enter(
    std::string_view call, std::initializer_list<std::string_view> subjects) {
    const auto guard = lock();
    ++callCounts_[std::string(call)];
    makeDueChanges();
    std::optional<simulated::Failure> failure;
    // Changes may add rules; those begin with the next call.
    const std::size_t count = rules_.size();
    for (std::size_t i = 0; i < count; ++i) {
        simulated::Rule& rule = rules_[i];
        if (!rule.applies(call, subjects)) continue;
        clock_.pass(DesktopClock::nanoseconds(rule.seconds()));
        makeDueChanges();
        if (rule.change()) rule.change()(*this);
        if (rule.failure()) failure = rule.failure();
    }
    return failure;
}

void SimulatedDesktop::record(decltype(simulated::LogEntry::what) what) {
    const auto guard = lock();
    if (logObserver_) logObserver_({clock_.now(), requests_, std::move(what)});
}

void SimulatedDesktop::requestArrives() {
    {
        const auto guard = lock();
        ++requests_;
        makeDueChanges();
        const auto [first, last] = requestChanges_.equal_range(requests_);
        for (auto entry = first; entry != last; ++entry) Change(entry->second)(*this);
    }
    settle();
}

void SimulatedDesktop::addWindow(std::shared_ptr<simulated::Window> window) {
    windows_.push_back(std::move(window));
}

void SimulatedDesktop::applicationEnded(simulated::Application& application) {
    const auto found = std::ranges::find(applications_, &application,
                                         [](const auto& entry) { return entry.get(); });
    if (found == applications_.end()) return;
    endedApplications_.push_back(*found);
    applications_.erase(found);
    if (frontmost_ == &application) frontmost_ = nullptr;
}

std::optional<DesktopClock::Nanoseconds> SimulatedDesktop::nextChange() const {
    const auto guard = lock();
    if (timedChanges_.empty()) return {};
    return timedChanges_.front().time;
}

void SimulatedDesktop::makeDueChanges() {
    while (!timedChanges_.empty() && timedChanges_.front().time <= clock_.passed()) {
        const Change change = std::move(timedChanges_.front().change);
        timedChanges_.erase(timedChanges_.begin());
        change(*this);
    }
}

}  // namespace quil
