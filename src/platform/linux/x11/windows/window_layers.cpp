#include "platform/linux/x11/windows/window_layers.h"

#include <string_view>

namespace quil::linux_platform {
namespace {

/// The window types of the Extended Window Manager Hints, with the level that CGWindowLevelForKey
/// gives the nearest kind of window on a Mac (CGWindowLevel.h).
struct TypeLayer {
    std::string_view type;
    std::int64_t layer;
};
constexpr TypeLayer kTypeLayers[] = {
    {"_NET_WM_WINDOW_TYPE_NORMAL", 0},
    {"_NET_WM_WINDOW_TYPE_DIALOG", 0},
    {"_NET_WM_WINDOW_TYPE_UTILITY", 0},
    {"_NET_WM_WINDOW_TYPE_SPLASH", 0},
    {"_NET_WM_WINDOW_TYPE_DESKTOP", kDesktopLayer},
    {"_NET_WM_WINDOW_TYPE_DOCK", 20},                       // kCGDockWindowLevel
    {"_NET_WM_WINDOW_TYPE_TOOLBAR", 3},                     // kCGTornOffMenuWindowLevel
    {"_NET_WM_WINDOW_TYPE_MENU", 3},                        // kCGTornOffMenuWindowLevel
    {"_NET_WM_WINDOW_TYPE_NOTIFICATION", 25},               // kCGStatusWindowLevel
    {"_KDE_NET_WM_WINDOW_TYPE_CRITICAL_NOTIFICATION", 25},  // kCGStatusWindowLevel
    {"_NET_WM_WINDOW_TYPE_DROPDOWN_MENU", kMenuLayer},
    {"_NET_WM_WINDOW_TYPE_POPUP_MENU", kMenuLayer},
    {"_NET_WM_WINDOW_TYPE_COMBO", kMenuLayer},
    {"_NET_WM_WINDOW_TYPE_TOOLTIP", 102},                // kCGOverlayWindowLevel
    {"_KDE_NET_WM_WINDOW_TYPE_ON_SCREEN_DISPLAY", 102},  // kCGOverlayWindowLevel
    {"_NET_WM_WINDOW_TYPE_DND", 500},                    // kCGDraggingWindowLevel
};

}  // namespace

std::int64_t windowLayer(X11Connection& connection, const std::vector<std::uint32_t>& types) {
    for (const std::uint32_t type : types) {
        for (const TypeLayer& entry : kTypeLayers) {
            if (type == connection.atom(entry.type)) return entry.layer;
        }
    }
    return 0;
}

}  // namespace quil::linux_platform
