#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quil {

/// The plain-text type of pasteboard contents (NSPasteboardTypeString).
inline constexpr std::string_view kPasteboardTypeString = "public.utf8-plain-text";

/// The general pasteboard (the clipboard).
class Pasteboard {
  public:
    virtual ~Pasteboard() = default;

    /// The contents in that type; nothing when there are none, or their owner does not respond
    /// within the backend's bound.
    virtual std::optional<std::string> stringForType(std::string_view type) = 0;
    /// Empties the pasteboard and takes ownership of it.
    virtual void clearContents() = 0;
    /// Adds contents to the pasteboard, which must have been cleared first. They stay available to
    /// other applications until someone else takes the pasteboard or this process ends. Returns
    /// whether they were accepted.
    virtual bool setString(std::string_view text, std::string_view type) = 0;
};

}  // namespace quil
