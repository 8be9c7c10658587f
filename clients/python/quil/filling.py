"""Entering a text and choosing an option: actions of several steps, each of which looks again."""
from __future__ import annotations

import time
from typing import Optional

from .errors import CommandFailed, ElementNotReady
from .locator import Locator, NotReady
from .matching import Criteria, Selector, Text
from .observation import Element

_ACCEPTED_SECONDS = 1.0  # after which a value that was taken in silence counts as ignored


def fill(locator: Locator, text: str, timeout: Optional[float]) -> None:
    desktop = locator._desktop
    seconds = desktop.timeout if timeout is None else timeout
    deadline = time.monotonic() + seconds

    def set_value(element: Element) -> bool:
        try:
            desktop.runtime.desktop_ax_action(element.token, "set_value", text)
            return True
        except CommandFailed:
            return False

    def check(element: Element) -> None:
        value = locator._read(element)
        if not _is_same(value, text):
            raise NotReady(f'was given "{text}" but has "{value}"')

    if locator._act("fill", set_value, seconds):
        try:
            return locator._act("fill", check, min(_ACCEPTED_SECONDS, seconds), enabled=False)
        except ElementNotReady:
            pass
    locator._act("fill", locator._focus, max(0.0, deadline - time.monotonic()))
    desktop.keyboard.press("cmd+a")
    if text:
        desktop.keyboard.type(text)
    else:
        desktop.keyboard.press("delete")
    locator._act("fill", check, max(_ACCEPTED_SECONDS, deadline - time.monotonic()), enabled=False)


def _is_same(value: str, text: str) -> bool:
    """Whether the element has what it was given. A password is known by its length alone, a number may be spelled otherwise."""
    try:
        return value == text or (bool(text) and value == "•" * len(text)) or float(value) == float(text)
    except ValueError:
        return False


def select(locator: Locator, option: Text, timeout: Optional[float]) -> None:
    desktop = locator._desktop
    seconds = desktop.timeout if timeout is None else timeout
    deadline = time.monotonic() + seconds
    wanted = Criteria(role="option", name=option, exact=True)
    inside = locator._selector.then(wanted)

    def choose(element: Element) -> bool:
        found = inside.select(desktop.last.elements) if desktop.last else []
        # What is in the tree can be pressed where it is, also while it is not to be seen.
        if len(found) == 1 and (found[0].is_visible or "AXPress" in found[0].actions):
            locator._click(found[0])
            return True
        locator._click(element)
        return False

    if not locator._act("select", choose, seconds):
        Locator(desktop, Selector((wanted,))).click(timeout=max(_ACCEPTED_SECONDS, deadline - time.monotonic()))
