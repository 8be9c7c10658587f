#pragma once

#include <xcb/record.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/wake_event.h"

namespace quil::linux_platform {

/// The many replies that the X server sends to one request, EnableContext of the Record extension.
///
/// A thread takes them in as they come, whatever their reader is doing. For an X.Org server loses
/// some while a connection is full, and some 280 small replies fill one: what Record adds to the
/// connection's buffer when `FlushClient` (os/io.c) has begun to write is thrown away. Any thread
/// may call anything.
class RecordReplies {
  public:
    using Reply = XcbPointer<xcb_record_enable_context_reply_t>;

    /// Enables the context on a connection that is for nothing else from then on. Null when the
    /// system has no descriptor or thread left.
    static std::unique_ptr<RecordReplies> open(std::shared_ptr<X11Connection> connection,
                                               xcb_record_context_t context);
    ~RecordReplies();
    RecordReplies(const RecordReplies&) = delete;
    RecordReplies& operator=(const RecordReplies&) = delete;

    /// Readable while `next` has something, and once there will never be more.
    int descriptor() const { return arrived_.descriptor(); }
    /// False when there will never be more: the server has gone or has ended the recording.
    bool isAlive() const;
    /// The first reply that has not been handed out; null when there is none.
    Reply next();
    /// Takes in what the server has written until now.
    void receive();

  private:
    explicit RecordReplies(std::shared_ptr<X11Connection> connection)
        : connection_(std::move(connection)) {}
    void run();
    bool receiveOne();

    const std::shared_ptr<X11Connection> connection_;
    const WakeEvent arrived_;
    const WakeEvent end_;
    unsigned sequence_ = 0;
    mutable std::mutex lock_;
    std::deque<Reply> replies_;
    bool isAlive_ = true;
    std::thread thread_;
};

}  // namespace quil::linux_platform
