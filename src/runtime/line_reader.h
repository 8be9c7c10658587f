#pragma once

#include <optional>
#include <string>

#include "platform/streams.h"

namespace quil {

/// Cuts an input stream into lines of any length.
class LineReader {
  public:
    /// `input` outlives the reader.
    explicit LineReader(InputStream& input) : input_(input) {}

    /// The next line without its terminator (a line feed, or a carriage return and a line feed);
    /// nothing at the end of the input. A last line without a terminator is still a line.
    std::optional<std::string> next();

  private:
    InputStream& input_;
    std::string buffer_;
    std::size_t searched_ = 0;  // bytes of the buffer known to hold no line feed
    bool ended_ = false;
};

}  // namespace quil
