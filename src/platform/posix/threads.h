#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/threads.h"

namespace quil {

/// Threads of the standard library, with names. Linux has no quality of service for threads; every
/// thread runs at the process's priority.
class PosixThreads : public Threads {
  public:
    PosixThreads() = default;
    ~PosixThreads() override;
    PosixThreads(const PosixThreads&) = delete;
    PosixThreads& operator=(const PosixThreads&) = delete;

    ThreadRef startThread(const std::string& name, QualityOfService qualityOfService,
                          std::function<void()> body) override;
    void runMainRunLoop() override;
    void stopMainRunLoop() override;

  private:
    struct Running {
        std::thread thread;
        std::shared_ptr<const bool> ended;  // guarded by the lock
    };
    void reapEnded();

    std::mutex lock_;
    std::condition_variable stopped_;
    bool stopRequested_ = false;
    std::vector<Running> threads_;
};

}  // namespace quil
