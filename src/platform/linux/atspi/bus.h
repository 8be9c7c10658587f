#pragma once

#include <poll.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "platform/accessibility.h"

namespace quil::linux_platform {

using BusClock = std::chrono::steady_clock;
using BusDeadline = BusClock::time_point;

/// How long a reply of an application or of a bus is waited for, and how long one of the session
/// bus. A peer that takes longer counts as unresponsive and is not waited for again until it sends
/// something.
inline constexpr std::chrono::milliseconds kReplyTimeout{1700};
inline constexpr std::chrono::milliseconds kSessionReplyTimeout{1000};

struct MessageDeleter {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, MessageDeleter>;

/// The reply to a call: a message to read from, or the reason why there is none.
struct Reply {
    /// 0, or the code of accessibility.h that stands for the error.
    std::int32_t code = 0;
    /// Belongs to the bus; null when the code is not 0.
    sd_bus_message* message = nullptr;
};
using ReplyHandler = std::function<void(Reply)>;
using SignalHandler = std::function<void(sd_bus_message*)>;

class Bus;

/// A program to call on a bus: the owner of a name, or the other end of a socket.
class Peer {
  public:
    Peer(Bus& bus, std::string name) : bus_(bus), name_(std::move(name)) {}

    Bus& bus() const { return bus_; }
    /// The name on the bus; empty on a socket between two.
    const std::string& name() const { return name_; }
    /// Whether it stopped replying; calls then fail at once.
    bool hangs() const { return hangs_; }
    /// Treats it as hanging, as it is too far behind with its replies, until it has caught up.
    void abandon();

    /// Sends a call; the handler gets the reply during a wait on the bus. The signature and
    /// the values after it are those of sd_bus_message_append.
    template <typename... Values>
    void call(const char* path, const char* interface, const char* member, ReplyHandler handler,
              const char* signature = "", Values... values) {
        sd_bus_message* message = create(path, interface, member);
        if (message && sd_bus_message_append(message, signature, values...) >= 0) {
            send(Message(message), std::move(handler));
        } else {
            sd_bus_message_unref(message);
            handler({kAxCannotComplete, nullptr});
        }
    }

  private:
    friend class Bus;

    sd_bus_message* create(const char* path, const char* interface, const char* member);
    void send(Message message, ReplyHandler handler);

    Bus& bus_;
    const std::string name_;
    bool hangs_ = false;
    bool isProbed_ = false;
    std::size_t waiting_ = 0;
    /// When it last replied, or was asked after it had replied to everything.
    BusDeadline lastHeard_;
};

/// A connection to a message bus, or to one other program. Calls are sent without waiting;
/// `waitForReplies` then handles the replies as they come, so that many are under way at a time.
class Bus {
  public:
    enum class Kind { session, bus, socket };

    /// Begins to connect: to the session bus, to the bus at that address, or to the program that
    /// listens there. Null when there is none.
    static std::unique_ptr<Bus> open(Kind kind, const std::string& address = {});
    ~Bus();
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    /// Whether the connection stands and can be used. Waits for the other end's greeting, the first
    /// time only: after that, one that has not replied costs nothing more.
    bool isReady();
    /// Processes what has arrived. False once the connection is lost; it then never works again.
    bool isAlive();
    /// The peer of that name, the same one for as long as the bus lives.
    Peer& peer(const std::string& name);
    /// The other end of a socket between two, or of a message bus: the bus itself.
    Peer& otherEnd();

    /// Handles every signal that fits the match rule, within calls of `isAlive` and
    /// `waitForReplies`.
    void listen(const std::string& rule, SignalHandler handler);
    /// What to poll for: then there is something for `isAlive` to process.
    pollfd waiting() const;

    /// Handles replies until every call on these buses has its reply; the handlers may make further
    /// calls. Calls to a peer that hangs fail, and so do all that are
    /// without a reply at the deadline.
    static void waitForReplies(const std::vector<Bus*>& buses,
                               BusDeadline deadline = BusDeadline::max());
    void waitForReplies() { waitForReplies({this}); }

  private:
    friend class Peer;
    struct Pending;

    Bus(sd_bus* bus, Kind kind);
    static int handleReply(sd_bus_message* message, void* userdata, sd_bus_error*);
    static int handleSignal(sd_bus_message* message, void* userdata, sd_bus_error*);
    static void poll(const std::vector<Bus*>& buses, BusDeadline deadline);
    Pending& addPending(Peer& peer);
    bool process();
    bool isAwaited() const;
    /// Abandons peers whose replies are overdue; the time of the next check.
    BusDeadline abandonUnresponsive();
    /// Fails the calls to that peer, or to all: there will be no reply.
    void failCalls(const Peer* peer);
    /// Fails all calls; what the replies say when they come does not matter.
    void abandonCalls();
    void probe(Peer& peer);

    sd_bus* bus_;
    const Kind kind_;
    const std::chrono::milliseconds replyTimeout_;
    bool hasGreeted_ = false;
    bool isLost_ = false;
    std::list<Pending> pending_;
    std::list<Peer> peers_;
    std::list<SignalHandler> signalHandlers_;
};

}  // namespace quil::linux_platform
