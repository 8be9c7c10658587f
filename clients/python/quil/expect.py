"""Expectations: what an element should come to be like; they wait for it."""
from __future__ import annotations

from typing import Callable, List, Optional, Sequence

from .errors import ExpectationFailed
from .locator import Locator
from .looking import Looks, lines
from .matching import Text, one_of, shown, squeezed
from .observation import Element

_CUT = 500  # characters of a value that an observation has


def expect(locator: Locator, timeout: Optional[float] = None) -> "Expectation":
    """Begins an expectation: `expect(desktop.get_by_id("total")).to_have_value("42")`. Each waits `timeout` seconds at most (the
    desktop's own when not said), and then raises ExpectationFailed, an AssertionError, which tells what was there instead."""
    return Expectation(locator, timeout)


class Expectation:
    """What a locator's element should come to be like; each method waits for it, or raises ExpectationFailed."""

    def __init__(self, locator: Locator, timeout: Optional[float] = None) -> None:
        self._locator = locator
        self._timeout = timeout

    def to_have_value(self, value: Text) -> None:
        """Its whole value is this text, or matches this regular expression."""
        self._of_one(f"has the value {shown(value)}", lambda element: _is(self._whole_value(element), value))

    def to_have_text(self, text: Text) -> None:
        """What there is to read (see Locator.text) is this text, but for white space; or matches this regular expression."""
        self._of_one(f"has the text {shown(text)}", lambda element: _is(
            element.text if not isinstance(text, str) else squeezed(element.text), text if not isinstance(text, str) else squeezed(text)))

    def to_contain_text(self, text: str) -> None:
        """This text, without regard to case and white space, is in what there is to read."""
        self._of_one(f"has {shown(text)} in its text", lambda element: squeezed(text).lower() in squeezed(element.text).lower())

    def to_be_visible(self) -> None:
        """Exactly one is to be seen."""
        self._of_one("is to be seen", lambda element: element.is_visible)

    def to_be_enabled(self) -> None:
        """Exactly one matches and is enabled; what does not say counts as enabled."""
        self._of_one("is enabled", lambda element: element.enabled is not False)

    def to_be_disabled(self) -> None:
        """Exactly one matches and is disabled."""
        self._of_one("is disabled", lambda element: element.enabled is False)

    def to_be_checked(self, checked: bool = True) -> None:
        """A check box, radio button or the like is on (or off)."""
        self._of_one(f"is {'on' if checked else 'off'}", lambda element: element.checked is checked)

    def to_be_gone(self) -> None:
        """Nothing that matches is to be seen."""
        self._of_all("is gone", lambda found: not any(element.is_visible for element in found))

    def to_have_count(self, count: int) -> None:
        """So many match."""
        self._of_all(f"is there {count} times", lambda found: len(found) == count)

    def _whole_value(self, element: Element) -> str:
        return element.value if len(element.value) < _CUT else self._locator.value(timeout=0)

    def _of_one(self, what: str, holds: Callable[[Element], bool]) -> None:
        def of_one(found: List[Element]) -> bool:
            candidates: Sequence[Element] = one_of(found)
            return len(candidates) == 1 and holds(candidates[0])
        self._of_all(what, of_one)

    def _of_all(self, what: str, holds: Callable[[List[Element]], bool]) -> None:
        desktop = self._locator._desktop
        looks = Looks(desktop.runtime, desktop.timeout if self._timeout is None else self._timeout)
        found: List[Element] = []
        for look in looks:
            desktop.last = look
            found = self._locator._selector.select(look.elements)
            if holds(found):
                return
        there = f"there was instead:\n{lines(found)}" if found else "nothing matches it"
        raise ExpectationFailed(f"expected that {self._locator._selector} {what}; after {looks.seconds:g} s {there}\n{looks.describe()}")


def _is(text: str, wanted: Text) -> bool:
    return text == wanted if isinstance(wanted, str) else wanted.search(text) is not None
