"""The compact text of a tree, for people and models; clients/README.md defines its format."""
from __future__ import annotations

from dataclasses import dataclass, field
from typing import Iterator, List, Optional, Tuple, Union

from . import roles
from .matching import squeezed
from .observation import Element, Observation

MAX_TEXT = 80
"""Characters of a name, value or description that a line shows."""


def quoted(text: str) -> str:
    """A text on one line in quotes, cut to MAX_TEXT characters; how many are left out stands behind."""
    text = squeezed(text)
    rest = len(text) - MAX_TEXT
    if rest > 0:
        text = text[:MAX_TEXT] + "…"
    escaped = text.replace("\\", "\\\\").replace('"', '\\"')
    return f'"{escaped}"' + (f" +{rest}" if rest > 0 else "")


def parts(element: Element) -> Tuple[str, str, str, str, str, str]:
    """What a line says of an element: its role, state, label, value, description, and whether it is disabled or hidden; "" for what
    there is not to say."""
    label = squeezed(element.label)
    value, description = squeezed(element.value), squeezed(element.description)
    state = {"0": "[ ]", "1": "[x]", "2": "[~]"}.get(value, "") if element.role in roles.STATES else ""
    marks = (["disabled"] if element.enabled is False else []) + (["hidden"] if _hides(element) else [])
    return (element.short_role, state, quoted(label) if label else "",
            f"= {quoted(value)}" if value and not state and value != label else "",
            f"({quoted(description)})" if description and description not in (label, value) else "", " ".join(marks))


def body(element: Element) -> str:
    """An element's line without indentation and reference."""
    return " ".join(part for part in parts(element) if part)


@dataclass
class Entry:
    """An element that an outline shows, and those that it shows in it."""

    element: Element
    inside: List["Entry"] = field(default_factory=list)

    def count(self) -> int:
        """How many elements are shown in it."""
        return sum(1 + entry.count() for entry in self.inside)


def entries(element: Element, interactive_only: bool = False, is_root: bool = True,
            above: Optional[Element] = None) -> List[Entry]:
    """What is shown of an element and what is below it. `above` is the nearest element around it that is shown."""
    is_shown = is_root or _is_shown(element, interactive_only, above)
    inside = [entry for child in element.children
              for entry in entries(child, interactive_only, False, element if is_shown else above)]
    if not is_shown and inside and _hides(element):
        is_shown = True  # once, instead of on each element in it
    return [Entry(element, inside)] if is_shown else inside


def _hides(element: Element) -> bool:
    """Whether it is the outermost of what is not to be seen."""
    return not element.is_visible and element.parent is not None and element.parent.is_visible


def _is_shown(element: Element, interactive_only: bool, above: Optional[Element]) -> bool:
    if element.is_interactive:
        return True
    if interactive_only:
        return False
    if element.role in roles.DECORATION:
        return bool(element.name)
    if element.role in roles.TEXTS:
        label = squeezed(element.label)
        return bool(label) and not (above and label in (squeezed(above.label), squeezed(above.value)))
    if element.role in roles.LAYOUT:
        return bool(element.label or element.value or element.id)
    return True


def outline(observation: Observation, *, interactive_only: bool = False, max_depth: Optional[int] = None,
            within: Union[int, Element, None] = None, max_characters: Optional[int] = None) -> str:
    """The tree as text, one line an element: `12 button "OK" disabled`. The number is the element's reference.

    interactive_only: only what the user can operate, and the window.
    max_depth: how many levels below the first line.
    within: an element or its reference; only it and what is in it.
    max_characters: the text is cut to so many; a last line says what is left out and how to get it.
    """
    if not observation.elements:
        return "nothing is in front"
    root = within if isinstance(within, Element) else observation.elements[within or 0]
    lines: List[Tuple[str, int]] = []
    deeper = 0
    for entry, depth in _walk(entries(root, interactive_only), 0, max_depth):
        line = f"{' ' * (2 * depth)}{entry.element.ref} {body(entry.element)}"
        if depth == max_depth and entry.inside:
            deeper += entry.count()
            line += f" … {entry.count()} inside"
        lines.append((line, entry.element.ref))
    notes = []
    if deeper:
        notes.append(f"… {deeper} elements below level {max_depth} are left out: raise max_depth, or name one with within")
    if observation.truncated:
        notes.append("… the window has more elements than are observed; those at its end are missing")
    return "\n".join(_cut(lines, notes, max_characters))


def _walk(level: List[Entry], depth: int, max_depth: Optional[int]) -> Iterator[Tuple[Entry, int]]:
    for entry in level:
        yield entry, depth
        if max_depth is None or depth < max_depth:
            yield from _walk(entry.inside, depth + 1, max_depth)


def _cut(lines: List[Tuple[str, int]], notes: List[str], max_characters: Optional[int]) -> List[str]:
    """As many lines as fit with the notes; when some don't, a note says so."""
    texts = [line for line, _ in lines]
    if max_characters is None or len("\n".join(texts + notes)) <= max_characters:
        return texts + notes
    kept = len(texts)
    while True:
        rest = [f"… {len(texts) - kept} more elements, from {lines[kept][1] if kept < len(lines) else 0} on, do not fit in "
                f"{max_characters} characters: raise max_characters, or use within, max_depth or interactive_only", *notes]
        if kept == 0 or (kept < len(texts) and len("\n".join(texts[:kept] + rest)) <= max_characters):
            return texts[:kept] + rest
        kept -= 1
