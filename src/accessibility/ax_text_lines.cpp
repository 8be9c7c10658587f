#include "accessibility/ax_text_lines.h"

#include "text/characters.h"

namespace quil {

void AxTextLines::append(const std::vector<std::string>& parts) {
    std::string line;
    for (const std::string& part : parts) {
        if (&part != &parts.front()) line += " | ";
        line += part;
    }
    const std::string_view kept = characterPrefix(line, remaining_);
    remaining_ -= characterCount(kept) + 1;
    if (!first_) text_ += '\n';
    first_ = false;
    text_ += kept;
}

std::string onOneLine(std::string_view text) {
    // "\r\n" is one character to a reader, but only its line feed is replaced.
    std::string line(text);
    for (char& c : line) {
        if (c == '\n') c = ' ';
    }
    return line;
}

}  // namespace quil
