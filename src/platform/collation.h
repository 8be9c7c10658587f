#pragma once

#include <string_view>

namespace quil {

/// Orders text the way the user's language does.
class Collation {
  public:
    virtual ~Collation() = default;

    /// Compares ignoring case, under the current locale: negative when `a` comes first, positive
    /// when `b` does, 0 when neither does.
    virtual int localizedCaseInsensitiveCompare(std::string_view a, std::string_view b) = 0;
};

}  // namespace quil
