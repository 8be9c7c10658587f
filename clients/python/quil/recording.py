"""What the user does, as records; to be kept in a file and done again."""
from __future__ import annotations

import json
import os
import time
from types import TracebackType
from typing import Any, Callable, Dict, Iterable, Iterator, List, NamedTuple, Optional, Type, Union

from .errors import InvalidParameter, Refused
from .protocol import RecordedAction
from .runtime import Runtime

_SLICE_MS = 250  # for so long other requests may have to wait, and end() until it is seen
_LONGEST_PAUSE = 24 * 60 * 60.0


class Recording:
    """A recording that runs: iterating gives each action as it happens, until stop() is called or the time of `within` is over. As a
    context manager it stops at the end."""

    def __init__(self, runtime: Runtime) -> None:
        self._runtime = runtime
        self.actions: List[RecordedAction] = []
        """All that was taken so far, the oldest first."""
        self.is_running = True
        self._is_ended = False

    def __enter__(self) -> "Recording":
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException], trace: Optional[TracebackType]) -> None:
        if self._runtime.is_running:
            self.stop()

    def __iter__(self) -> Iterator[RecordedAction]:
        return self.within(None)

    def within(self, seconds: Optional[float]) -> Iterator[RecordedAction]:
        """The actions as they happen, for so many seconds; None: until it is stopped."""
        end = float("inf") if seconds is None else time.monotonic() + seconds
        while self.is_running and not self._is_ended and (rest := end - time.monotonic()) > 0:
            event = self._runtime.next_input_event(min(_SLICE_MS, max(1, round(rest * 1000))) if rest < 1 else _SLICE_MS)["event"]
            if event:
                self.actions.append(event)
                yield event

    def end(self) -> None:
        """Lets an iteration end within 250 ms; may be called from a signal handler or another thread."""
        self._is_ended = True

    def stop(self) -> List[RecordedAction]:
        """Ends the recording; gives what had not been taken yet, and adds it to the actions."""
        if not self.is_running:
            return []
        self.is_running = False
        rest = self._runtime.stop_input_recording()["events"]
        self.actions.extend(rest)
        return rest

    def save(self, path: "Union[str, os.PathLike[str]]") -> None:
        """Writes the actions, one line of JSON each. The file then holds what the user typed: keep it safe."""
        with open(path, "w", encoding="utf-8") as file:
            for action in self.actions:
                file.write(json.dumps(action, ensure_ascii=False) + "\n")


Source = Union[str, "os.PathLike[str]", Recording, Iterable[RecordedAction]]
"""A file, a recording, or its actions."""


class _Do(NamedTuple):
    where: str
    at: float
    name: str
    text: str
    call: Callable[[Runtime], Any]


def replay(runtime: Runtime, source: Source, speed: float = 1.0) -> int:
    """Does again what was recorded; see Desktop.replay. Everything is checked before anything is done: InvalidParameter names the
    first action that is none."""
    if not speed > 0:
        raise InvalidParameter("replay", f"the speed is {speed}, and must be more than 0")
    steps = list(_steps(source))
    todo = _joined(steps) if speed == float("inf") else steps
    begin = time.monotonic()
    for step in todo:
        due = begin + (step.at - steps[0].at) / 1000 / speed
        time.sleep(min(max(0.0, due - time.monotonic()), _LONGEST_PAUSE))
        try:
            step.call(runtime)
        except Refused as error:
            raise type(error)(error.method, f"{error.message} ({step.where})", error.code) from error
    return len(steps)


def _steps(source: Source) -> Iterator[_Do]:
    for where, action in _actions(source):
        try:
            step = _step(where, action)
        except (KeyError, TypeError, ValueError, OverflowError) as error:
            raise InvalidParameter("replay", f"{where}: not a recorded action ({type(error).__name__}: {error})") from error
        if step:
            yield step


def _actions(source: Source) -> Iterator["tuple[str, Any]"]:
    if isinstance(source, Recording):
        source = source.actions
    if not isinstance(source, (str, os.PathLike)):
        for number, action in enumerate(source):
            yield f"action {number}", action
        return
    with open(source, "rb") as file:
        for number, line in enumerate(file, 1):
            where = f"{os.fspath(source)}, line {number}"
            if line.strip():
                try:
                    yield where, json.loads(line)
                except (ValueError, RecursionError) as error:
                    raise InvalidParameter("replay", f"{where}: not a recorded action ({error})") from error


def _of(kind: type, value: Any) -> Any:
    if type(value) is not kind:
        raise TypeError(f"{value!r} is not of the type {kind.__name__}")
    return value


def _step(where: str, event: Dict[str, Any]) -> Optional[_Do]:
    """What does an action again; nothing for a sideways turn of the wheel, of which only the place is known."""
    at, name, params = float(_of(int, event["at"])), _of(str, event["action"]), event["params"]
    if name in ("click", "scroll"):
        point = event["target"]["point"]
        json.dumps(point, allow_nan=False)
    if name == "click":
        return _Do(where, at, name, "", lambda runtime: runtime.desktop_click(point=point))
    if name == "scroll":
        amount = _of(int, params["amount"])
        return _Do(where, at, name, "", lambda runtime: runtime.desktop_scroll(amount, point=point)) if amount else None
    if name == "type":
        text = _of(str, params["text"])
        text.encode()  # what is no text cannot be typed
        return _Do(where, at, name, text, lambda runtime: runtime.desktop_type(text))
    if name == "keypress":
        combo = _of(str, params["combo"])
        return _Do(where, at, name, "", lambda runtime: runtime.desktop_keypress(combo))
    raise ValueError(f"unknown action {name!r}")


def _joined(steps: List[_Do]) -> List[_Do]:
    """The same with texts that follow each other in one."""
    joined: List[_Do] = []
    for step in steps:
        if step.name == "type" and joined and joined[-1].name == "type":
            text = joined.pop().text + step.text
            step = step._replace(text=text, call=_typing(text))
        joined.append(step)
    return joined


def _typing(text: str) -> Callable[[Runtime], Any]:
    return lambda runtime: runtime.desktop_type(text)
