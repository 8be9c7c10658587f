#include "accessibility/ax_elements.h"

#include <algorithm>

namespace quil {
namespace {

struct ActionRequest {
    Accessibility& accessibility;
    const ElementRef& element;
    const std::optional<std::string>& value;
    std::optional<std::int64_t> amount;
};

std::int32_t invoke(const ActionRequest& request) {
    return request.accessibility.performAction(request.element, "AXPress");
}

std::int32_t focus(const ActionRequest& request) {
    return request.accessibility.setAttributeValue(request.element, "AXFocused", Value(true));
}

std::int32_t setValue(const ActionRequest& request) {
    if (!request.value) throw AxError::unsupported("value is required for set_value");
    return request.accessibility.setAttributeValue(request.element, "AXValue",
                                                   Value(*request.value));
}

std::int32_t scroll(const ActionRequest& request) {
    constexpr std::int64_t kMaximumPages = 10;
    const std::int64_t amount = request.amount.value_or(1);
    // Limited before the sign is dropped: the most negative integer has no magnitude.
    const std::int64_t limited = std::clamp(amount, -kMaximumPages, kMaximumPages);
    const std::int64_t pages = std::max<std::int64_t>(limited < 0 ? -limited : limited, 1);
    const std::string_view action = amount < 0 ? "AXScrollUpByPage" : "AXScrollDownByPage";
    std::int32_t code = kAxSuccess;
    for (std::int64_t page = 0; page < pages && code == kAxSuccess; ++page) {
        code = request.accessibility.performAction(request.element, action);
    }
    return code;
}

struct ActionEntry {
    std::string_view name;
    std::int32_t (*perform)(const ActionRequest&);
};

constexpr ActionEntry kActions[] = {
    {"invoke", invoke},
    {"focus", focus},
    {"set_value", setValue},
    {"scroll", scroll},
};

bool isInSubtree(std::string_view token, std::string_view root) {
    return token.starts_with(root) && (token.size() == root.size() || token[root.size()] == '.');
}

}  // namespace

ResolvedElement currentAxElement(Platform& platform, LastAxSnapshot& lastAxSnapshot,
                                 const std::string& token) {
    const LastAxSnapshot stored = lastAxSnapshot;
    if (!stored) throw AxError::noSnapshot();
    const auto application = platform.workspace().frontmostApplication();
    if (!application) throw AxError::unsupported("no frontmost application");
    const LastAxSnapshot fresh =
        axSnapshot(platform.accessibility(), lastAxSnapshot, application->processIdentifier);
    if (fresh->revision != stored->revision) throw AxError::staleSnapshot();
    const auto element = fresh->elements.find(token);
    if (element == fresh->elements.end()) throw AxError::unknownToken();
    const auto node = std::find_if(fresh->nodes.begin(), fresh->nodes.end(),
                                   [&](const AxNode& entry) { return entry.token == token; });
    if (node == fresh->nodes.end()) throw AxError::unknownToken();
    return {element->second, *node, frontmostTarget(platform)};
}

std::optional<std::vector<AxNode>> axSubtreeNodes(const std::vector<AxNode>& nodes,
                                                  const std::string& root) {
    const bool known = std::any_of(nodes.begin(), nodes.end(),
                                   [&](const AxNode& node) { return node.token == root; });
    if (!known) return {};
    std::vector<AxNode> subtree;
    std::copy_if(nodes.begin(), nodes.end(), std::back_inserter(subtree),
                 [&](const AxNode& node) { return isInSubtree(node.token, root); });
    return subtree;
}

Point axElementCenter(Platform& platform, LastAxSnapshot& lastAxSnapshot,
                      const std::string& token) {
    const ResolvedElement resolved = currentAxElement(platform, lastAxSnapshot, token);
    const auto bounds = axBounds(platform.accessibility(), resolved.element);
    if (!bounds) throw AxError::unsupported("element has no bounds");
    return {static_cast<double>(bounds->x) + static_cast<double>(bounds->width) * 0.5,
            static_cast<double>(bounds->y) + static_cast<double>(bounds->height) * 0.5};
}

std::string axErrorCode(std::int32_t code) {
    return "AXError " + std::to_string(code);
}

AxOutcome performAxAction(Platform& platform, LastAxSnapshot& lastAxSnapshot,
                          const std::string& token, const std::string& action,
                          const std::optional<std::string>& value,
                          std::optional<std::int64_t> amount) {
    ResolvedElement resolved = currentAxElement(platform, lastAxSnapshot, token);
    const auto* entry =
        std::find_if(std::begin(kActions), std::end(kActions),
                     [&](const ActionEntry& known) { return known.name == action; });
    if (entry == std::end(kActions)) throw AxError::unsupported("unknown ax action: " + action);
    const std::int32_t code =
        entry->perform({platform.accessibility(), resolved.element, value, amount});
    if (code != kAxSuccess) throw AxError::failed(axErrorCode(code));
    return {std::move(resolved.target), std::move(resolved.node)};
}

AxValueOutcome readAxValue(Platform& platform, LastAxSnapshot& lastAxSnapshot,
                           const std::string& token) {
    ResolvedElement resolved = currentAxElement(platform, lastAxSnapshot, token);
    auto value = axValueString(platform.accessibility(), resolved.element);
    return {std::move(resolved.target), std::move(resolved.node), std::move(value)};
}

Json elementJson(const AxNode& node) {
    Json json = {{"token", node.token}, {"role", node.role}};
    setOptional(json, "name", node.name);
    return json;
}

}  // namespace quil
