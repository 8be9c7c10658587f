#include "screen/cached_displays.h"

#include <algorithm>

namespace quil {

std::int32_t CachedDisplays::getActiveDisplayList(std::uint32_t capacity, std::uint32_t* ids,
                                                  std::uint32_t* count) {
    const auto [entry, isNew] = activeLists_.try_emplace(capacity);
    ActiveList& list = entry->second;
    if (isNew) {
        list.ids.resize(capacity);
        list.result = displays_.getActiveDisplayList(
            capacity, capacity == 0 ? nullptr : list.ids.data(), &list.count);
    }
    *count = list.count;
    if (ids) std::copy_n(list.ids.begin(), std::min(capacity, list.count), ids);
    return list.result;
}

Rect CachedDisplays::displayBounds(std::uint32_t display) {
    const auto [entry, isNew] = bounds_.try_emplace(display);
    if (isNew) entry->second = displays_.displayBounds(display);
    return entry->second;
}

std::uint32_t CachedDisplays::mainDisplayId() {
    if (!mainDisplayId_) mainDisplayId_ = displays_.mainDisplayId();
    return *mainDisplayId_;
}

std::vector<Screen> CachedDisplays::screens() {
    if (!screens_) screens_ = displays_.screens();
    return *screens_;
}

}  // namespace quil
