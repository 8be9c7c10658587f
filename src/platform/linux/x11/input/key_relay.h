#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace quil::linux_platform {

/// IBus and its engines; none when it does not run.
std::vector<std::int32_t> ibusProcesses();

/// A program that sends its keys to other processes before its widgets get them, and goes on with
/// other events meanwhile: by a module for an input method (IBus, Fcitx), or, as Qt does while it
/// is on the accessibility bus, to those who listen to keys there. So a ping is replied to, and a
/// click processed, before the keys that came first.
class KeyRelay {
  public:
    /// Nothing when the widgets of this process get their keys at once.
    static std::optional<KeyRelay> find(std::int32_t pid);

    /// Whether keys get into the wrong order that come before those before have been processed, as
    /// in GTK 4's module for IBus.
    bool mixesKeysUp() const { return mixesKeysUp_; }

    /// Waits until none of the processes has anything to do, as there is no notice of when a key
    /// has been processed. For a program that always has, 1 s at the first time and then 20 ms.
    void waitUntilIdle();

  private:
    KeyRelay(std::vector<std::int32_t> processes, bool mixesKeysUp)
        : processes_(std::move(processes)), mixesKeysUp_(mixesKeysUp) {}
    std::vector<std::uint64_t> cpuTimesWhenIdle() const;

    /// The program and those that its keys go through.
    std::vector<std::int32_t> processes_;
    bool mixesKeysUp_;
    std::chrono::milliseconds timeout_{1000};
};

}  // namespace quil::linux_platform
