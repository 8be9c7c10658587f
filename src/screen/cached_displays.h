#pragma once

#include <map>
#include <optional>
#include <vector>

#include "platform/displays.h"

namespace quil {

/// The displays as they are when they are first asked for, for a request that needs them thousands
/// of times: each question goes to the platform once. Made for one request.
class CachedDisplays : public Displays {
  public:
    /// `displays` outlives this.
    explicit CachedDisplays(Displays& displays) : displays_(displays) {}

    std::int32_t getActiveDisplayList(std::uint32_t capacity, std::uint32_t* ids,
                                      std::uint32_t* count) override;
    Rect displayBounds(std::uint32_t display) override;
    std::uint32_t mainDisplayId() override;
    std::vector<Screen> screens() override;

  private:
    struct ActiveList {
        std::int32_t result = 0;
        std::uint32_t count = 0;
        std::vector<std::uint32_t> ids;
    };

    Displays& displays_;
    std::map<std::uint32_t, ActiveList> activeLists_;  // by capacity
    std::map<std::uint32_t, Rect> bounds_;
    std::optional<std::uint32_t> mainDisplayId_;
    std::optional<std::vector<Screen>> screens_;
};

}  // namespace quil
