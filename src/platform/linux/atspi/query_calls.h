#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/atspi/element_query.h"
#include "platform/linux/atspi/messages.h"

namespace quil::linux_platform {

/// Characters of a text that are asked for at a time: a message holds no more than 128 MiB.
inline constexpr std::int32_t kPieceOfText = 4'000'000;

/// Counts the replies that are still to come; calls `done` after the last.
class Countdown {
  public:
    explicit Countdown(std::function<void()> done) : done_(std::move(done)) {}
    void expect() { ++left_; }
    void received() {
        if (--left_ == 0) done_();
    }

  private:
    int left_ = 0;
    std::function<void()> done_;
};

/// The calls that a query of one element's facts makes. It lives until the last has its reply.
class QueryCalls : public std::enable_shared_from_this<QueryCalls> {
  protected:
    /// `done` is called when nothing is expected any more.
    QueryCalls(const QueryTarget& target, Facts& facts, std::function<void()> done)
        : program_(target.program),
          peer_(target.program.peer()),
          path_(target.path),
          maximumChildren_(target.maximumChildren),
          facts_(facts),
          countdown_(std::move(done)) {}
    ~QueryCalls() = default;

    /// Calls the element.
    template <typename... Values>
    void call(const char* interface, const char* member, ReplyHandler handler,
              const char* signature = "", Values... values) {
        send(peer_, path_, interface, member, std::move(handler), signature, values...);
    }

    /// Keeps what a reply holds, or why it holds nothing.
    template <typename Result, typename Field>
    void take(Fact fact, Reply reply, std::optional<Result> result, Field& field) {
        if (result) field = std::move(*result);
        facts_.received(fact, result ? 0 : reply.code != 0 ? reply.code : kAxFailure);
    }

    /// Asks with one call whose reply is the fact.
    template <typename Result, typename... Values>
    void askFor(Fact fact, const char* interface, const char* member,
                std::optional<Result> (*read)(sd_bus_message*), Result Facts::*field,
                const char* signature = "", Values... values) {
        call(
            interface, member,
            [this, fact, read, field](Reply reply) {
                take(fact, reply, reply.message ? read(reply.message) : std::nullopt,
                     facts_.*field);
            },
            signature, values...);
    }

    /// Calls another element, of this program or of one that is embedded in it.
    template <typename... Values>
    void ofElement(const Reference& element, const char* interface, const char* member,
                   ReplyHandler handler, const char* signature = "", Values... values) {
        const bool isOurs = element.busName == program_.busName();
        Peer& peer = isOurs ? peer_ : program_.onBus().bus().peer(element.busName);
        send(peer, element.path, interface, member, std::move(handler), signature, values...);
    }

    template <typename Result>
    static std::optional<Result> variant(Reply reply, const char* type,
                                         std::optional<Result> (*read)(sd_bus_message*)) {
        return reply.message ? readVariant(reply.message, type, read) : std::nullopt;
    }

    AtspiProgram& program_;
    Peer& peer_;
    const std::string& path_;
    const std::int64_t maximumChildren_;
    Facts& facts_;
    Countdown countdown_;

  private:
    template <typename... Values>
    void send(Peer& peer, const std::string& path, const char* interface, const char* member,
              ReplyHandler handler, const char* signature, Values... values) {
        countdown_.expect();
        peer.call(
            path.c_str(), interface, member,
            [self = shared_from_this(), handler = std::move(handler)](Reply reply) {
                handler(reply);
                self->countdown_.received();
            },
            signature, values...);
    }
};

}  // namespace quil::linux_platform
