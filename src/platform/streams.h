#pragma once

#include <cstddef>
#include <string_view>

namespace quil {

/// Where requests come from.
class InputStream {
  public:
    virtual ~InputStream() = default;

    /// Waits for input and reads up to `capacity` bytes. Returns 0 at the end of the input, which
    /// an unreadable stream also counts as.
    virtual std::size_t read(char* buffer, std::size_t capacity) = 0;
};

/// Where responses go.
class OutputStream {
  public:
    virtual ~OutputStream() = default;

    /// Writes all bytes, unbuffered, waiting for a slow reader. Bytes that cannot be received any
    /// more are lost without a report.
    virtual void write(std::string_view bytes) = 0;
};

}  // namespace quil
