#pragma once

#include "platform/streams.h"

namespace quil {

/// A stream over a file descriptor, standard input unless given, which stays the caller's.
class PosixInputStream : public InputStream {
  public:
    explicit PosixInputStream(int descriptor = 0) : descriptor_(descriptor) {}
    std::size_t read(char* buffer, std::size_t capacity) override;

  private:
    int descriptor_;
};

/// A stream over a file descriptor, standard output unless given, which stays the caller's. Once
/// the bytes cannot be received any more they are lost silently. Every byte is handed to the system
/// at once; a descriptor in non-blocking mode is waited for.
class PosixOutputStream : public OutputStream {
  public:
    explicit PosixOutputStream(int descriptor = 1) : descriptor_(descriptor) {}
    void write(std::string_view bytes) override;

  private:
    int descriptor_;
};

/// Makes this process safe whatever its host has done to the standard streams; to be called before
/// it opens anything. A stream that the host has closed becomes the null device, so that no other
/// connection of ours gets its number and receives our responses. A write to a pipe that no process
/// reads any more no longer ends the process; programs that this process starts begin with the
/// default again.
void secureStandardStreams();

}  // namespace quil
