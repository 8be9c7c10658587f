"""Locators: what an element is like, looked up anew whenever something is done with it."""
from __future__ import annotations

from typing import TYPE_CHECKING, Callable, List, Optional, Sequence, TypeVar

from . import roles
from .errors import CommandFailed, StaleSnapshot, UnsupportedOperation
from .looking import Looks, failure
from .matching import Criteria, Filter, Nth, Selector, Text, one_of
from .observation import Element, Rectangle
from .runtime import Runtime

if TYPE_CHECKING:
    from .desktop import Desktop

T = TypeVar("T")
_NOT_OFFERED = ("AXError -25205", "AXError -25206")


class NotReady(Exception):
    """The element cannot take the action yet; the text says why."""


class Locators:
    """What locators can be made from: the desktop, and other locators."""

    def _with(self, criteria: Criteria) -> "Locator":
        raise NotImplementedError

    def get_by_role(self, role: str, name: Optional[Text] = None, *, exact: bool = False, enabled: Optional[bool] = None,
                    value: Optional[Text] = None) -> "Locator":
        """Elements of a role, by a short name ("button", "checkbox", "textbox", "menuitem" …, see clients/README.md) or a native one
        ("AXButton")."""
        return self._with(Criteria(role=role, name=name, exact=exact, enabled=enabled, value=value))

    def get_by_text(self, text: Text, *, exact: bool = False) -> "Locator":
        """Elements whose name or value has this text in it: of a box and what is in it, what is in it; of a button and the text on
        it, the button."""
        return self._with(Criteria(text=text, exact=exact))

    def get_by_id(self, id: Text) -> "Locator":
        """Elements with this identifier, which their program gave them."""
        return self._with(Criteria(id=id))

    def locator(self, *, role: Optional[str] = None, name: Optional[Text] = None, description: Optional[Text] = None,
                value: Optional[Text] = None, id: Optional[Text] = None, enabled: Optional[bool] = None, exact: bool = False) -> "Locator":
        """Elements that are as said in every respect. A text is looked for anywhere, without regard to case; with `exact` it is the
        whole; a compiled regular expression is searched."""
        return self._with(Criteria(role, name, description, value, id, enabled, None, exact))


class Locator(Locators):
    """Names elements by what they are like. Nothing is looked up before something is done.

    Each action waits until exactly one element matches and is enabled, `timeout` seconds at most (the desktop's own, 5 s at first,
    when not said), and then raises ElementNotFound, AmbiguousElement or ElementNotReady, which tell what was there instead. Elements
    that are not to be seen count only when nothing else matches. An action is never done to another element than the one that was
    found: when the window changes in between, the locator looks again."""

    def __init__(self, desktop: "Desktop", selector: Selector) -> None:
        self._desktop = desktop
        self._selector = selector

    def __repr__(self) -> str:
        return f"<locator {self._selector}>"

    def _with(self, criteria: Criteria) -> "Locator":
        return Locator(self._desktop, self._selector.then(criteria))

    def filter(self, *, has_text: Text) -> "Locator":
        """Those in which this text is."""
        return Locator(self._desktop, self._selector.then(Filter(has_text)))

    def nth(self, index: int) -> "Locator":
        """One of them, counted from 0; from the end when negative."""
        return Locator(self._desktop, self._selector.then(Nth(index)))

    @property
    def first(self) -> "Locator":
        """The first of them."""
        return self.nth(0)

    @property
    def last(self) -> "Locator":
        """The last of them."""
        return self.nth(-1)

    def elements(self) -> List[Element]:
        """All that match now, without waiting."""
        return self._selector.select(self._desktop.observe().elements)

    def all(self) -> "List[Locator]":
        """A locator for each that matches now."""
        return [self.nth(index) for index in range(self.count())]

    def count(self) -> int:
        """How many match now."""
        return len(self.elements())

    # Reading

    def exists(self) -> bool:
        """Whether any matches now."""
        return self.count() > 0

    def is_visible(self) -> bool:
        """Whether any that matches now is to be seen."""
        return any(element.is_visible for element in self.elements())

    def element(self, timeout: Optional[float] = None) -> Element:
        """The element, once exactly one matches."""
        return self._act("element", lambda element: element, timeout, enabled=False)

    def is_enabled(self, timeout: Optional[float] = None) -> bool:
        """Whether it is enabled; what does not say counts as enabled."""
        return self.element(timeout).enabled is not False

    def is_checked(self, timeout: Optional[float] = None) -> bool:
        """Whether a check box, radio button or the like is on."""
        return self.element(timeout).checked is True

    def name(self, timeout: Optional[float] = None) -> str:
        """What it is called, "" when it has no name."""
        return self.element(timeout).label

    def text(self, timeout: Optional[float] = None) -> str:
        """What there is to read: its name, else its value, else the texts in it."""
        return self.element(timeout).text

    def value(self, timeout: Optional[float] = None) -> str:
        """Its whole value, "" when it has none."""
        return self._act("value", self._read, timeout, enabled=False)

    def bounds(self, timeout: Optional[float] = None) -> Rectangle:
        """Where it is, once it is to be seen, in global screen coordinates."""
        return self._act("bounds", _visible, timeout, enabled=False)

    # Acting

    def click(self, *, pointer: bool = False, button: str = "left", modifiers: Optional[str] = None, force: bool = False,
              timeout: Optional[float] = None) -> None:
        """Presses it where it offers that, else (and with `pointer`, another button than "left", or modifiers such as "ctrl+shift")
        clicks its centre with the pointer. With `force` also what says that it is disabled, as the cells of some spreadsheets do."""
        if button != "left" or modifiers:
            self._mouse_click("click", button, modifiers, timeout, force)
        else:
            self._act("click", lambda element: self._click(element, pointer), timeout, enabled=not force)

    def double_click(self, *, timeout: Optional[float] = None) -> None:
        """Two clicks of the pointer on its centre."""
        self._act("double_click", lambda element: self._desktop.extension(
            lambda: self._runtime.desktop_mouse_click(_seen(element), count=2), "such a click",
            lambda: self._runtime.desktop_double_click(_seen(element))), timeout)

    def right_click(self, *, modifiers: Optional[str] = None, timeout: Optional[float] = None) -> None:
        """A click with the right button on its centre."""
        self._mouse_click("right_click", "right", modifiers, timeout)

    def hover(self, *, timeout: Optional[float] = None) -> None:
        """Moves the pointer to its centre."""
        self._act("hover", lambda element: self._runtime.desktop_scroll(0, _seen(element)), timeout, enabled=False)

    def scroll(self, lines: int, *, horizontal: bool = False, timeout: Optional[float] = None) -> None:
        """Turns the wheel over its centre: up (left, when horizontal) when positive."""
        axis = "horizontal" if horizontal else None
        self._act("scroll", lambda element: self._runtime.desktop_scroll(lines, _seen(element), axis=axis), timeout, enabled=False)

    def focus(self, *, timeout: Optional[float] = None) -> None:
        """Gives it the keyboard focus; a text field that does not take it is clicked."""
        self._act("focus", self._focus, timeout)

    def press(self, combo: str, *, timeout: Optional[float] = None) -> None:
        """Gives it the keyboard focus and presses a key with modifiers, such as "ctrl+s"."""
        self.focus(timeout=timeout)
        self._runtime.desktop_keypress(combo)

    def type(self, text: str, *, timeout: Optional[float] = None) -> None:
        """Gives it the keyboard focus and types a text where its cursor then is."""
        def type_it(element: Element) -> None:
            try:
                self._runtime.desktop_type(text, element.token)
            except CommandFailed:
                self._focus(element)
                self._runtime.desktop_type(text)
        self._act("type", type_it, timeout)

    def fill(self, text: str, *, timeout: Optional[float] = None) -> None:
        """Replaces its text: sets the value, or where the application does not take it selects all and types; then reads it back.
        Raises ElementNotReady when it does not have the text in the end."""
        from .filling import fill
        fill(self, text, timeout)

    def check(self, *, timeout: Optional[float] = None) -> None:
        """Turns it on, when it is not."""
        self._turn(True, timeout)

    def uncheck(self, *, timeout: Optional[float] = None) -> None:
        """Turns it off, when it is not."""
        self._turn(False, timeout)

    def select(self, option: Text, *, timeout: Optional[float] = None) -> None:
        """Chooses an option of a combo box or list by its name."""
        from .filling import select
        select(self, option, timeout)

    def drag_to(self, other: "Locator", *, timeout: Optional[float] = None) -> None:
        """Drags its centre to the centre of another element."""
        def drag(element: Element) -> None:
            looked = self._desktop.last
            others = one_of(other._selector.select(looked.elements)) if looked else []
            if len(others) != 1:
                raise NotReady(f"has {len(others) or 'no'} elements {other._selector} to be dragged to")
            self._desktop.mouse.drag([_visible(element).center, _visible(others[0]).center])
        self._act("drag_to", drag, timeout)

    def wait_for(self, state: str = "visible", timeout: Optional[float] = None) -> None:
        """Waits until it is "visible", "gone" (nothing that matches is to be seen) or "enabled"."""
        from .expect import expect
        expectation = expect(self, timeout)
        {"visible": expectation.to_be_visible, "gone": expectation.to_be_gone, "enabled": expectation.to_be_enabled}[state]()

    # Inside

    @property
    def _runtime(self) -> Runtime:
        return self._desktop.runtime

    def _act(self, what: str, action: Callable[[Element], T], timeout: Optional[float], enabled: bool = True) -> T:
        """Does something with the element, once it is there, alone and enabled."""
        looks = Looks(self._desktop.runtime, self._desktop.timeout if timeout is None else timeout)
        found: Sequence[Element] = []
        why: Optional[str] = None
        for look in looks:
            self._desktop.last = look
            found = one_of(self._selector.select(look.elements))
            if len(found) != 1:
                continue
            if enabled and found[0].enabled is False:
                why = "was disabled"
                continue
            try:
                return action(found[0])
            except StaleSnapshot:
                looks.is_stale = True
                why = "was there, but the window changed again and again between looking and acting"
            except NotReady as reason:
                why = str(reason)
            except UnsupportedOperation as error:
                if error.message == "no frontmost application":
                    continue
                if error.message != "element has no bounds":
                    raise
                why = "was not to be seen"
            except CommandFailed as error:
                raise CommandFailed(error.method, f"the application refuses it for {found[0]!r} ({error.message})",
                                    error.code) from error
        raise failure(what, self._selector, looks, found, why)

    def _click(self, element: Element, pointer: bool = False) -> None:
        if "AXPress" in element.actions and not pointer and not (element.role in roles.POINTED and element.is_visible):
            try:
                self._runtime.desktop_ax_action(element.token, "invoke")
                return
            except CommandFailed as error:
                if error.message not in _NOT_OFFERED or not element.is_visible:
                    raise
        self._runtime.desktop_click(_seen(element))

    def _mouse_click(self, what: str, button: str, modifiers: Optional[str], timeout: Optional[float],
                     force: bool = False) -> None:
        self._act(what, lambda element: self._desktop.extension(
            lambda: self._runtime.desktop_mouse_click(_seen(element), button=button, modifiers=modifiers), "such a click"), timeout, enabled=not force)

    def _focus(self, element: Element) -> None:
        try:
            self._runtime.desktop_ax_action(element.token, "focus")
        except CommandFailed:
            if element.role not in roles.POINTED or not element.is_visible:
                raise
            self._runtime.desktop_click(element.token)

    def _read(self, element: Element) -> str:
        return self._runtime.desktop_read_value(element.token)["value"] or ""

    def _turn(self, on: bool, timeout: Optional[float]) -> None:
        what = "check" if on else "uncheck"

        def turn(element: Element) -> bool:
            if element.role not in roles.STATES:
                raise CommandFailed(what, f"{element!r} is nothing that is on or off")
            if element.checked is on:
                return False
            self._click(element)
            return True
        if self._act(what, turn, timeout):
            from .expect import expect
            expect(self, timeout).to_be_checked(on)


def _seen(element: Element) -> str:
    """The token of an element that the pointer can go to."""
    _visible(element)
    return element.token


def _visible(element: Element) -> Rectangle:
    if element.bounds is None:
        raise NotReady("was not to be seen")
    return element.bounds
