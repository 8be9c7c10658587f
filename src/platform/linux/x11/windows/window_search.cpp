#include "platform/linux/x11/windows/window_search.h"

#include <utility>

#include "platform/linux/x11/windows/window_stack.h"

namespace quil::linux_platform {
namespace {

bool hasSize(const Rect& rect, Size size) {
    return rect.width == size.width && rect.height == size.height;
}

/// 0 for a window that cannot be meant.
int fit(const X11Window& window, std::int32_t pid, std::string_view title, Size size) {
    const bool isOfProcess = window.pid == pid;
    const bool hasTitle = window.title.value_or("") == title;
    const bool isOfSize = hasSize(window.frame, size) || hasSize(window.windowRect(), size);
    if (!isOfProcess && !(hasTitle && isOfSize)) return 0;
    return 1 + (isOfProcess ? 8 : 0) + (hasTitle ? 4 : 0) + (isOfSize ? 2 : 0) +
           (window.onScreen ? 1 : 0);
}

}  // namespace

std::optional<X11Window> findWindow(X11Connection& connection, std::int32_t pid,
                                    std::string_view title, Size size) {
    std::optional<X11Window> best;
    int bestFit = 0;
    for (X11Window& window : topLevelWindows(connection)) {
        const int thisFit = fit(window, pid, title, size);
        if (thisFit <= bestFit) continue;
        bestFit = thisFit;
        best = std::move(window);
    }
    return best;
}

}  // namespace quil::linux_platform
