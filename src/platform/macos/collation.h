#pragma once

#include "platform/collation.h"

namespace quil::macos {

/// NSString's comparison.
class MacCollation : public Collation {
  public:
    int localizedCaseInsensitiveCompare(std::string_view a, std::string_view b) override;
};

}  // namespace quil::macos
