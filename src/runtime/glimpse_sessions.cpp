#include "runtime/glimpse_sessions.h"

#include <algorithm>
#include <utility>

namespace quil {

void GlimpseSessions::start(const std::string& requestId, CaptureTarget target) {
    entries_.insert_or_assign(requestId, Entry{{std::move(target), 0}, ++startCount_});
    if (entries_.size() <= kMaximumSessions) return;
    entries_.erase(std::min_element(
        entries_.begin(), entries_.end(),
        [](const auto& a, const auto& b) { return a.second.startNumber < b.second.startNumber; }));
}

const GlimpseSession* GlimpseSessions::find(const std::string& requestId) const {
    const auto entry = entries_.find(requestId);
    return entry == entries_.end() ? nullptr : &entry->second.session;
}

void GlimpseSessions::advance(const std::string& requestId) {
    const auto entry = entries_.find(requestId);
    if (entry != entries_.end()) ++entry->second.session.step;
}

void GlimpseSessions::cancel(const std::string& requestId) {
    entries_.erase(requestId);
}

}  // namespace quil
