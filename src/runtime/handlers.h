#pragma once

#include <cstdint>

#include "runtime/request.h"
#include "runtime/runtime.h"

/// The handlers of all methods, in the order of the dispatch table. Each applies its permission
/// gate, reads its parameters, and writes exactly one response for `id`, unless it throws: then the
/// dispatcher responds with what was thrown.
namespace quil {

// What the runtime may do, what is in front, and what it looks like.

/// `ping`: the permissions, as they are now.
void handlePing(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_target`: the frontmost application and window.
void handleTarget(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_screenshot`: the window's picture, "" when there is none. Needs Screen Recording.
void handleScreenshot(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_windows_list`: the ordinary windows on screen.
void handleWindowsList(Runtime& runtime, std::int64_t id, const Parameters& parameters);

// The frontmost application's tree, and its elements by token. All need the Accessibility
// permission.

/// `desktop_ax_get_state`: the tree, or the part of it below "element".
void handleAxGetState(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_read_value`: the whole value of one element.
void handleReadValue(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_ax_action`: invoke, focus, set_value or scroll.
void handleAxAction(Runtime& runtime, std::int64_t id, const Parameters& parameters);

// Synthetic input. All need the Accessibility permission, check their parameters before anything is
// posted, and respond with a result once the checks pass.

/// `desktop_click`: one click on "element" or at "point".
void handleClick(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_double_click`: the same, twice.
void handleDoubleClick(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_move`: the pointer goes to "point".
void handleMove(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_scroll`: turns the wheel by "amount" lines over "element" or at "point".
void handleScroll(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_type`: types "text", after the focus or a click has gone to "element" or "point".
void handleType(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_paste`: the same by way of the pasteboard, which gets its text back.
void handlePaste(Runtime& runtime, std::int64_t id, const Parameters& parameters);

// Applications.

/// `desktop_apps_list`: the catalogue of running and installed applications.
void handleAppsList(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_launch_app`: opens the application named "appId". The response's target is that of the
/// moment, which the new application may not have become yet.
void handleLaunchApp(Runtime& runtime, std::int64_t id, const Parameters& parameters);

// More synthetic input.

/// `desktop_keypress`: presses the combination "combo".
void handleKeypress(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_drag`: drags with the left button from "from" to "to".
void handleDrag(Runtime& runtime, std::int64_t id, const Parameters& parameters);

// Glimpse captures: a fixed sequence of views of the frontmost application, one per request. None
// needs a permission; a missing one shows as empty content.

/// `startFrontmostGlimpseCapture`: begins (or begins again) the capture "requestId".
void handleStartGlimpseCapture(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `nextGlimpseCaptureUpdate`: the next view of the capture "requestId": text, screenshot, end.
void handleNextGlimpseUpdate(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `cancelGlimpseCapture`: forgets the capture "requestId", if there is one.
void handleCancelGlimpseCapture(Runtime& runtime, std::int64_t id, const Parameters& parameters);

// Recording the user's own input. None needs the Accessibility or Screen Recording permission.

/// `startInputRecording`: begins a recording, or lets the one that runs go on. Without the Input
/// Monitoring permission the user is asked for it, and the request fails.
void handleStartInputRecording(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `nextInputEvent`: the oldest record, null when none came within "timeoutMs" (1000 by default).
void handleNextInputEvent(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `stopInputRecording`: ends the recording and returns the records still to be taken.
void handleStopInputRecording(Runtime& runtime, std::int64_t id, const Parameters& parameters);

// Extensions: what came to the protocol later, under the same rules.

/// `desktop_displays_list`: the displays, the main one first, and the virtual screen.
void handleDisplaysList(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_capture`: a picture of a display or a window. Needs Screen Recording.
void handleCapture(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_mouse_click`: clicks of any button, with modifiers. Needs Accessibility.
void handleMouseClick(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_mouse_drag`: a drag along a path. Needs Accessibility.
void handleMouseDrag(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_clipboard_read`: the clipboard's text, null when it has none.
void handleClipboardRead(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_clipboard_write`: puts "text" on the clipboard.
void handleClipboardWrite(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_ax_wait`: waits for another revision of the tree. Needs Accessibility.
void handleAxWait(Runtime& runtime, std::int64_t id, const Parameters& parameters);
/// `desktop_window_activate`: brings a window to the front. Needs Accessibility.
void handleWindowActivate(Runtime& runtime, std::int64_t id, const Parameters& parameters);

}  // namespace quil
