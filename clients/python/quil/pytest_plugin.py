"""pytest: a `desktop` fixture, and on a failure a picture and the outline of what was there.

Options: --quil-runtime COMMAND, the runtime with its arguments (else the one of the package or on PATH); --quil-failures FOLDER, where
pictures and outlines go (default quil-failures).
"""
from __future__ import annotations

import os
import re
import shlex
from typing import Any, Iterator, Optional

import pytest

from .desktop import Desktop
from .errors import QuilError
from .looking import OUTLINE_CHARACTERS


def pytest_addoption(parser: Any) -> None:
    group = parser.getgroup("quil")
    group.addoption("--quil-runtime", metavar="COMMAND", help="the runtime with its arguments")
    group.addoption("--quil-failures", metavar="FOLDER", default="quil-failures", help="where pictures and outlines of failures go")


@pytest.fixture
def desktop(request: Any) -> Iterator[Desktop]:
    """A Desktop for one test. A test or class that is marked `@pytest.mark.quil(timeout=10)` passes that on to it."""
    command: Optional[str] = request.config.getoption("--quil-runtime")
    marker = request.node.get_closest_marker("quil")
    with Desktop(shlex.split(command) if command else None, **(marker.kwargs if marker else {})) as one:
        yield one


def pytest_configure(config: Any) -> None:
    config.addinivalue_line("markers", "quil(**options): options of the Desktop that the fixture makes")


def _makereport(item: Any, call: Any) -> Iterator[None]:
    outcome: Any = yield
    report = outcome.get_result()
    one = getattr(item, "funcargs", {}).get("desktop")
    if report.when == "call" and report.failed and isinstance(one, Desktop) and one.runtime.is_running:
        report.sections.append(("quil: what was there", _keep(one, item)))


pytest_runtest_makereport = pytest.hookimpl(hookwrapper=True)(_makereport)


def _keep(one: Desktop, item: Any) -> str:
    """Writes what is to be seen into files; what the report says of it."""
    folder = os.path.join(item.config.getoption("--quil-failures"), re.sub(r"[^\w.-]+", "_", item.nodeid))
    os.makedirs(folder, exist_ok=True)
    said = []
    try:
        observation = one.observe()
        with open(os.path.join(folder, "outline.txt"), "w", encoding="utf-8") as file:
            file.write(observation.outline() + "\n")
        said.append(observation.outline(max_characters=OUTLINE_CHARACTERS))
        one.screenshot().save(os.path.join(folder, "picture.png"))
    except QuilError as error:
        said.append(str(error))
    return "\n".join([*said, f"(in {folder})"])
