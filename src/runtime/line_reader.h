#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/streams.h"

namespace quil {

/// Cuts an input stream into lines of any length.
class LineReader {
  public:
    /// `input` outlives the reader.
    explicit LineReader(InputStream& input);

    /// The next line without its terminator (a line feed, or a carriage return and a line feed);
    /// nothing at the end of the input. A last line without a terminator is still a line.
    std::optional<std::string> next();

  private:
    InputStream& input_;
    std::vector<char> chunk_;
    std::string buffer_;
    std::size_t start_ = 0;     // where the next line begins
    std::size_t searched_ = 0;  // up to where there is no line feed behind `start_`
    bool ended_ = false;
};

}  // namespace quil
