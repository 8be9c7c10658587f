#import "platform/macos/window_list.h"

#import <ApplicationServices/ApplicationServices.h>

#import "platform/macos/values.h"

namespace quil::macos {

std::optional<Value> MacWindowList::copyWindowInfo(std::uint32_t options,
                                                   std::uint32_t relativeToWindow) {
    const auto list =
        CfRef<CFArrayRef>::adopt(CGWindowListCopyWindowInfo(options, relativeToWindow));
    return valueOf(list.get());
}

}  // namespace quil::macos
