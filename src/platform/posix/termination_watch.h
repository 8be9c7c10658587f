#pragma once

#include <functional>
#include <thread>

namespace quil {

/// Lets a process clean up when it is asked to end (SIGTERM, SIGINT, SIGHUP). There is one at a
/// time. A signal that is ignored when this begins stays so; programs that this process starts
/// begin with the default.
class TerminationWatch {
  public:
    /// `cleanUp` runs on a thread of its own while the other threads go on; then the signal ends
    /// the process as it would have without this. A second signal does so at once.
    explicit TerminationWatch(std::function<void()> cleanUp);
    ~TerminationWatch();
    TerminationWatch(const TerminationWatch&) = delete;
    TerminationWatch& operator=(const TerminationWatch&) = delete;

  private:
    int pipe_[2] = {-1, -1};
    std::thread thread_;
};

}  // namespace quil
