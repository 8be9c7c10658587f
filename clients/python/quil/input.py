"""The pointer, the keyboard and the clipboard, wherever the focus is."""
from __future__ import annotations

from dataclasses import dataclass
from typing import TYPE_CHECKING, Optional, Sequence, Tuple, Union

from .protocol import Point

if TYPE_CHECKING:
    from .desktop import Desktop


@dataclass(frozen=True)
class Fraction:
    """A place as fractions, from 0 to 1, of the virtual screen, the smallest rectangle around all displays."""

    x: float
    y: float


Place = Union[Fraction, Tuple[float, float]]
"""A Fraction, or x and y in global screen coordinates: points from the top left of the main display."""


class Mouse:
    """The pointer. Places in global screen coordinates need a runtime that has desktop_displays_list; fractions don't."""

    def __init__(self, desktop: "Desktop") -> None:
        self._desktop = desktop

    def _points(self, *places: Place) -> "list[Point]":
        screen = None
        points: "list[Point]" = []
        for place in places:
            if isinstance(place, Fraction):
                points.append({"x": place.x, "y": place.y})
                continue
            screen = screen or self._desktop.extension(self._desktop.runtime.desktop_displays_list, "a place in points")["virtualScreen"]
            points.append({"x": (place[0] - screen["x"]) / screen["width"], "y": (place[1] - screen["y"]) / screen["height"]})
        return points

    def move(self, place: Place) -> None:
        """Moves the pointer to a place."""
        self._desktop.runtime.desktop_move(*self._points(place))

    def click(self, place: Place, *, button: str = "left", count: int = 1, modifiers: Optional[str] = None) -> None:
        """Clicks a place `count` times (1 to 3)."""
        runtime, point = self._desktop.runtime, self._points(place)[0]
        is_simple = button == "left" and not modifiers
        if is_simple and count == 1:
            runtime.desktop_click(point=point)
        else:
            # Which does not count clicks before it in, as programs may do with desktop_double_click.
            self._desktop.extension(lambda: runtime.desktop_mouse_click(
                point=point, button=button, count=count, modifiers=modifiers), "such a click",
                (lambda: runtime.desktop_double_click(point=point)) if is_simple and count == 2 else None)

    def scroll(self, place: Place, lines: int, *, horizontal: bool = False) -> None:
        """Turns the wheel at a place: up (left, when horizontal) when positive."""
        self._desktop.runtime.desktop_scroll(lines, point=self._points(place)[0], axis="horizontal" if horizontal else None)

    def drag(self, path: Sequence[Place], *, button: str = "left", modifiers: Optional[str] = None, seconds: Optional[float] = None) -> None:
        """Presses a button at the first place, moves along the path and releases it at the last."""
        runtime, points = self._desktop.runtime, self._points(*path)
        duration = None if seconds is None else round(seconds * 1000)
        is_simple = len(points) == 2 and button == "left" and not modifiers
        self._desktop.extension(lambda: runtime.desktop_mouse_drag(points, button, modifiers, duration), "such a drag",
                                (lambda: runtime.desktop_drag(*points)) if is_simple else None)


class Keyboard:
    """The keyboard, wherever the focus is."""

    def __init__(self, desktop: "Desktop") -> None:
        self._desktop = desktop

    def press(self, combo: str) -> None:
        """Presses a key with modifiers: "escape", "ctrl+s", "cmd+shift+z". Keys are physical; docs/protocol.md lists the names."""
        self._desktop.runtime.desktop_keypress(combo)

    def type(self, text: str) -> None:
        """Types any text, whatever the keyboard layout."""
        self._desktop.runtime.desktop_type(text)

    def paste(self, text: str) -> None:
        """Enters a text by way of the clipboard, whose text is put back."""
        self._desktop.runtime.desktop_paste(text)


class Clipboard:
    """The clipboard's text. Needs a runtime that has desktop_clipboard_read and desktop_clipboard_write."""

    def __init__(self, desktop: "Desktop") -> None:
        self._desktop = desktop

    def read(self) -> Optional[str]:
        """The text; None when there is none."""
        return self._desktop.extension(self._desktop.runtime.desktop_clipboard_read, "the clipboard")["text"]

    def write(self, text: str) -> None:
        """Puts a text there; it stays at least as long as the runtime lives."""
        self._desktop.extension(lambda: self._desktop.runtime.desktop_clipboard_write(text), "the clipboard")
