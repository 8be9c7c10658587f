"""What has changed between two observations, as the lines of an outline; clients/README.md defines format and matching."""
from __future__ import annotations

from typing import Callable, Dict, List, Tuple

from .matching import squeezed
from .observation import Element, Observation
from .outline import Entry, body, entries, outline, parts


def diff(before: Observation, after: Observation) -> str:
    """The changes, one line each: `+` is new, `-` is gone, `~` is different. "" when nothing that an outline shows has changed. When
    another window is in front, that is said, and its outline follows."""
    if not after.root:
        return "" if not before.root else "= nothing is in front any more"
    old, new = (entries(observation.root)[0] if observation.root else None for observation in (before, after))
    assert new
    if old is None or old.element.role != new.element.role or before.target.pid != after.target.pid:
        return _another(after)
    lines: List[str] = []
    unpaired = _compare(old, new, lines)
    if old.element.label != new.element.label and 2 * unpaired > old.count() + new.count():
        return _another(after)
    return "\n".join(lines)


def _another(after: Observation) -> str:
    return f"= now in front: {outline(after)}"


def _compare(old: Entry, new: Entry, lines: List[str]) -> int:
    """Adds the changes to the lines; gives how many elements are in one of the two observations only."""
    unpaired = 0
    if body(old.element) != body(new.element):
        was = [a for a, b in zip(parts(old.element), parts(new.element)) if a != b and a]
        lines.append(f"~ {new.element.ref} {body(new.element)}" + (f" (was {' '.join(was)})" if was else ""))
    pairs = _pairs(old.inside, new.inside)
    kept = {id(a) for a, _ in pairs.values()}
    for entry in old.inside:
        if id(entry) not in kept:
            unpaired += 1 + entry.count()
            inside = f" … {entry.count()} inside" if entry.inside else ""
            lines.append(f"- {entry.element.ref} {body(entry.element)}{inside}")
    for entry in new.inside:
        if id(entry) in pairs:
            unpaired += _compare(*pairs[id(entry)], lines)
        else:
            unpaired += 1 + entry.count()
            _added(entry, 0, lines)
    return unpaired


def _added(entry: Entry, depth: int, lines: List[str]) -> None:
    lines.append(f"+ {' ' * (2 * depth)}{entry.element.ref} {body(entry.element)}")
    for inside in entry.inside:
        _added(inside, depth + 1, lines)


def _pairs(old: List[Entry], new: List[Entry]) -> Dict[int, Tuple[Entry, Entry]]:
    """Which of the new entries is which of the old ones: first those with the same role and identifier, then those with the same role
    and label, then those with the same role; of several alike, in their order."""
    keys: List[Callable[[Element], Tuple[str, ...]]] = [
        lambda element: (element.role, element.id) if element.id else (),
        lambda element: (element.role, squeezed(element.label)),
        lambda element: (element.role,)]
    pairs: Dict[int, Tuple[Entry, Entry]] = {}
    for key in keys:
        waiting: Dict[Tuple[str, ...], List[Entry]] = {}
        taken = {id(a) for a, _ in pairs.values()}
        for entry in old:
            if id(entry) not in taken and key(entry.element):
                waiting.setdefault(key(entry.element), []).append(entry)
        for entry in new:
            if id(entry) not in pairs and waiting.get(key(entry.element)):
                pairs[id(entry)] = (waiting[key(entry.element)].pop(0), entry)
    return pairs
