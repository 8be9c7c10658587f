"""Short names of roles, from the table that all clients share (roles.json, whose first member explains the others)."""
from __future__ import annotations

import json
import os
from typing import FrozenSet, List, Tuple

from .errors import InvalidParameter

with open(os.path.join(os.path.dirname(os.path.abspath(__file__)), "roles.json"), encoding="utf-8") as _file:
    _TABLE = json.load(_file)


def _set(name: str) -> FrozenSet[str]:
    return frozenset(_TABLE[name])


INTERACTIVE = _set("interactive")
LAYOUT = _set("layout")
DECORATION = _set("decoration")
TEXTS = _set("texts")
STATES = _set("states")
POINTED = _set("pointed")

NAMES: FrozenSet[str] = frozenset(_TABLE["names"])
"""The short names that get_by_role takes; native roles such as "AXButton" are taken as well."""


def natives(role: str) -> List[Tuple[str, str]]:
    """The native roles that a short name stands for, each with the role of the parent that is asked for, "" for any.
    Raises InvalidParameter for a name that is no role."""
    if role.startswith("AX"):
        return [("", role)]
    if role not in NAMES:
        raise InvalidParameter("role", f"there is no role {role!r}; there are {', '.join(sorted(NAMES))}, and native roles such as AXButton")
    pairs = []
    for entry in _TABLE["names"][role]:
        parent, _, native = entry.rpartition(" > ")
        pairs.append((parent, native))
    return pairs


def shown(native: str) -> str:
    """The short name by which a native role is shown; the role itself when it has none."""
    return str(_TABLE["shown"].get(native, native))
