#include "platform/linux/secure_input/focus_reports.h"

#include <algorithm>

#include "platform/accessibility.h"
#include "platform/linux/accessibility/application_lookup.h"
#include "platform/linux/accessibility/focused_window.h"
#include "platform/linux/atspi/messages.h"
#include "platform/linux/secure_input/focused_element.h"
#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kKeptReports = 64;
/// An element may be announced before it can be asked.
constexpr milliseconds kAskAgainAfter{50};
constexpr int kMaximumQuestions = 40;

constexpr const char* kEvents[] = {"object:state-changed:focused",
                                   "object:property-change:accessible-role"};

std::string signalRule(const char* member, const char* detail) {
    return std::string("type='signal',interface='org.a11y.atspi.Event.Object',member='") + member +
           "',arg0='" + detail + "'";
}

/// The element that a signal is about; nothing when it is no event, or says that something ended.
std::optional<Reference> subject(sd_bus_message* signal) {
    const char* detail = nullptr;
    std::int32_t isBeginning = 0;
    const char* sender = sd_bus_message_get_sender(signal);
    const char* path = sd_bus_message_get_path(signal);
    if (!sender || !path || sd_bus_message_read(signal, "si", &detail, &isBeginning) <= 0) {
        return {};
    }
    if (std::string_view(detail) == "focused" && isBeginning == 0) return {};
    return Reference{sender, path};
}

}  // namespace

std::unique_ptr<AtspiFocusReports> AtspiFocusReports::open(X11Display& display) {
    std::unique_ptr<AtspiFocusReports> reports(new AtspiFocusReports);
    if (!reports->bus_.connect()) return nullptr;
    reports->listen();
    reports->learnPrograms();
    reports->findFocus(display);
    return reports;
}

void AtspiFocusReports::listen() {
    Bus& bus = bus_.bus();
    bus.listen(signalRule("StateChanged", "focused"), [this](sd_bus_message* signal) {
        if (auto element = subject(signal)) add(std::move(*element), TapTime::clock::now());
    });
    bus.listen(signalRule("PropertyChange", "accessible-role"), [this](sd_bus_message* signal) {
        if (const auto element = subject(signal)) roleChanged(*element);
    });
    bus_.registerEvents(kEvents);
}

void AtspiFocusReports::findFocus(X11Display& display) {
    const auto connection = display.connection();
    const auto window = connection ? activeWindow(*connection) : std::nullopt;
    if (!window || !window->pid) return;
    const auto names = busNamesOf(bus_, *window->pid);
    const auto inFront = focusedWindow(bus_, display, *window->pid, names);
    auto element = inFront ? focusedElement(bus_, inFront->reference) : std::nullopt;
    // What the program has said itself meanwhile is newer.
    if (element && reports_.empty()) add(std::move(*element), TapTime());
    bus_.bus().waitForReplies();
}

void AtspiFocusReports::add(Reference element, TapTime arrival) {
    if (!reports_.empty() && reports_.back().element == element) return;
    learnProcess(element.busName);
    reports_.push_back({.element = std::move(element), .arrival = arrival});
    if (reports_.size() > kKeptReports) reports_.pop_front();
    ask(reports_.back());
}

void AtspiFocusReports::learnProcess(const std::string& name) {
    if (!processes_.try_emplace(name).second) return;
    bus_.askProcess(name, [this, name](auto pid) { processes_[name] = pid; });
}

void AtspiFocusReports::learnPrograms() {
    bus_.askPrograms([this](const std::vector<Reference>& programs) {
        for (const Reference& program : programs) learnProcess(program.busName);
    });
}

void AtspiFocusReports::ask(FocusReport& report) {
    report.askAgain.reset();
    ++report.timesAsked;
    const Reference element = report.element;
    bus_.bus()
        .peer(element.busName)
        .call(element.path.c_str(), atspi::kAccessible, "GetRole",
              [this, element](Reply reply) { roleReceived(element, reply); });
}

void AtspiFocusReports::roleReceived(const Reference& element, const Reply& reply) {
    const auto role = reply.message ? readUint32(reply.message) : std::optional<std::uint32_t>();
    for (FocusReport& report : reports_) {
        if (report.element != element) continue;
        if (role) {
            report.content = *role == static_cast<std::uint32_t>(AtspiRole::passwordText)
                                 ? FocusReport::Content::secret
                                 : FocusReport::Content::plain;
        } else if (report.content == FocusReport::Content::unknown) {
            if (report.timesAsked < kMaximumQuestions) {
                report.askAgain = TapTime::clock::now() + kAskAgainAfter;
            } else {
                report.content = FocusReport::Content::plain;
            }
        }
    }
}

void AtspiFocusReports::roleChanged(const Reference& element) {
    const bool isFocus = !reports_.empty() && reports_.back().element == element;
    if (isFocus) ask(reports_.back());
}

std::shared_ptr<const FocusReports::Round> AtspiFocusReports::askAgain(
    const std::set<std::int32_t>& pids) {
    auto round = std::make_shared<Round>(Round{.asked = TapTime::clock::now()});
    std::vector<Reference> elements;
    for (const std::int32_t pid : pids) {
        if (auto element = latestElement(pid)) elements.push_back(std::move(*element));
    }
    round->open = static_cast<int>(elements.size());
    if (elements.empty()) round->replied = round->asked;
    for (const Reference& element : elements) {
        Peer& program = bus_.bus().peer(element.busName);
        program.call(element.path.c_str(), atspi::kAccessible, "GetRole",
                     [this, &program, round, element](Reply reply) {
                         if (!reply.message && program.hangs()) round->failed = true;
                         if (--round->open == 0) round->replied = TapTime::clock::now();
                         roleReceived(element, reply);
                     });
    }
    return round;
}

/// Of a program that has said nothing yet: its root.
std::optional<Reference> AtspiFocusReports::latestElement(std::int32_t pid) const {
    const auto latest = std::find_if(reports_.rbegin(), reports_.rend(),
                                     [&](const auto& report) { return processOf(report) == pid; });
    if (latest != reports_.rend()) return latest->element;
    const auto program =
        std::ranges::find_if(processes_, [&](const auto& entry) { return entry.second == pid; });
    if (program == processes_.end()) return {};
    return Reference{program->first, atspi::kRootPath};
}

std::optional<TapTime> AtspiFocusReports::process() {
    bus_.bus().isAlive();
    std::optional<TapTime> next;
    const auto now = TapTime::clock::now();
    for (FocusReport& report : reports_) {
        if (report.askAgain && *report.askAgain <= now) ask(report);
        if (report.askAgain && (!next || *report.askAgain < *next)) next = report.askAgain;
    }
    return next;
}

std::optional<std::int32_t> AtspiFocusReports::processOf(const FocusReport& report) const {
    const auto known = processes_.find(report.element.busName);
    return known == processes_.end() ? std::nullopt : known->second;
}

}  // namespace quil::linux_platform
