#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace quil::linux_platform {

/// IBus and its engines; none when it does not run.
std::vector<std::int32_t> ibusProcesses();

/// A program that gets its keys by way of IBus and GTK 4's module for it, which puts keys into the
/// wrong order that come before IBus has processed those before.
class Gtk4Ibus {
  public:
    /// Nothing when the process is no such program, or IBus does not run.
    static std::optional<Gtk4Ibus> find(std::int32_t pid);

    /// Waits until neither the program nor IBus has anything to do, as there is no notice of when
    /// IBus has processed a key. For a program that always has, 1 s at the first time and then 20
    /// ms.
    void waitUntilIdle();

  private:
    explicit Gtk4Ibus(std::vector<std::int32_t> processes) : processes_(std::move(processes)) {}
    std::vector<std::uint64_t> cpuTimesWhenIdle() const;

    /// The program, IBus and its engines.
    std::vector<std::int32_t> processes_;
    std::chrono::milliseconds timeout_{1000};
};

}  // namespace quil::linux_platform
