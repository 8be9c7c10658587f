#include "runtime/line_reader.h"

#include <utility>

namespace quil {
namespace {

constexpr std::size_t kReadSize = 65'536;
/// What a very long line has taken is given back when the line is done.
constexpr std::size_t kKeptCapacity = 1'048'576;

}  // namespace

LineReader::LineReader(InputStream& input) : input_(input), chunk_(kReadSize) {}

std::optional<std::string> LineReader::next() {
    for (;;) {
        const std::size_t end = buffer_.find('\n', searched_);
        if (end != std::string::npos) {
            std::string line = buffer_.substr(start_, end - start_);
            start_ = searched_ = end + 1;
            if (line.ends_with('\r')) line.pop_back();
            return line;
        }
        // Only what is left of the last read is moved, however many lines it held.
        buffer_.erase(0, start_);
        if (buffer_.empty() && buffer_.capacity() > kKeptCapacity) buffer_.shrink_to_fit();
        start_ = 0;
        searched_ = buffer_.size();
        if (ended_) {
            if (buffer_.empty()) return {};
            searched_ = 0;
            return std::exchange(buffer_, {});
        }
        const std::size_t count = input_.read(chunk_.data(), chunk_.size());
        buffer_.append(chunk_.data(), count);
        ended_ = count == 0;
    }
}

}  // namespace quil
