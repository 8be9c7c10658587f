#include "runtime/line_reader.h"

#include <utility>

namespace quil {
namespace {

constexpr std::size_t kReadSize = 64 * 1024;

}  // namespace

std::optional<std::string> LineReader::next() {
    for (;;) {
        const std::size_t end = buffer_.find('\n', searched_);
        if (end != std::string::npos) {
            std::string line = buffer_.substr(0, end);
            buffer_.erase(0, end + 1);
            searched_ = 0;
            if (line.ends_with('\r')) line.pop_back();
            return line;
        }
        searched_ = buffer_.size();
        if (ended_) {
            if (buffer_.empty()) return {};
            searched_ = 0;
            return std::exchange(buffer_, {});
        }
        const std::size_t size = buffer_.size();
        buffer_.resize(size + kReadSize);
        const std::size_t count = input_.read(buffer_.data() + size, kReadSize);
        buffer_.resize(size + count);
        ended_ = count == 0;
    }
}

}  // namespace quil
