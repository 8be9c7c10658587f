#include "platform/macos/completion_result.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace quil::macos {
namespace {

using namespace std::chrono_literals;

TEST(CompletionResult, WaitsForTheHandlerButNotForEver) {
    const auto prompt = std::make_shared<CompletionResult<int>>();
    std::thread handler([prompt] { prompt->deliver(7); });
    EXPECT_EQ(prompt->await(60s), 7);
    handler.join();

    // A handler that comes after the call has given up finds where to leave its result.
    const auto late = std::make_shared<CompletionResult<std::shared_ptr<int>>>();
    EXPECT_EQ(late->await(1ms), nullptr);
    const auto result = std::make_shared<int>(7);
    std::weak_ptr<CompletionResult<std::shared_ptr<int>>> box = late;
    std::thread straggler([box = late, result] { box->deliver(result); });
    straggler.join();
    EXPECT_EQ(result.use_count(), 2);
}

}  // namespace
}  // namespace quil::macos
