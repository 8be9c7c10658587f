#include "accessibility/ax_snapshot.h"

#include <charconv>

#include "accessibility/ax_text_lines.h"
#include "text/characters.h"

namespace quil {
namespace {

/// Characters of the text fields of all recorded elements together; bounds the memory of a
/// snapshot.
constexpr std::int64_t kFieldBudget = 200000;

std::int64_t fieldCharacters(const AxNode& node) {
    std::int64_t count = characterCount(node.role);
    for (const auto* field : {&node.name, &node.description, &node.value, &node.automationId}) {
        if (*field) count += characterCount(**field);
    }
    return count;
}

/// What the revision covers of an element, one line.
void appendSignature(std::string& signature, const AxNode& node) {
    signature += node.token;
    signature += '|';
    signature += node.role;
    for (const auto* field : {&node.name, &node.description, &node.value, &node.automationId}) {
        signature += '|';
        if (*field) signature += **field;
    }
    signature += '|';
    if (node.enabled) signature += *node.enabled ? '1' : '0';
    signature += '|';
    if (node.bounds) {
        const AxBounds& b = *node.bounds;
        signature += std::to_string(b.x) + ',' + std::to_string(b.y) + ',' +
                     std::to_string(b.width) + ',' + std::to_string(b.height);
    }
    signature += '|';
    for (const std::string& action : node.actions) {
        if (&action != &node.actions.front()) signature += ',';
        signature += action;
    }
    signature += '\n';
}

class SnapshotWalk {
  public:
    SnapshotWalk(Accessibility& accessibility, std::int64_t maximumNodes, std::int64_t maximumChars)
        : accessibility_(accessibility), maximumNodes_(maximumNodes), lines_(maximumChars) {}

    void visit(const ElementRef& element, std::string token, int depth) {
        if (isAtLimit(depth)) {
            snapshot_.truncated = true;
            return;
        }
        AxNode node = read(element, std::move(token));
        remainingFieldCharacters_ -= fieldCharacters(node);
        appendSignature(signature_, node);
        appendLine(node);
        const std::string path = node.token;
        snapshot_.elements.emplace(path, element);
        snapshot_.nodes.push_back(std::move(node));

        std::size_t position = 0;
        for (const ElementRef& child : axChildren(accessibility_, element)) {
            visit(child, path + '.' + std::to_string(position++), depth + 1);
        }
    }

    AxSnapshot finish() {
        snapshot_.revision = fnv1a(signature_);
        snapshot_.axText = lines_.text();
        return std::move(snapshot_);
    }

  private:
    bool isAtLimit(int depth) const {
        return static_cast<std::int64_t>(snapshot_.nodes.size()) >= maximumNodes_ ||
               lines_.isFull() || remainingFieldCharacters_ < 1 || depth >= kAxMaximumDepth;
    }

    AxNode read(const ElementRef& element, std::string token) {
        AxNode node;
        node.token = std::move(token);
        node.role = axString(accessibility_, element, "AXRole").value_or("AXUnknown");
        node.name = clipAxField(axString(accessibility_, element, "AXTitle"));
        node.description = clipAxField(axString(accessibility_, element, "AXDescription"));
        node.value = clipAxField(axValueString(accessibility_, element));
        node.automationId = clipAxField(axString(accessibility_, element, "AXIdentifier"));
        node.enabled = axEnabled(accessibility_, element);
        node.bounds = axBounds(accessibility_, element);
        node.actions = axActionNames(accessibility_, element);
        return node;
    }

    void appendLine(const AxNode& node) {
        std::vector<std::string> parts{node.role};
        for (const auto* field : {&node.name, &node.description, &node.value}) {
            if (*field) parts.push_back(onOneLine(**field));
        }
        lines_.append(parts);
    }

    Accessibility& accessibility_;
    const std::int64_t maximumNodes_;
    AxTextLines lines_;
    std::int64_t remainingFieldCharacters_ = kFieldBudget;
    std::string signature_;
    AxSnapshot snapshot_;
};

}  // namespace

Json axNodeJson(const AxNode& node) {
    Json json = {{"token", node.token}, {"role", node.role}};
    setOptional(json, "name", node.name);
    setOptional(json, "description", node.description);
    setOptional(json, "value", node.value);
    setOptional(json, "automationId", node.automationId);
    setOptional(json, "enabled", node.enabled);
    if (node.bounds) {
        json["bounds"] = {{"x", node.bounds->x},
                          {"y", node.bounds->y},
                          {"width", node.bounds->width},
                          {"height", node.bounds->height}};
    }
    if (!node.actions.empty()) json["actions"] = node.actions;
    return json;
}

std::string fnv1a(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char byte : text) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= 0x100000001b3;
    }
    char digits[16];
    return {digits, std::to_chars(digits, digits + sizeof digits, hash, 16).ptr};
}

LastAxSnapshot axSnapshot(Accessibility& accessibility, LastAxSnapshot& lastAxSnapshot,
                          std::int32_t pid, std::int64_t maximumNodes, std::int64_t maximumChars) {
    const ElementRef root = axFocusedWindow(accessibility, pid);
    SnapshotWalk walk(accessibility, maximumNodes, maximumChars);
    {
        const auto observation = accessibility.beginObservation(
            {.root = root,
             .attributes = {"AXRole", "AXTitle", "AXDescription", "AXValue", "AXIdentifier",
                            "AXEnabled", "AXPosition", "AXSize", "AXChildren"},
             .actionNames = true,
             .maximumNodes = maximumNodes,
             .maximumDepth = kAxMaximumDepth});
        walk.visit(root, "e0", 0);
    }
    lastAxSnapshot = std::make_shared<const AxSnapshot>(walk.finish());
    return lastAxSnapshot;
}

}  // namespace quil
