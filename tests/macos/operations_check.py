#!/usr/bin/env python3
"""The table of platform operations in docs/platforms.md against the sources: every operation of the
interfaces has a row, and the Mac's calls in it are those that the Mac backend makes."""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


def rows():
    """The operations and the Mac's calls of each row, as text."""
    section = (ROOT / "docs/platforms.md").read_text().split("## Platform operations")[1]
    for line in section.splitlines():
        cells = line.split("|")
        if len(cells) > 4 and not cells[1].strip().startswith(("**", "operation", "---")):
            yield cells[1], cells[2]


def declared_operations():
    """The virtual functions of the interfaces, but for the accessors that gather the services."""
    for header in (ROOT / "src/platform").glob("*.h"):
        if header.name not in ("platform.h", "ax_observation.h"):
            yield from re.findall(r"virtual [^~=;(]*?(\w+)\(", header.read_text())


def main():
    table = list(rows())
    documented = set(re.findall(r"\w+", " ".join(operations for operations, _ in table)))
    missing = sorted(set(declared_operations()) - documented)
    sources = "\n".join(path.read_text() for path in (ROOT / "src/platform/macos").iterdir())
    sources += "\n".join(path.read_text() for path in (ROOT / "src/platform/posix").iterdir())
    calls = {word for _, cell in table for code in re.findall(r"`([^`]+)`", cell)
             for word in re.findall(r"\w+", code)}
    unknown = sorted(call for call in calls if not re.search(rf"\b{call}\b", sources))
    # Functions that no row tells of; types and constants are not calls.
    made = set(re.findall(r"\b((?:AX|CG|CFRunLoop|CFMachPort|SecCode|Is)[A-Z]\w+)\(", sources))
    untold = sorted(made - calls - {"AXUIElementGetTypeID", "AXValueGetTypeID", "CGPointMake",
                                    "CFRunLoopGetMain", "CFRunLoopSourceCreate"})
    for problem, names in [("without a row", missing), ("not called by the Mac backend", unknown),
                           ("called, but in no row", untold)]:
        if names:
            print(f"{problem}:", *names)
    print(f"{len(table)} rows, {len(calls)} names")
    return 1 if missing or unknown or untold or len(table) < 20 else 0


if __name__ == "__main__":
    sys.exit(main())
