#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "attributes/ax_attributes.h"
#include "json/json.h"

namespace quil {

/// The most elements of a tree that a walk records.
inline constexpr std::int64_t kAxMaximumNodes = 4000;
/// The most characters of its text lines, line feeds included.
inline constexpr std::int64_t kAxMaximumChars = 100000;
/// Levels of a tree that a walk descends: the root has depth 0, the last level 39.
inline constexpr int kAxMaximumDepth = 40;

/// One recorded element. Optional texts are clipped to AX_FIELD_LIMIT characters and never empty;
/// what the element does not say is absent.
struct AxNode {
    /// The element's position in the tree: "e0" for the root, "e0.3" for its fourth child.
    std::string token;
    /// "AXRole", else "AXUnknown".
    std::string role;
    /// "AXTitle".
    std::optional<std::string> name;
    std::optional<std::string> description;
    /// "AXValue" as `axValueString` reads it.
    std::optional<std::string> value;
    /// "AXIdentifier".
    std::optional<std::string> automationId;
    std::optional<bool> enabled;
    std::optional<AxBounds> bounds;
    std::vector<std::string> actions;
};

/// The record as the protocol writes it; absent members are left out.
Json axNodeJson(const AxNode& node);

/// One observation of an application's tree.
struct AxSnapshot {
    /// Changes whenever anything that was recorded changes.
    std::string revision;
    /// In visiting order: depth first, parents before children.
    std::vector<AxNode> nodes;
    /// Every recorded element under its token; keeps the elements alive.
    std::unordered_map<std::string, ElementRef> elements;
    /// Whether a limit kept at least one element out.
    bool truncated = false;
    /// One line per recorded element, joined by line feeds.
    std::string axText;
};

/// The most recent snapshot of the process; null until one is taken.
using LastAxSnapshot = std::shared_ptr<const AxSnapshot>;

/// The 64-bit FNV-1a hash of the text's bytes in lower-case hexadecimal without leading zeros.
std::string fnv1a(std::string_view text);

/// Observes the tree of the application with that process id, from its focused window (or from the
/// application element), and makes the observation the last one. Never null. Records at most
/// `maximumNodes` elements and `maximumChars` characters of text lines.
LastAxSnapshot axSnapshot(Accessibility& accessibility, LastAxSnapshot& lastAxSnapshot,
                          std::int32_t pid, std::int64_t maximumNodes = kAxMaximumNodes,
                          std::int64_t maximumChars = kAxMaximumChars);

}  // namespace quil
