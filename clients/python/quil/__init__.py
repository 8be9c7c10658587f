"""Quil: a desktop that a program can use.

    from quil import Desktop, expect

    with Desktop() as desktop:
        desktop.launch("galculator.desktop")
        desktop.get_by_role("textbox").fill("6*7")
        desktop.locator(name="=", exact=True).click()
        expect(desktop.get_by_role("textbox")).to_have_value("42")

Desktop is where to begin. All times are in seconds, all places in points of global screen coordinates (the origin at the top left of
the main display, y growing downward) unless said otherwise.
"""
from .desktop import Application, Desktop, Glimpse, Window
from .errors import (AmbiguousElement, CommandFailed, ElementNotFound, ElementNotReady, ExpectationFailed, InvalidParameter, NotInTime,
                     PermissionRequired, QuilError, RecordingUnavailable, Refused, RuntimeGone, RuntimeNotFound, StaleSnapshot,
                     UnknownMethod, UnsupportedOperation)
from .expect import Expectation, expect
from .input import Clipboard, Fraction, Keyboard, Mouse
from .locator import Locator
from .observation import Element, Observation, Rectangle, Target
from .pictures import Picture
from .process import find_runtime
from .recording import Recording
from .runtime import Runtime

__version__ = "0.1.0"
__all__ = [
    "AmbiguousElement", "Application", "Clipboard", "CommandFailed", "Desktop", "Element", "ElementNotFound", "ElementNotReady",
    "Expectation", "ExpectationFailed", "Fraction", "Glimpse", "InvalidParameter", "Keyboard", "Locator", "Mouse", "NotInTime",
    "Observation", "PermissionRequired", "Picture", "QuilError", "Recording", "RecordingUnavailable", "Rectangle", "Refused", "Runtime",
    "RuntimeGone", "RuntimeNotFound", "StaleSnapshot", "Target", "UnknownMethod", "UnsupportedOperation", "Window", "expect",
    "find_runtime",
]
