#include "platform/linux/x11/tap/record_replies.h"

#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <xcb/xcbext.h>

#include <system_error>
#include <utility>

namespace quil::linux_platform {
namespace {

/// What follows within this time is taken in at once: in a flood, waking up is what costs.
constexpr std::chrono::milliseconds kReplyGathering{1};

}  // namespace

std::unique_ptr<RecordReplies> RecordReplies::open(std::shared_ptr<X11Connection> connection,
                                                   xcb_record_context_t context) {
    std::unique_ptr<RecordReplies> replies(new RecordReplies(std::move(connection)));
    if (!replies->arrived_.isValid() || !replies->end_.isValid()) return nullptr;
    xcb_connection_t* const server = replies->connection_->get();
    replies->sequence_ = xcb_record_enable_context(server, context).sequence;
    xcb_flush(server);
    try {
        replies->thread_ = std::thread([&replies = *replies] { replies.run(); });
    } catch (const std::system_error&) {
        return nullptr;
    }
    return replies;
}

RecordReplies::~RecordReplies() {
    if (thread_.joinable()) {
        end_.set();
        thread_.join();
    }
}

void RecordReplies::run() {
    // The lowest of the real-time priorities, where the user may have one: on a busy machine, the
    // thread's turn could come too late. It never has much to do.
    const sched_param priority{.sched_priority = 1};
    pthread_setschedparam(pthread_self(), SCHED_RR, &priority);
    pollfd descriptors[] = {{xcb_get_file_descriptor(connection_->get()), POLLIN, 0},
                            {end_.descriptor(), POLLIN, 0}};
    for (;;) {
        // First what has arrived already, of which the connection's descriptor does not tell.
        receive();
        if (!isAlive()) return;
        poll(descriptors, 2, -1);
        if (end_.wait(kReplyGathering)) return;
    }
}

bool RecordReplies::isAlive() const {
    const std::lock_guard guard(lock_);
    return isAlive_;
}

RecordReplies::Reply RecordReplies::next() {
    const std::lock_guard guard(lock_);
    if (replies_.empty()) {
        if (isAlive_) arrived_.clear();
        return nullptr;
    }
    Reply reply = std::move(replies_.front());
    replies_.pop_front();
    return reply;
}

void RecordReplies::receive() {
    const std::lock_guard guard(lock_);
    const std::size_t before = replies_.size();
    while (isAlive_ && receiveOne()) {
    }
    if (replies_.size() > before || !isAlive_) arrived_.set();
}

/// Whether there was another reply. The request is over with an error, or when the
/// connection ends.
bool RecordReplies::receiveOne() {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    const bool isSettled = xcb_poll_for_reply(connection_->get(), sequence_, &reply, &error) != 0;
    std::free(error);
    if (reply) {
        replies_.emplace_back(static_cast<xcb_record_enable_context_reply_t*>(reply));
    } else if (isSettled || !connection_->isAlive()) {
        isAlive_ = false;
    }
    return reply != nullptr;
}

}  // namespace quil::linux_platform
