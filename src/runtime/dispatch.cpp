#include "runtime/dispatch.h"

#include <algorithm>
#include <string_view>

#include "runtime/handlers.h"

namespace quil {
namespace {

struct Method {
    std::string_view name;
    Handler handler;
};

/// Every method of the protocol. To add one, write its handler and add its line.
constexpr Method kMethods[] = {
    {"ping", handlePing},
    {"desktop_target", handleTarget},
    {"desktop_screenshot", handleScreenshot},
    {"desktop_windows_list", handleWindowsList},
    {"desktop_ax_get_state", handleAxGetState},
    {"desktop_read_value", handleReadValue},
    {"desktop_ax_action", handleAxAction},
    {"desktop_click", handleClick},
    {"desktop_double_click", handleDoubleClick},
    {"desktop_move", handleMove},
    {"desktop_scroll", handleScroll},
    {"desktop_type", handleType},
    {"desktop_paste", handlePaste},
    {"desktop_apps_list", handleAppsList},
    {"desktop_launch_app", handleLaunchApp},
    {"desktop_keypress", handleKeypress},
    {"desktop_drag", handleDrag},
    {"startFrontmostGlimpseCapture", handleStartGlimpseCapture},
    {"nextGlimpseCaptureUpdate", handleNextGlimpseUpdate},
    {"cancelGlimpseCapture", handleCancelGlimpseCapture},
    {"startInputRecording", handleStartInputRecording},
    {"nextInputEvent", handleNextInputEvent},
    {"stopInputRecording", handleStopInputRecording},

    // Extensions.
    {"desktop_displays_list", handleDisplaysList},
    {"desktop_capture", handleCapture},
    {"desktop_mouse_click", handleMouseClick},
    {"desktop_mouse_drag", handleMouseDrag},
    {"desktop_clipboard_read", handleClipboardRead},
    {"desktop_clipboard_write", handleClipboardWrite},
    {"desktop_ax_wait", handleAxWait},
    {"desktop_window_activate", handleWindowActivate},
};

}  // namespace

void dispatch(Runtime& runtime, const Request& request) {
    const auto* method =
        std::find_if(std::begin(kMethods), std::end(kMethods),
                     [&](const Method& entry) { return entry.name == request.method; });
    if (method == std::end(kMethods)) {
        runtime.responses.respondError(request.id, "unknown method: " + request.method);
        return;
    }
    // Operations throw before anything has been written, so this is the only response.
    try {
        method->handler(runtime, request.id, request.parameters);
    } catch (const std::exception& error) {
        runtime.responses.respondAxError(request.id, error);
    }
}

}  // namespace quil
