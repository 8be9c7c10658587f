#include "platform/linux/accessibility/observed_element.h"

namespace quil::linux_platform {

WalkPosition::WalkPosition(ObservedElement& root, int maximumDepth)
    : element_(&root), maximumDepth_(maximumDepth) {}

void WalkPosition::advance() {
    // The root has no siblings.
    if (static_cast<int>(path_.size()) + 1 < maximumDepth_) {
        const auto& children = element_->children;
        path_.push_back({children.data(), children.data() + children.size()});
    }
    while (!path_.empty() && path_.back().next == path_.back().end) path_.pop_back();
    element_ = path_.empty() ? nullptr : *path_.back().next++;
    ++index_;
}

}  // namespace quil::linux_platform
