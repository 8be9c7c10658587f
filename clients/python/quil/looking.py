"""Looking at the tree again and again until it is as wanted, and saying what was there when it was not."""
from __future__ import annotations

import time
from typing import Iterator, List, Optional, Sequence, Type

from .errors import AmbiguousElement, ElementNotFound, ElementNotReady, NotInTime, UnknownMethod
from .matching import Selector
from .observation import Element, Observation
from .outline import body
from .runtime import Runtime

_FIRST_PAUSE, _LONGEST_PAUSE, _PAUSE_GROWS = 0.02, 0.25, 1.5
_REST = 0.01  # a tree that changes all the time is not read without a break
_WAIT_SLICE = 1.0  # another application may come to the front, of which nothing tells
_SLOW = 1.5
OUTLINE_CHARACTERS = 4000


class Looks:
    """Observations until a time is over: the first at once, each other when the tree has changed (or, with a runtime that cannot wait
    for that, after a growing pause), the last at the end."""

    def __init__(self, runtime: Runtime, seconds: float) -> None:
        self._runtime = runtime
        self.seconds = seconds
        self.last: Optional[Observation] = None
        self.slowest = 0.0
        self.is_stale = False
        """To be set when the last observation is known to be outdated: the next one is then made at once."""
        self.stales = 0

    def __iter__(self) -> Iterator[Observation]:
        deadline = time.monotonic() + self.seconds
        pause = _FIRST_PAUSE
        while True:
            begin = time.monotonic()
            looked = Observation(self._runtime.desktop_ax_get_state())
            self.slowest = max(self.slowest, time.monotonic() - begin)
            if self.last and looked.revision != self.last.revision:
                pause = _FIRST_PAUSE
            self.last = looked
            yield looked
            rest = deadline - time.monotonic()
            if rest <= 0:
                return
            if self.is_stale:
                self.is_stale = False
                self.stales += 1
                if self.stales < 3:
                    continue
            if self._await_change(looked.revision, min(rest, _WAIT_SLICE)):
                time.sleep(_REST)
            else:
                time.sleep(min(pause, max(0.0, deadline - time.monotonic())))
                pause = min(pause * _PAUSE_GROWS, _LONGEST_PAUSE)

    def _await_change(self, revision: str, seconds: float) -> bool:
        """Whether that was waited for."""
        if not revision or "desktop_ax_wait" in self._runtime.lacks:
            return False
        begin = time.monotonic()
        try:
            changed = self._runtime.desktop_ax_wait(revision, round(seconds * 1000))["changed"]
        except UnknownMethod:
            self._runtime.lacks.add("desktop_ax_wait")
            return False
        return changed or time.monotonic() - begin > seconds / 2

    def describe(self) -> str:
        """The window at the end, for a message."""
        slow = ""
        if self.slowest > _SLOW:
            slow = f"(looking at the window took up to {self.slowest:.1f} s: its application may hang)\n"
        outline = self.last.outline(max_characters=OUTLINE_CHARACTERS) if self.last else "nothing"
        title = f" {self.last.target.name}" if self.last and self.last.target.name else ""
        return f"{slow}At the end there was{title}:\n{outline}"


def failure(what: str, selector: Selector, looks: Looks, found: Sequence[Element], why: Optional[str] = None) -> NotInTime:
    """The error for an element that was not there, not alone or not ready."""
    within = f"within {looks.seconds:g} s"
    kind: Type[NotInTime]
    if not found:
        kind, message = ElementNotFound, f"nothing matches {selector} {within}"
    elif len(found) > 1:
        kind, message = AmbiguousElement, (
            f"{len(found)} elements match {selector} {within}; one is needed: use exact=True, a locator inside another, filter() or "
            f"nth()\n{lines(found)}")
    else:
        kind, message = ElementNotReady, f"{selector} {why or 'was not ready'} {within}\n{lines(found)}"
    return kind(f"{what}: {message}\n{looks.describe()}")


def lines(elements: Sequence[Element], most: int = 10) -> str:
    """Elements as lines, with what they are in."""
    listed: List[str] = []
    for element in elements[:most]:
        place = next((above for above in element.ancestors() if above.label), None)
        listed.append(f"  {element.ref} {body(element)}" + (f" in {body(place)}" if place else ""))
    if len(elements) > most:
        listed.append(f"  … {len(elements) - most} more")
    return "\n".join(listed)
