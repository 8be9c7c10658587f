#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quil {

/// Text lines of elements, held to a budget of characters. Each line also pays one character for
/// its line feed, so that the joined text is never longer than the budget.
class AxTextLines {
  public:
    explicit AxTextLines(std::int64_t maximumChars) : remaining_(maximumChars) {}

    /// Whether the budget allows no further line.
    bool isFull() const { return remaining_ < 1; }

    /// Adds the parts as one line, joined by " | " and cut to what remains of the budget.
    void append(const std::vector<std::string>& parts);

    /// The lines, joined by line feeds.
    const std::string& text() const { return text_; }

  private:
    std::int64_t remaining_;
    bool first_ = true;
    std::string text_;
};

/// The text with every line feed replaced by a space, so that it stays on its line.
std::string onOneLine(std::string_view text);

}  // namespace quil
