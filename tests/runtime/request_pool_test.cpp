#include <gtest/gtest.h>

#include "platform/posix/threads.h"
#include "platform/simulated/platform.h"
#include "runtime/process.h"

namespace quil {
namespace {

/// Notes what has been answered whenever a pool ends.
class PoolThreads : public PosixThreads {
  public:
    explicit PoolThreads(simulated::MemoryOutput& output) : output_(output) {}

    void autoreleasePool(const std::function<void()>& body) override {
        body();
        answeredByEachPool.push_back(output_.lines().size());
    }

    std::vector<std::size_t> answeredByEachPool;

  private:
    simulated::MemoryOutput& output_;
};

class PoolPlatform : public SimulatedPlatform {
  public:
    using SimulatedPlatform::SimulatedPlatform;
    Threads& threads() override { return pools; }
    PoolThreads pools{output};
};

TEST(RequestLoop, EveryRequestHasAnAutoreleasePoolOfItsOwn) {
    SimulatedDesktop desktop;
    PoolPlatform platform(desktop);
    platform.input.line(R"({"id": 1, "method": "ping"})");
    platform.input.line("no request");
    platform.input.line(R"({"id": 2, "method": "desktop_target"})");
    EXPECT_EQ(runProcess(platform), 0);
    EXPECT_EQ(platform.pools.answeredByEachPool, (std::vector<std::size_t>{1, 1, 2}));
}

}  // namespace
}  // namespace quil
