#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "platform/streams.h"

namespace quil::simulated {

/// Standard input in memory. It ends after what it was given. May be fed from any thread.
class MemoryInput : public InputStream {
  public:
    /// Adds a line; its terminator is added too.
    void line(std::string_view text);
    /// Adds bytes as they are.
    void bytes(std::string_view text);

    std::size_t read(char* buffer, std::size_t capacity) override;

  private:
    std::mutex mutex_;
    std::string pending_;
};

/// Standard output in memory. May be read from any thread.
class MemoryOutput : public OutputStream {
  public:
    void write(std::string_view bytes) override;

    std::string text() const;
    /// The lines written so far, without their terminators.
    std::vector<std::string> lines() const;

  private:
    mutable std::mutex mutex_;
    std::string text_;
};

/// Hands standard input on one line at a time, and tells so before each.
class RequestInput : public InputStream {
  public:
    /// `source` outlives the stream.
    RequestInput(InputStream& source, std::function<void()> lineArrives)
        : source_(source), lineArrives_(std::move(lineArrives)) {}

    std::size_t read(char* buffer, std::size_t capacity) override;

  private:
    InputStream& source_;
    std::function<void()> lineArrives_;
    std::string pending_;
    std::size_t start_ = 0;  // of what has not been handed on
    bool inLine_ = false;    // some of the line has been handed on
};

}  // namespace quil::simulated
