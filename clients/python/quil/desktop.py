"""The desktop: applications, windows, elements, pictures, input."""
from __future__ import annotations

import time
from dataclasses import dataclass
from types import TracebackType
from typing import Callable, Iterator, List, Optional, Type, TypeVar, Union

from .errors import NotInTime, QuilError, UnknownMethod, UnsupportedOperation
from .input import Clipboard, Keyboard, Mouse
from .locator import Locator, Locators
from .looking import Looks
from .matching import Criteria, Selector
from .observation import Observation, Rectangle, Target
from .pictures import Picture
from .process import ANSWER_SECONDS, Command
from .protocol import Permissions
from .recording import Recording, Source, replay
from .runtime import Runtime

T = TypeVar("T")
LAUNCH_SECONDS = 30.0
_OWN_NAME_SECONDS = 1.0  # after which another program in front counts as the one that was launched


@dataclass(frozen=True)
class Window:
    """An ordinary window; what is unknown is "", 0 or None."""

    id: int
    name: str
    owner: str
    pid: int
    bounds: Optional[Rectangle]
    bundle_identifier: Optional[str]
    executable_path: Optional[str]


@dataclass(frozen=True)
class Application:
    """An application that runs or is installed."""

    app_id: str
    """What Desktop.launch takes."""
    name: str
    running: bool
    bundle_identifier: Optional[str]
    executable_path: Optional[str]
    signing_identity: Optional[str]


@dataclass(frozen=True)
class Glimpse:
    """One view of a glimpse: "axText" with text, or "screenshot" with picture and target."""

    type: str
    text: str = ""
    picture: Optional[Picture] = None
    target: Optional[Target] = None


class Desktop(Locators):
    """A desktop, through a runtime of its own. Use it as a context manager, or close() it; it also ends by itself with the last
    reference to it, with the interpreter and with the host.

    runtime: the runtime's executable, or a list with arguments; else the one inside this package, else `quil` on PATH.
    timeout: how many seconds locators and expectations wait when they are not told.
    answer_seconds: how long the runtime has for one answer; after that it is ended and RuntimeGone raised.
    """

    def __init__(self, runtime: Optional[Command] = None, *, timeout: float = 5.0, answer_seconds: float = ANSWER_SECONDS) -> None:
        self.runtime = Runtime(runtime, answer_seconds)
        self.timeout = timeout
        self.last: Optional[Observation] = None
        """The last observation that was made."""
        self._glimpses = 0

    def __enter__(self) -> "Desktop":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException], trace: Optional[TracebackType]) -> None:
        self.close()

    def close(self) -> None:
        """Ends the runtime."""
        self.runtime.close()

    def _with(self, criteria: Criteria) -> Locator:
        return Locator(self, Selector().then(criteria))

    # Not kept: they would keep the desktop, and with it the runtime, beyond the last reference to it.
    @property
    def mouse(self) -> Mouse:
        """The pointer, for places; locators are better where there are elements."""
        return Mouse(self)

    @property
    def keyboard(self) -> Keyboard:
        """The keyboard, wherever the focus is."""
        return Keyboard(self)

    @property
    def clipboard(self) -> Clipboard:
        """The clipboard's text."""
        return Clipboard(self)

    def permissions(self) -> Permissions:
        """Which permissions the system has granted."""
        return self.runtime.ping()

    # What is there

    def observe(self) -> Observation:
        """The elements of the focused window, as they are now."""
        self.last = Observation(self.runtime.desktop_ax_get_state())
        return self.last

    def target(self) -> Target:
        """The application and window in front."""
        return Target.of(self.runtime.desktop_target()["target"])

    def windows(self) -> List[Window]:
        """The ordinary windows on the screen, front to back."""
        windows = []
        for one in self.runtime.desktop_windows_list()["windows"]:
            bounds = one.get("bounds")
            windows.append(Window(
                one["id"], one["name"], one["owner"], one["pid"],
                Rectangle(bounds["X"], bounds["Y"], bounds["Width"], bounds["Height"]) if bounds else None,
                one.get("bundleIdentifier"), one.get("executablePath")))
        return windows

    def apps(self) -> List[Application]:
        """The running and the installed applications, by name."""
        return [Application(one["appId"], one["name"], one["running"], one.get("bundleIdentifier"), one.get("executablePath"),
                            one.get("signingIdentity")) for one in self.runtime.desktop_apps_list()["apps"]]

    def launch(self, app_id: str, timeout: float = LAUNCH_SECONDS) -> Target:
        """Starts an application, or brings it to the front, and waits until it is in front and its window has elements. Raises
        UnsupportedOperation when there is no such application, NotInTime when it does not come."""
        before = self.target()
        self.runtime.desktop_launch_app(app_id)
        begin = time.monotonic()

        def is_there(look: Observation) -> bool:
            target, is_late = look.target, time.monotonic() - begin > _OWN_NAME_SECONDS
            # The elements of a window come after it, but some windows have none.
            if len(look.elements) < 2 and not (is_late and look.root and look.root.role == "AXWindow"):
                return False
            if target.bundle_identifier == app_id or (target.executable_path or "").startswith(app_id.rstrip("/") + "/"):
                return True
            # Some applications run under another name than they are launched by.
            return target.pid not in (None, before.pid) and is_late
        return self._until(is_there, timeout, f"launch: {app_id} did not come to the front")

    def activate(self, window: Union[Window, int], timeout: Optional[float] = None) -> Target:
        """Brings a window to the front, gives it the focus and waits for it. With a runtime that lacks desktop_window_activate only
        the application can be brought to the front, with the window that it had there last."""
        windows = {one.id: one for one in self.windows()}
        number = window if isinstance(window, int) else window.id
        known = windows.get(number) or (window if isinstance(window, Window) else None)

        def launch() -> Target:
            if known is None or known.bundle_identifier is None:
                raise UnsupportedOperation("activate", f"there is no window {number} of an application with an identifier")
            self.runtime.desktop_launch_app(known.bundle_identifier)
            pid, name = known.pid, known.name
            return self._until(lambda look: look.target.pid == pid and look.target.window_title in (name, None),
                               self.timeout if timeout is None else timeout, f"activate: the window {name!r} did not come to the front")
        return self.extension(lambda: Target.of(self.runtime.desktop_window_activate(number)["target"]), "activating a window", launch)

    def _until(self, holds: Callable[[Observation], bool], timeout: float, failure: str) -> Target:
        looks = Looks(self.runtime, timeout)
        for look in looks:
            self.last = look
            if holds(look):
                return look.target
        raise NotInTime(f"{failure} within {timeout:g} s\n{looks.describe()}")

    # Pictures

    def screenshot(self) -> Picture:
        """The foremost window, two pixels per point; without what covers it, without the pointer."""
        return self._picture(self.runtime.desktop_screenshot()["screenshotDataURL"])

    def capture(self, *, display: Optional[int] = None, window: Union[Window, int, None] = None, scale: float = 1.0) -> Picture:
        """A display as the user sees it, but for the pointer (the main one when not said), or one window; `scale` is in pixels per
        point, up to 2. Needs a runtime that has desktop_capture."""
        number = window.id if isinstance(window, Window) else window
        result = self.extension(lambda: self.runtime.desktop_capture(display, number, scale), "such a picture")
        bounds = result["bounds"]
        return self._picture(result["screenshotDataURL"], Rectangle(bounds["x"], bounds["y"], bounds["width"], bounds["height"]))

    @staticmethod
    def _picture(data_url: str, bounds: Optional[Rectangle] = None) -> Picture:
        if not data_url:
            raise QuilError("there was nothing to picture")
        return Picture.of(data_url, bounds)

    def glimpse(self) -> Iterator[Glimpse]:
        """A fixed sequence of views of what is in front, one at a time: its text, a picture."""
        self._glimpses += 1
        request = f"glimpse-{self._glimpses}"
        self.runtime.start_frontmost_glimpse_capture(request)
        try:
            while True:
                update = self.runtime.next_glimpse_capture_update(request)["update"]
                if update["type"] == "completed":
                    return
                if update["type"] == "failed":
                    raise QuilError(f"glimpse: {update['error']}")
                url = update.get("screenshotDataURL")
                yield Glimpse(update["type"], update.get("text", ""), Picture.of(url) if url else None,
                              Target.of(update["target"]) if "target" in update else None)
        finally:
            if self.runtime.is_running:
                self.runtime.cancel_glimpse_capture(request)

    # Recording

    def record(self) -> Recording:
        """Begins to record what the user does. Raises PermissionRequired or RecordingUnavailable."""
        self.runtime.start_input_recording()
        return Recording(self.runtime)

    def replay(self, recording: Source, speed: float = 1.0) -> int:
        """Does again what was recorded, with its pauses divided by `speed` (float("inf"): without any); how many actions that were.
        A click goes to a place, not to what was there."""
        return replay(self.runtime, recording, speed)

    # Inside

    def extension(self, call: Callable[[], T], what: str, instead: Optional[Callable[[], T]] = None) -> T:
        """Calls a method that not every runtime has, or does something else instead."""
        try:
            return call()
        except UnknownMethod as error:
            self.runtime.lacks.add(error.method)
            if instead:
                return instead()
            raise UnsupportedOperation(error.method, f"this runtime cannot do {what}: it lacks {error.method}") from None


