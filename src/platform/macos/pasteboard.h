#pragma once

#include "platform/pasteboard.h"

namespace quil::macos {

/// The general NSPasteboard.
class MacPasteboard : public Pasteboard {
  public:
    std::optional<std::string> stringForType(std::string_view type) override;
    void clearContents() override;
    bool setString(std::string_view text, std::string_view type) override;
};

}  // namespace quil::macos
