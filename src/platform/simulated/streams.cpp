#include "platform/simulated/streams.h"

#include <algorithm>

namespace quil::simulated {
namespace {

std::vector<std::string> cutIntoLines(std::string_view text) {
    std::vector<std::string> lines;
    for (std::size_t end; (end = text.find('\n')) != text.npos; text.remove_prefix(end + 1)) {
        lines.emplace_back(text.substr(0, end));
    }
    if (!text.empty()) lines.emplace_back(text);
    return lines;
}

}  // namespace

void MemoryInput::line(std::string_view text) {
    bytes(std::string(text) + '\n');
}

void MemoryInput::bytes(std::string_view text) {
    const std::lock_guard lock(mutex_);
    pending_ += text;
}

std::size_t MemoryInput::read(char* buffer, std::size_t capacity) {
    const std::lock_guard lock(mutex_);
    const std::size_t count = std::min(capacity, pending_.size());
    pending_.copy(buffer, count);
    pending_.erase(0, count);
    return count;
}

void MemoryOutput::write(std::string_view bytes) {
    const std::lock_guard lock(mutex_);
    text_ += bytes;
}

std::string MemoryOutput::text() const {
    const std::lock_guard lock(mutex_);
    return text_;
}

std::vector<std::string> MemoryOutput::lines() const {
    return cutIntoLines(text());
}

std::size_t RequestInput::read(char* buffer, std::size_t capacity) {
    if (start_ == pending_.size()) {
        pending_.resize(capacity);
        pending_.resize(source_.read(pending_.data(), capacity));
        start_ = 0;
        if (pending_.empty()) return 0;
    }
    if (!inLine_) lineArrives_();
    const std::size_t lineFeed = pending_.find('\n', start_);
    const std::size_t end = lineFeed == pending_.npos ? pending_.size() : lineFeed + 1;
    const std::size_t count = std::min(capacity, end - start_);
    inLine_ = start_ + count < end || lineFeed == pending_.npos;
    pending_.copy(buffer, count, start_);
    start_ += count;
    return count;
}

}  // namespace quil::simulated
