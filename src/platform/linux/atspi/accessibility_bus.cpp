#include "platform/linux/atspi/accessibility_bus.h"

#include <algorithm>
#include <list>
#include <utility>

#include "platform/linux/atspi/messages.h"

namespace quil::linux_platform {
namespace {

/// Toolkits look whether any client listens to any event. Nothing ever sends this one.
constexpr const char* kEvent = "object:quil-observes";

/// What Java's bridge calls itself.
constexpr const char* kSwing = "J2SE-access-bridge";

}  // namespace

Peer& AtspiProgram::peer() const {
    return socket_ && socket_->isAlive() ? socket_->otherEnd() : onBus_;
}

std::optional<std::string> AccessibilityBus::address() {
    if (session_ && !session_->isAlive()) session_ = nullptr;
    if (!session_) {
        session_ = Bus::open(Bus::Kind::session);
        if (!session_) return {};
    }
    if (!session_->isReady()) return {};
    std::optional<std::string> address;
    session_->peer("org.a11y.Bus")
        .call("/org/a11y/bus", "org.a11y.Bus", "GetAddress", [&](Reply reply) {
            if (reply.message) address = readString(reply.message);
        });
    session_->waitForReplies();
    return address && !address->empty() ? address : std::nullopt;
}

bool AccessibilityBus::replies() {
    const auto named = address();
    if (!named) return false;
    // Another bus may have replaced ours, which still runs for those that are on it.
    if (bus_ && *named != connectedTo_) drop();
    // Toolkits need time to show their trees: they hear of us as early as can be.
    connect();
    return true;
}

bool AccessibilityBus::connect() {
    if (!bus_ || !bus_->isAlive()) {
        drop();
        const auto named = address();
        if (named) bus_ = Bus::open(Bus::Kind::bus, *named);
        if (!bus_) return false;
        connectedTo_ = *named;
        connectedSince_ = BusClock::now();
    }
    if (!bus_->isReady()) return false;
    if (!isAnnounced_) announce();
    return true;
}

void AccessibilityBus::drop() {
    programs_.clear();
    processIds_.clear();
    bus_ = nullptr;
    isAnnounced_ = false;
    ++generation_;
}

void AccessibilityBus::announce() {
    isAnnounced_ = true;
    const ReplyHandler ignore = [](Reply) {};
    std::vector<Bus*> buses{bus_.get()};
    if (session_ && session_->isReady()) {
        buses.push_back(session_.get());
        session_->peer("org.a11y.Bus")
            .call("/org/a11y/bus", atspi::kProperties, "Set", ignore, "ssv", "org.a11y.Status",
                  "IsEnabled", "b", 1);
    }
    bus_->peer(atspi::kRegistry)
        .call("/org/a11y/atspi/registry", atspi::kRegistry, "RegisterEvent", ignore, "s", kEvent);
    Bus::waitForReplies(buses);
}

AtspiProgram& AccessibilityBus::program(const std::string& busName) {
    const auto known = programs_.find(busName);
    if (known != programs_.end()) return known->second;
    return programs_.try_emplace(busName, bus_->peer(busName)).first->second;
}

struct AccessibilityBus::Introduction {
    std::optional<std::string> toolkit, version, address;
};

AtspiProgram& AccessibilityBus::introducedProgram(const std::string& busName) {
    introduce({busName});
    return program(busName);
}

void AccessibilityBus::introduce(const std::vector<std::string>& busNames) {
    std::list<std::pair<AtspiProgram&, Introduction>> asked;
    for (const std::string& name : busNames) {
        AtspiProgram& program = this->program(name);
        if (program.isIntroduced_) continue;
        auto& [whom, said] = asked.emplace_back(program, Introduction());
        askAboutItself(whom, said);
    }
    if (asked.empty()) return;
    bus_->waitForReplies();
    for (const auto& [program, said] : asked) {
        if (!program.onBus_.hangs()) note(program, said);
    }
}

void AccessibilityBus::askAboutItself(AtspiProgram& program, Introduction& said) {
    const auto property = [&](const char* name, std::optional<std::string>& value) {
        program.onBus_.call(
            atspi::kRootPath, atspi::kProperties, "Get",
            [&value](Reply reply) {
                if (reply.message) value = readVariant(reply.message, "s", readString);
            },
            "ss", atspi::kApplication, name);
    };
    property("ToolkitName", said.toolkit);
    property("Version", said.version);
    program.onBus_.call(atspi::kRootPath, atspi::kApplication, "GetApplicationBusAddress",
                        [&said](Reply reply) {
                            if (reply.message) said.address = readString(reply.message);
                        });
}

void AccessibilityBus::note(AtspiProgram& program, const Introduction& said) {
    const auto& [toolkit, version, address] = said;
    program.isIntroduced_ = true;
    // The bridge for GTK 3 and for those who use it is the one that offers sockets.
    program.givesAllProperties_ = address.has_value();
    program.hasBoundedCache_ = toolkit == "gtk" && address.has_value();
    program.hasWindowCoordinates_ = toolkit == "GTK" && version && !version->starts_with("3.");
    program.isSwing_ = toolkit == kSwing;
    program.namesCombosByChoice_ = toolkit == "Qt";
    program.hasWholeScales_ = toolkit == "gtk" || toolkit == "GTK" || program.isSwing_;
    if (address && !address->empty()) program.socket_ = Bus::open(Bus::Kind::socket, *address);
    if (program.socket_ && !program.socket_->isReady()) program.socket_ = nullptr;
}

std::vector<AccessibilityBus::Registered> AccessibilityBus::registeredPrograms() {
    std::vector<Registered> registered;
    askPrograms([&](std::vector<Reference> programs) {
        for (Reference& program : programs) registered.push_back({std::move(program.busName), {}});
    });
    bus_->waitForReplies();
    for (Registered& program : registered) {
        const auto known = processIds_.find(program.busName);
        if (known != processIds_.end()) {
            program.pid = known->second;
            continue;
        }
        askProcess(program.busName, [&](std::optional<std::int32_t> pid) {
            program.pid = pid;
            if (pid) processIds_.emplace(program.busName, *pid);
        });
    }
    bus_->waitForReplies();
    forgetGonePrograms(registered);
    return registered;
}

void AccessibilityBus::askPrograms(std::function<void(std::vector<Reference>)> handler) {
    bus_->peer(atspi::kRegistry)
        .call(atspi::kRootPath, atspi::kAccessible, "GetChildren",
              [handler = std::move(handler)](Reply reply) {
                  if (!reply.message) return;
                  handler(readReferences(reply.message).value_or(std::vector<Reference>()));
              });
}

void AccessibilityBus::askProcess(const std::string& busName,
                                  std::function<void(std::optional<std::int32_t>)> handler) {
    bus_->otherEnd().call(
        "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetConnectionUnixProcessID",
        [handler = std::move(handler)](Reply reply) {
            const auto pid =
                reply.message ? readUint32(reply.message) : std::optional<std::uint32_t>();
            handler(pid ? std::optional(static_cast<std::int32_t>(*pid)) : std::nullopt);
        },
        "s", busName.c_str());
}

void AccessibilityBus::registerEvents(std::span<const char* const> events) {
    for (const char* event : events) {
        bus_->peer(atspi::kRegistry)
            .call(
                "/org/a11y/atspi/registry", atspi::kRegistry, "RegisterEvent", [](Reply) {}, "s",
                event);
    }
    bus_->waitForReplies();
}

std::optional<std::int32_t> AccessibilityBus::processId(const std::string& busName) const {
    const auto known = processIds_.find(busName);
    return known == processIds_.end() ? std::nullopt : std::optional(known->second);
}

void AccessibilityBus::forgetGonePrograms(const std::vector<Registered>& registered) {
    const auto isGone = [&](const auto& entry) {
        return std::none_of(registered.begin(), registered.end(), [&](const Registered& program) {
            return program.busName == entry.first;
        });
    };
    std::erase_if(programs_, isGone);
    std::erase_if(processIds_, isGone);
}

void AccessibilityBus::waitForReplies(BusDeadline deadline) {
    std::vector<Bus*> buses{bus_.get()};
    for (auto& [name, program] : programs_) {
        if (program.socket_) buses.push_back(program.socket_.get());
    }
    Bus::waitForReplies(buses, deadline);
}

}  // namespace quil::linux_platform
