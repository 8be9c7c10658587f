"""Which elements a locator means: criteria on single elements, and the steps that a locator consists of."""
from __future__ import annotations

from dataclasses import dataclass, replace
from typing import Iterable, List, Optional, Pattern, Sequence, Tuple, Union

from . import roles
from .observation import Element

Text = Union[str, Pattern[str]]


def squeezed(text: str) -> str:
    """White space at both ends taken away, each other run of it one space."""
    return " ".join(text.split())


def matches(text: str, wanted: Text, exact: bool = False) -> bool:
    """Whether a text is as wanted. A string is looked for anywhere in it, without regard to case and to how much white space there
    is; with `exact` it is the whole text, in its case. A regular expression is searched in the text as it is."""
    if not isinstance(wanted, str):
        return wanted.search(text) is not None
    if exact:
        return squeezed(text) == squeezed(wanted)
    return squeezed(wanted).lower() in squeezed(text).lower()


def shown(wanted: Optional[Text]) -> str:
    return f'"{wanted}"' if isinstance(wanted, str) else f"/{wanted.pattern}/" if wanted is not None else ""


@dataclass(frozen=True)
class Criteria:
    """What is asked of one element; criteria that are None ask nothing."""

    role: Optional[str] = None
    name: Optional[Text] = None
    description: Optional[Text] = None
    value: Optional[Text] = None
    id: Optional[Text] = None
    enabled: Optional[bool] = None
    text: Optional[Text] = None
    exact: bool = False

    def __post_init__(self) -> None:
        if self.role is not None:
            roles.natives(self.role)  # refuses what is no role

    def accept(self, element: Element) -> bool:
        return ((self.role is None or any(native == element.role and parent in ("", element.parent.role if element.parent else None)
                                          for parent, native in roles.natives(self.role)))
                and (self.name is None or matches(element.label, self.name, self.exact))
                and (self.description is None or matches(element.description, self.description, self.exact))
                and (self.value is None or matches(element.value, self.value, self.exact))
                and (self.id is None or matches(element.id, self.id, True))
                and (self.enabled is None or (element.enabled is not False) == self.enabled)
                and (self.text is None or matches(element.label, self.text, self.exact)
                     or matches(element.value, self.text, self.exact)))

    def among(self, candidates: Iterable[Element]) -> List[Element]:
        found = [element for element in candidates if self.accept(element)]
        if self.text is None:
            return found
        # A text is often there twice: on what is operated, and on the text in it; on a box, and on what the box is about.
        matched = set(map(id, found))
        found = [element for element in found if element.is_interactive or not any(
            above.is_interactive and id(above) in matched for above in element.ancestors())]
        matched = set(map(id, found))
        return [element for element in found if element.is_interactive or not any(
            id(below) in matched for below in element.descendants())]

    def __str__(self) -> str:
        parts = [f"{member}={shown(getattr(self, member))}" for member in ("name", "description", "value", "id", "text")
                 if getattr(self, member) is not None]
        if self.enabled is not None:
            parts.append(f"enabled={str(self.enabled).lower()}")
        if self.exact:
            parts.append("exact")
        return " ".join([self.role or "element", *parts])


@dataclass(frozen=True)
class Filter:
    """Keeps elements in which, or in whose descendants, a text is."""

    has_text: Text

    def keep(self, element: Element) -> bool:
        return any(matches(text, self.has_text) for one in (element, *element.descendants()) for text in (one.label, one.value))

    def __str__(self) -> str:
        return f"with the text {shown(self.has_text)} in it"


@dataclass(frozen=True)
class Nth:
    """Keeps one element, counted from 0, or from the end when negative."""

    index: int

    def __str__(self) -> str:
        return {0: "the first", -1: "the last"}.get(self.index, f"number {self.index}")


Step = Union[Criteria, Filter, Nth]


@dataclass(frozen=True)
class Selector:
    """The steps of a locator, each applied to what the ones before have left. Criteria look at what is below each of these elements,
    the first ones at the whole tree; the others keep some of the elements."""

    steps: Tuple[Step, ...] = ()

    def then(self, step: Step) -> "Selector":
        return replace(self, steps=(*self.steps, step))

    def select(self, elements: Sequence[Element]) -> List[Element]:
        """All elements that are meant, in the order of the tree."""
        found: Optional[List[Element]] = None
        for step in self.steps:
            if isinstance(step, Criteria):
                found = step.among(elements if found is None else self._below(found))
            elif isinstance(step, Filter):
                found = [element for element in found or [] if step.keep(element)]
            else:
                found = (found or [])[step.index:][:1] if step.index >= -len(found or []) else []
        return list(elements) if found is None else found

    @staticmethod
    def _below(scopes: Sequence[Element]) -> List[Element]:
        inside = {below.ref: below for scope in scopes for below in scope.descendants()}
        return [inside[ref] for ref in sorted(inside)]

    def __str__(self) -> str:
        return " » ".join(map(str, self.steps)) or "any element"


def one_of(found: Sequence[Element]) -> Sequence[Element]:
    """The candidates for an action: of what matches, what is to be seen; all of it when nothing is."""
    return [element for element in found if element.is_visible] or found
