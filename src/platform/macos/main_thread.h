#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

#include "platform/macos/completion_result.h"

namespace quil::macos {

/// How long the main thread is waited for. It does nothing but run its run loop, except when the
/// process begins and ends.
inline constexpr std::chrono::milliseconds kMainThreadTimeout{500};

/// Has the main thread's run loop do the work in its next turn.
void performOnMainThread(std::function<void()> work);

/// What the question gives on the main thread, where parts of AppKit have to be asked; an empty
/// result when that does not get to it. Not to be called on the main thread itself.
template <typename T>
T askOnMainThread(std::function<T()> question) {
    const auto result = std::make_shared<CompletionResult<T>>();
    performOnMainThread([result, question = std::move(question)] { result->deliver(question()); });
    return result->await(kMainThreadTimeout);
}

}  // namespace quil::macos
