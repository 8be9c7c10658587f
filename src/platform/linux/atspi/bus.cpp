#include "platform/linux/atspi/bus.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quil::linux_platform {
namespace {

struct ErrorName {
    std::string_view name;
    std::int32_t code;
};

/// What is not listed is a plain failure.
constexpr ErrorName kErrorNames[] = {
    {SD_BUS_ERROR_UNKNOWN_OBJECT, kAxInvalidUIElement},
    {SD_BUS_ERROR_UNKNOWN_METHOD, kAxAttributeUnsupported},
    {SD_BUS_ERROR_UNKNOWN_INTERFACE, kAxAttributeUnsupported},
    {SD_BUS_ERROR_UNKNOWN_PROPERTY, kAxAttributeUnsupported},
    {SD_BUS_ERROR_NOT_SUPPORTED, kAxAttributeUnsupported},
    {SD_BUS_ERROR_INVALID_ARGS, kAxIllegalArgument},
    {SD_BUS_ERROR_SERVICE_UNKNOWN, kAxCannotComplete},
    {SD_BUS_ERROR_NAME_HAS_NO_OWNER, kAxCannotComplete},
    {SD_BUS_ERROR_NO_REPLY, kAxCannotComplete},
    {SD_BUS_ERROR_TIMEOUT, kAxCannotComplete},
    {SD_BUS_ERROR_DISCONNECTED, kAxCannotComplete},
};

std::int32_t codeFor(const sd_bus_error& error) {
    const auto known =
        std::find_if(std::begin(kErrorNames), std::end(kErrorNames),
                     [&](const ErrorName& entry) { return entry.name == error.name; });
    return known == std::end(kErrorNames) ? kAxFailure : known->code;
}

/// The library's own limits are longer than any wait of ours.
constexpr std::uint64_t kNoTimeout = UINT64_MAX;
/// Messages that are taken from one connection before the next one's turn.
constexpr int kMessagesPerRound = 64;

}  // namespace

struct Bus::Pending {
    Bus* bus = nullptr;
    Peer* peer = nullptr;
    /// Empty when the reply is not waited for any more: it only shows that the peer is alive.
    ReplyHandler handler;
    /// Asks a peer that hangs whether it is back; the reply is not waited for.
    bool isProbe = false;
    sd_bus_slot* slot = nullptr;
    std::list<Pending>::iterator self;

    Pending() = default;
    Pending(const Pending&) = delete;
    Pending& operator=(const Pending&) = delete;
    ~Pending() { sd_bus_slot_unref(slot); }
};

sd_bus_message* Peer::create(const char* path, const char* interface, const char* member) {
    sd_bus_message* message = nullptr;
    const char* destination = name_.empty() ? nullptr : name_.c_str();
    const int created =
        sd_bus_message_new_method_call(bus_.bus_, &message, destination, path, interface, member);
    return created < 0 ? nullptr : message;
}

void Peer::send(Message message, ReplyHandler handler) {
    if (hangs_ || bus_.isLost_) return handler({kAxCannotComplete, nullptr});
    Bus::Pending& pending = bus_.addPending(*this);
    pending.handler = std::move(handler);
    if (sd_bus_call_async(bus_.bus_, &pending.slot, message.get(), Bus::handleReply, &pending,
                          kNoTimeout) < 0) {
        const ReplyHandler failed = std::move(pending.handler);
        bus_.pending_.pop_back();
        return failed({kAxCannotComplete, nullptr});
    }
    if (waiting_++ == 0) lastHeard_ = BusClock::now();
}

void Peer::abandon() {
    hangs_ = true;
    bus_.probe(*this);
    bus_.failCalls(this);
}

std::unique_ptr<Bus> Bus::open(Kind kind, const std::string& address) {
    sd_bus* opened = nullptr;
    int code = kind == Kind::session ? sd_bus_open_user(&opened) : sd_bus_new(&opened);
    if (code >= 0 && kind != Kind::session) {
        code = sd_bus_set_address(opened, address.c_str());
        if (code >= 0) code = sd_bus_set_bus_client(opened, kind == Kind::bus);
        if (code >= 0) code = sd_bus_start(opened);
    }
    if (code >= 0) return std::unique_ptr<Bus>(new Bus(opened, kind));
    sd_bus_close_unref(opened);
    return nullptr;
}

Bus::Bus(sd_bus* bus, Kind kind)
    : bus_(bus),
      kind_(kind),
      replyTimeout_(kind == Kind::session ? kSessionReplyTimeout : kReplyTimeout) {}

Bus::~Bus() {
    pending_.clear();
    sd_bus_close_unref(bus_);
}

bool Bus::isReady() {
    const auto deadline = BusClock::now() + replyTimeout_;
    while (isAlive() && sd_bus_is_ready(bus_) == 0) {
        if (hasGreeted_ || BusClock::now() >= deadline) break;
        poll({this}, deadline);
    }
    hasGreeted_ = true;
    return !isLost_ && sd_bus_is_ready(bus_) > 0;
}

bool Bus::isAlive() {
    while (process()) {
    }
    return !isLost_;
}

Peer& Bus::otherEnd() {
    return peer(kind_ == Kind::socket ? "" : "org.freedesktop.DBus");
}

Peer& Bus::peer(const std::string& name) {
    const auto known = std::find_if(peers_.begin(), peers_.end(),
                                    [&](const Peer& peer) { return peer.name() == name; });
    return known == peers_.end() ? peers_.emplace_back(*this, name) : *known;
}

Bus::Pending& Bus::addPending(Peer& peer) {
    Pending& pending = pending_.emplace_back();
    pending.bus = this;
    pending.peer = &peer;
    pending.self = std::prev(pending_.end());
    return pending;
}

int Bus::handleReply(sd_bus_message* message, void* userdata, sd_bus_error*) {
    Pending& pending = *static_cast<Pending*>(userdata);
    Bus& bus = *pending.bus;
    Peer& peer = *pending.peer;
    const ReplyHandler handler = std::move(pending.handler);
    const bool isProbe = pending.isProbe;
    bus.pending_.erase(pending.self);
    peer.lastHeard_ = BusClock::now();
    if (isProbe) {
        peer.hangs_ = false;
        peer.isProbed_ = false;
        return 0;
    }
    if (!handler) return 0;
    --peer.waiting_;
    const sd_bus_error* error = sd_bus_message_get_error(message);
    handler(error ? Reply{codeFor(*error), nullptr} : Reply{0, message});
    return 0;
}

void Bus::listen(const std::string& rule, SignalHandler handler) {
    signalHandlers_.push_back(std::move(handler));
    // Lives as long as the connection.
    sd_bus_add_match_async(bus_, nullptr, rule.c_str(), handleSignal, nullptr,
                           &signalHandlers_.back());
}

int Bus::handleSignal(sd_bus_message* message, void* userdata, sd_bus_error*) {
    (*static_cast<SignalHandler*>(userdata))(message);
    return 0;
}

pollfd Bus::waiting() const {
    const int events = isLost_ ? -1 : sd_bus_get_events(bus_);
    if (events < 0) return {-1, 0, 0};
    return {sd_bus_get_fd(bus_), static_cast<short>(events), 0};
}

bool Bus::process() {
    // Within a reply the bus processes that one.
    if (isLost_ || sd_bus_get_current_message(bus_)) return false;
    const int processed = sd_bus_process(bus_, nullptr);
    if (processed < 0 || sd_bus_is_open(bus_) <= 0) {
        isLost_ = true;
        failCalls(nullptr);
    }
    return processed > 0;
}

bool Bus::isAwaited() const {
    return std::any_of(peers_.begin(), peers_.end(),
                       [](const Peer& peer) { return peer.waiting_ > 0; });
}

void Bus::poll(const std::vector<Bus*>& buses, BusDeadline deadline) {
    using std::chrono::milliseconds;
    std::vector<pollfd> sockets;
    sockets.reserve(buses.size());
    for (const Bus* bus : buses) sockets.push_back(bus->waiting());
    const auto left = std::chrono::ceil<milliseconds>(deadline - BusClock::now());
    const auto bounded = std::clamp(left, milliseconds::zero(), milliseconds(kReplyTimeout));
    ::poll(sockets.data(), sockets.size(), static_cast<int>(bounded.count()));
}

BusDeadline Bus::abandonUnresponsive() {
    const auto now = BusClock::now();
    auto next = BusDeadline::max();
    for (Peer& peer : peers_) {
        if (peer.waiting_ == 0) continue;
        const auto limit = peer.lastHeard_ + replyTimeout_;
        if (limit > now) {
            next = std::min(next, limit);
            continue;
        }
        peer.abandon();
    }
    return next;
}

void Bus::failCalls(const Peer* peer) {
    // The handlers may make calls, which fail at once.
    std::list<Pending> failed;
    for (auto entry = pending_.begin(); entry != pending_.end();) {
        const auto current = entry++;
        const bool concernsPeer = !peer || current->peer == peer;
        if (concernsPeer && !current->isProbe) failed.splice(failed.end(), pending_, current);
    }
    for (Pending& entry : failed) {
        if (!entry.handler) continue;
        --entry.peer->waiting_;
        entry.handler({kAxCannotComplete, nullptr});
    }
}

void Bus::abandonCalls() {
    std::vector<ReplyHandler> abandoned;
    for (Pending& entry : pending_) {
        if (!entry.handler) continue;
        --entry.peer->waiting_;
        abandoned.push_back(std::exchange(entry.handler, nullptr));
    }
    for (const ReplyHandler& handler : abandoned) handler({kAxCannotComplete, nullptr});
}

void Bus::probe(Peer& peer) {
    if (peer.isProbed_) return;
    const Message message(peer.create("/", "org.freedesktop.DBus.Peer", "Ping"));
    Pending& pending = addPending(peer);
    pending.isProbe = true;
    peer.isProbed_ = message && sd_bus_call_async(bus_, &pending.slot, message.get(), handleReply,
                                                  &pending, kNoTimeout) >= 0;
    if (!peer.isProbed_) pending_.pop_back();
}

void Bus::waitForReplies(const std::vector<Bus*>& buses, BusDeadline deadline) {
    while (std::any_of(buses.begin(), buses.end(), [](Bus* bus) { return bus->isAwaited(); })) {
        if (BusClock::now() >= deadline) {
            for (Bus* bus : buses) bus->abandonCalls();
            continue;
        }
        bool isProgress = false;
        for (Bus* bus : buses) {
            // Not until nothing is left: others have replied, too.
            for (int i = 0; i < kMessagesPerRound && bus->process(); ++i) isProgress = true;
        }
        if (isProgress) continue;
        auto next = BusDeadline::max();
        for (Bus* bus : buses) next = std::min(next, bus->abandonUnresponsive());
        if (next != BusDeadline::max()) poll(buses, std::min(next, deadline));
    }
}

}  // namespace quil::linux_platform
