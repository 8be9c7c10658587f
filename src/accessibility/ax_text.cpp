#include "accessibility/ax_text.h"

#include <string_view>
#include <vector>

#include "accessibility/ax_text_lines.h"
#include "attributes/ax_attributes.h"

namespace quil {
namespace {

constexpr std::string_view kTextAttributes[] = {"AXTitle", "AXDescription", "AXValue"};

class TextWalk {
  public:
    TextWalk(Accessibility& accessibility, std::int64_t maximumNodes, std::int64_t maximumChars)
        : accessibility_(accessibility), maximumNodes_(maximumNodes), lines_(maximumChars) {}

    void visit(const ElementRef& element, int depth) {
        if (count_ >= maximumNodes_ || lines_.isFull() || depth >= kAxMaximumDepth) return;
        ++count_;
        lines_.append(parts(element));
        for (const ElementRef& child : axChildren(accessibility_, element)) {
            visit(child, depth + 1);
        }
    }

    const std::string& text() const { return lines_.text(); }

  private:
    std::vector<std::string> parts(const ElementRef& element) {
        std::vector<std::string> parts{
            axString(accessibility_, element, "AXRole").value_or("AXUnknown")};
        for (const std::string_view attribute : kTextAttributes) {
            const auto text = axString(accessibility_, element, attribute);
            if (text && !text->empty()) parts.push_back(onOneLine(*text));
        }
        const auto subrole = axString(accessibility_, element, "AXSubrole");
        if (subrole && !subrole->empty()) parts.push_back('(' + *subrole + ')');
        return parts;
    }

    Accessibility& accessibility_;
    const std::int64_t maximumNodes_;
    AxTextLines lines_;
    std::int64_t count_ = 0;
};

}  // namespace

std::string axText(Accessibility& accessibility, std::int32_t pid, std::int64_t maximumNodes,
                   std::int64_t maximumChars) {
    const ElementRef root = axFocusedWindow(accessibility, pid);
    const auto observation = accessibility.beginObservation(
        {.root = root,
         .attributes = {"AXRole", "AXTitle", "AXDescription", "AXValue", "AXSubrole", "AXChildren"},
         .maximumNodes = maximumNodes,
         .maximumDepth = kAxMaximumDepth});
    TextWalk walk(accessibility, maximumNodes, maximumChars);
    walk.visit(root, 0);
    return walk.text();
}

}  // namespace quil
