#pragma once

#include <functional>
#include <memory>
#include <string>

namespace quil {

/// How urgent a thread's work is, as far as the platform has such a notion.
enum class QualityOfService { standard, userInitiated };

/// A thread of the runtime. Releasing the handle neither stops nor awaits the thread.
class ThreadHandle {
  public:
    virtual ~ThreadHandle() = default;
};
using ThreadRef = std::shared_ptr<ThreadHandle>;

/// Starts threads, and runs the main one.
class Threads {
  public:
    /// Waits for every thread that was started.
    virtual ~Threads() = default;

    /// Starts a thread with that name (cut to what the platform keeps of it); null when the system
    /// has no more of them.
    virtual ThreadRef startThread(const std::string& name, QualityOfService qualityOfService,
                                  std::function<void()> body) = 0;

    /// Runs `body` on the calling thread and then lets go of the objects that platform calls have
    /// left for the thread to release at its next pause. A thread that works without end wraps
    /// each piece of its work in it, so that it does not grow.
    virtual void autoreleasePool(const std::function<void()>& body) { body(); }

    /// Runs the main thread's run loop. Returns once `stopMainRunLoop` has been called, also when
    /// that was before.
    virtual void runMainRunLoop() = 0;
    /// May be called from any thread.
    virtual void stopMainRunLoop() = 0;
};

}  // namespace quil
