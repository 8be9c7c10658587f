"""The protocol's methods, one to one; docs/protocol.md tells what each does."""
from __future__ import annotations

from typing import Any, List, Optional, Set, cast

from . import protocol as p
from .process import ANSWER_SECONDS, Command, Process


def _given(**params: Any) -> "dict[str, Any]":
    return {name: value for name, value in params.items() if value is not None}


class Runtime(Process):
    """A runtime with a method for each of the protocol. Parameters that are None are left out. Errors are raised as the exceptions
    of quil.errors; those of the methods below the mark "extensions" include UnknownMethod, for a runtime that lacks them."""

    lacks: Set[str]
    """Extensions that the runtime was found not to have."""

    def __init__(self, runtime: Optional[Command] = None, answer_seconds: float = ANSWER_SECONDS) -> None:
        super().__init__(runtime, answer_seconds)
        self.lacks = set()

    def ping(self) -> p.Permissions:
        """Which permissions are granted."""
        return cast(p.Permissions, self.request("ping"))

    def desktop_target(self) -> p.TargetResult:
        """What is in front."""
        return cast(p.TargetResult, self.request("desktop_target"))

    def desktop_screenshot(self) -> p.ScreenshotResult:
        """A picture of the foremost window, two pixels per point."""
        return cast(p.ScreenshotResult, self.request("desktop_screenshot"))

    def desktop_windows_list(self) -> p.WindowsResult:
        """The ordinary windows, front to back."""
        return cast(p.WindowsResult, self.request("desktop_windows_list"))

    def desktop_ax_get_state(self, element: Optional[str] = None) -> p.State:
        """The accessibility tree of the focused window, or the part of it below an element."""
        return cast(p.State, self.request("desktop_ax_get_state", _given(element=element)))

    def desktop_read_value(self, token: str) -> p.ValueResult:
        """The whole value of one element."""
        return cast(p.ValueResult, self.request("desktop_read_value", _given(token=token)))

    def desktop_ax_action(self, token: str, action: str, value: Optional[str] = None, amount: Optional[int] = None) -> p.ActionResult:
        """Acts on one element: "invoke", "focus", "set_value" (value) or "scroll" (amount, in pages)."""
        return cast(p.ActionResult, self.request("desktop_ax_action", _given(token=token, action=action, value=value, amount=amount)))

    def desktop_click(self, element: Optional[str] = None, point: Optional[p.Point] = None) -> p.DoneWithTarget:
        """One click with the left button."""
        return cast(p.DoneWithTarget, self.request("desktop_click", _given(element=element, point=point)))

    def desktop_double_click(self, element: Optional[str] = None, point: Optional[p.Point] = None) -> p.DoneWithTarget:
        """Two clicks with the left button."""
        return cast(p.DoneWithTarget, self.request("desktop_double_click", _given(element=element, point=point)))

    def desktop_move(self, point: p.Point) -> p.Done:
        """Moves the pointer."""
        return cast(p.Done, self.request("desktop_move", _given(point=point)))

    def desktop_scroll(self, amount: int, element: Optional[str] = None, point: Optional[p.Point] = None,
                       axis: Optional[str] = None) -> p.Done:
        """Moves the pointer and turns the wheel there: up when positive; "horizontal": left when positive."""
        return cast(p.Done, self.request("desktop_scroll", _given(amount=amount, element=element, point=point, axis=axis)))

    def desktop_type(self, text: str, element: Optional[str] = None, point: Optional[p.Point] = None) -> p.DoneWithTarget:
        """Types a text, where the focus is or after focusing an element or clicking a place."""
        waits = len(text) / 50  # no application takes longer for a character
        return cast(p.DoneWithTarget, self.request("desktop_type", _given(text=text, element=element, point=point), waits))

    def desktop_paste(self, text: str, element: Optional[str] = None, point: Optional[p.Point] = None) -> p.DoneWithTarget:
        """Enters a text by way of the clipboard."""
        return cast(p.DoneWithTarget, self.request("desktop_paste", _given(text=text, element=element, point=point)))

    def desktop_apps_list(self) -> p.AppsResult:
        """The running and the installed applications."""
        return cast(p.AppsResult, self.request("desktop_apps_list"))

    def desktop_launch_app(self, appId: str) -> p.DoneWithTarget:
        """Starts an application or brings it to the front, without waiting for it."""
        return cast(p.DoneWithTarget, self.request("desktop_launch_app", _given(appId=appId)))

    def desktop_keypress(self, combo: str) -> p.Done:
        """Presses one key with modifiers, such as "cmd+shift+z"."""
        return cast(p.Done, self.request("desktop_keypress", _given(combo=combo)))

    def desktop_drag(self, from_: p.Point, to: p.Point) -> p.Done:
        """Presses the left button at one place and releases it at another."""
        return cast(p.Done, self.request("desktop_drag", {"from": from_, "to": to}))

    def start_frontmost_glimpse_capture(self, requestId: str) -> p.TargetResult:
        """Begins a capture of what is in front."""
        return cast(p.TargetResult, self.request("startFrontmostGlimpseCapture", _given(requestId=requestId)))

    def next_glimpse_capture_update(self, requestId: str) -> p.UpdateResult:
        """The capture's next view."""
        return cast(p.UpdateResult, self.request("nextGlimpseCaptureUpdate", _given(requestId=requestId)))

    def cancel_glimpse_capture(self, requestId: Optional[str] = None) -> None:
        """Forgets a capture."""
        self.request("cancelGlimpseCapture", _given(requestId=requestId))

    def start_input_recording(self) -> None:
        """Begins to record what the user does."""
        self.request("startInputRecording")

    def next_input_event(self, timeoutMs: Optional[int] = None) -> p.EventResult:
        """Waits for the next record, 1,000 ms when not said otherwise."""
        waits = max(0, 1000 if timeoutMs is None else timeoutMs) / 1000
        return cast(p.EventResult, self.request("nextInputEvent", _given(timeoutMs=timeoutMs), waits))

    def stop_input_recording(self) -> p.EventsResult:
        """Ends the recording; gives the records that were not yet taken."""
        return cast(p.EventsResult, self.request("stopInputRecording"))

    # extensions

    def desktop_displays_list(self) -> p.DisplaysResult:
        """The active displays and the virtual screen around them."""
        return cast(p.DisplaysResult, self.request("desktop_displays_list"))

    def desktop_capture(self, display: Optional[int] = None, window: Optional[int] = None,
                        scale: Optional[float] = None) -> p.CaptureResult:
        """A picture of a display or a window; `scale` is in pixels per point."""
        return cast(p.CaptureResult, self.request("desktop_capture", _given(display=display, window=window, scale=scale)))

    def desktop_mouse_click(self, element: Optional[str] = None, point: Optional[p.Point] = None, button: Optional[str] = None,
                            count: Optional[int] = None, modifiers: Optional[str] = None) -> p.DoneWithTarget:
        """Clicks with any button, several times, with modifiers held."""
        return cast(p.DoneWithTarget, self.request("desktop_mouse_click", _given(
            element=element, point=point, button=button, count=count, modifiers=modifiers)))

    def desktop_mouse_drag(self, path: List[p.Point], button: Optional[str] = None, modifiers: Optional[str] = None,
                           durationMs: Optional[int] = None) -> p.Done:
        """Drags along a path."""
        return cast(p.Done, self.request("desktop_mouse_drag", _given(
            path=path, button=button, modifiers=modifiers, durationMs=durationMs), (durationMs or 0) / 1000))

    def desktop_clipboard_read(self) -> p.ClipboardResult:
        """The text on the clipboard."""
        return cast(p.ClipboardResult, self.request("desktop_clipboard_read"))

    def desktop_clipboard_write(self, text: str) -> p.Done:
        """Puts a text on the clipboard."""
        return cast(p.Done, self.request("desktop_clipboard_write", _given(text=text)))

    def desktop_ax_wait(self, revision: str, timeoutMs: Optional[int] = None, quietMs: Optional[int] = None) -> p.WaitResult:
        """Waits until the tree has another revision than this."""
        waits = (1000 if timeoutMs is None else timeoutMs) / 1000
        return cast(p.WaitResult, self.request("desktop_ax_wait", _given(
            revision=revision, timeoutMs=timeoutMs, quietMs=quietMs), waits))

    def desktop_window_activate(self, window: int) -> p.DoneWithTarget:
        """Brings a window to the front and waits for it."""
        return cast(p.DoneWithTarget, self.request("desktop_window_activate", _given(window=window)))
