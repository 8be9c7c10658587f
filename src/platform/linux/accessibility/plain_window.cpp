#include "platform/linux/accessibility/plain_window.h"

#include <string>

#include "platform/accessibility.h"

namespace quil::linux_platform {

std::int32_t PlainWindow::copyAttributeValue(std::string_view attribute,
                                             std::optional<Value>& value) const {
    const Rect& frame = window_.frame;
    if (attribute == "AXRole") {
        value = Value(std::string("AXWindow"));
    } else if (attribute == "AXTitle" && window_.title) {
        value = Value(*window_.title);
    } else if (attribute == "AXPosition") {
        value = Value(Point{frame.x, frame.y});
    } else if (attribute == "AXSize") {
        value = Value(Size{frame.width, frame.height});
    } else {
        return kAxAttributeUnsupported;
    }
    return 0;
}

}  // namespace quil::linux_platform
