"""One look at the tree: elements with parents and children, to search, to print and to compare."""
from __future__ import annotations

from dataclasses import dataclass, field
from typing import Any, Dict, Iterator, List, Mapping, NamedTuple, Optional, Union

from . import roles
from .protocol import Node, State


class Rectangle(NamedTuple):
    """Global screen coordinates: points, the origin at the top left of the main display, y growing downward."""

    x: float
    y: float
    width: float
    height: float

    @property
    def center(self) -> "tuple[float, float]":
        """The place in its middle."""
        return self.x + self.width / 2, self.y + self.height / 2


@dataclass(frozen=True)
class Target:
    """The application and window in front; what is unknown is None."""

    bundle_identifier: Optional[str] = None
    name: Optional[str] = None
    window_title: Optional[str] = None
    pid: Optional[int] = None
    executable_path: Optional[str] = None
    signing_identity: Optional[str] = None

    @classmethod
    def of(cls, members: Mapping[str, Any]) -> "Target":
        return cls(members.get("bundleIdentifier"), members.get("name"), members.get("windowTitle"), members.get("pid"),
                   members.get("executablePath"), members.get("signingIdentity"))


@dataclass(eq=False, repr=False)
class Element:
    """An element as it was when it was observed. Acting goes through locators, which look again."""

    token: str
    """Its name towards the runtime, as long as the tree does not change."""
    ref: int
    """Its place in the observation, from 0; outlines show it."""
    role: str
    """The native role, such as "AXButton"."""
    name: str = ""
    description: str = ""
    value: str = ""
    id: str = ""
    """The identifier that its program gave it."""
    enabled: Optional[bool] = None
    """None when unknown."""
    bounds: Optional[Rectangle] = None
    """None for what is not to be seen."""
    actions: List[str] = field(default_factory=list)
    parent: Optional["Element"] = None
    children: List["Element"] = field(default_factory=list)

    @classmethod
    def of(cls, node: Node, ref: int) -> "Element":
        bounds = node.get("bounds")
        return cls(node["token"], ref, node["role"], node.get("name", ""), node.get("description", ""), node.get("value", ""),
                   node.get("automationId", ""), node.get("enabled"),
                   Rectangle(bounds["x"], bounds["y"], bounds["width"], bounds["height"]) if bounds else None,
                   list(node.get("actions", [])))

    @property
    def label(self) -> str:
        """What the user would call it: its name; else, of a text, the text; else its description."""
        return self.name or (self.value if self.role in roles.TEXTS else "") or self.description

    @property
    def text(self) -> str:
        """What there is to read: its label, else its value, else the texts in it, one a line."""
        return self.label or self.value or "\n".join(one.label for one in self.descendants() if one.role in roles.TEXTS and one.label)

    @property
    def short_role(self) -> str:
        """The role's short name, such as "button"; the native role where there is none."""
        return roles.shown(self.role)

    @property
    def is_visible(self) -> bool:
        """Whether it is to be seen, as far as the platform tells: what is covered counts as visible."""
        return self.bounds is not None

    @property
    def is_interactive(self) -> bool:
        """Whether the user can operate it."""
        return self.role in roles.INTERACTIVE or "AXPress" in self.actions

    @property
    def checked(self) -> Optional[bool]:
        """Whether it is on; None for what is neither on nor off."""
        return {"0": False, "1": True}.get(self.value) if self.role in roles.STATES else None

    def descendants(self) -> Iterator["Element"]:
        """All below it, parents before their children."""
        for child in self.children:
            yield child
            yield from child.descendants()

    def ancestors(self) -> Iterator["Element"]:
        """Its parent, and so on up to the root."""
        above = self.parent
        while above is not None:
            yield above
            above = above.parent

    def __repr__(self) -> str:
        from .outline import body
        return f"<{self.ref} {body(self)}>"


class Observation:
    """One look at the frontmost application's focused window."""

    def __init__(self, state: Union[State, Mapping[str, Any]]) -> None:
        self.revision: str = state["revision"]
        self.truncated: bool = state["truncated"]
        """Whether the runtime left elements out: it gives 4,000 at most."""
        self.text: str = state["axText"]
        self.target = Target.of(state.get("target", {}))
        self.elements: List[Element] = []
        """All elements, each parent before its children."""
        by_token: Dict[str, Element] = {}
        for ref, node in enumerate(state["nodes"]):
            element = Element.of(node, ref)
            element.parent = by_token.get(element.token.rpartition(".")[0])
            if element.parent:
                element.parent.children.append(element)
            by_token[element.token] = element
            self.elements.append(element)
        self._by_token = by_token

    @property
    def root(self) -> Optional[Element]:
        """The focused window, or the application; None with nothing in front."""
        return self.elements[0] if self.elements else None

    def by_ref(self, ref: int) -> Element:
        """The element with the reference that an outline shows."""
        return self.elements[ref]

    def by_token(self, token: str) -> Optional[Element]:
        """The element with this token; None when there is none."""
        return self._by_token.get(token)

    def find(self, **criteria: Any) -> List[Element]:
        """The elements that match, as Desktop.locator describes."""
        from .matching import Criteria
        return Criteria(**criteria).among(self.elements)

    def outline(self, **options: Any) -> str:
        """The tree as compact text; quil.outline.outline describes the options."""
        from .outline import outline
        return outline(self, **options)

    def diff(self, before: "Observation") -> str:
        """What has changed since an earlier observation, as lines; "" when nothing that an outline shows has."""
        from .diff import diff
        return diff(before, self)
