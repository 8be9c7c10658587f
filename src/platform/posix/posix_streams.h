#pragma once

#include "platform/streams.h"

namespace quil {

/// A stream over a file descriptor, which stays the caller's.
class PosixInputStream : public InputStream {
  public:
    explicit PosixInputStream(int descriptor) : descriptor_(descriptor) {}
    std::size_t read(char* buffer, std::size_t capacity) override;

  private:
    int descriptor_;
};

/// A stream over a file descriptor, which stays the caller's. Once nobody can receive the bytes any
/// more they are lost silently. Every byte is handed to the system at once; a descriptor in
/// non-blocking mode is waited for.
class PosixOutputStream : public OutputStream {
  public:
    explicit PosixOutputStream(int descriptor) : descriptor_(descriptor) {}
    void write(std::string_view bytes) override;

  private:
    int descriptor_;
};

/// Keeps a write to a pipe that nobody reads from ending the process. Programs that this process
/// starts begin with the default again.
void surviveClosedPipes();

}  // namespace quil
