#!/usr/bin/env python3
"""Checks the direction of includes against the table in src/folders.txt: a folder includes its own
headers and those of the folders that its row names, which stand in rows above it (so there is no
circle), and nothing above the platform folders includes a header of an operating system.

usage: includes_check.py [--print]    (--print: the table as the code has it)
"""
import re
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent / "src"
TABLE = SOURCE / "folders.txt"
# Of the system's headers the C++ library's have no suffix; these are libraries that any folder may use.
PORTABLE = {"nlohmann/json.hpp", "utf8proc.h"}


def read_table():
    rows = {}
    for line in TABLE.read_text().splitlines():
        line = line.partition("#")[0].strip()
        if line:
            folder, _, allowed = line.partition(":")
            rows[folder.strip()] = allowed.split()
    return rows


def includes():
    """Of every source file: its folder, its own path, and each header that it includes."""
    for path in sorted(SOURCE.rglob("*")):
        if path.suffix in (".h", ".cpp", ".mm"):
            folder = path.parent.relative_to(SOURCE).as_posix()
            for match in re.finditer(r'^#\s*(?:include|import) ([<"])(.+?)[>"]', path.read_text(), re.M):
                yield folder, path.relative_to(SOURCE), match[1] == '"', match[2]


def main():
    rows = read_table()
    order = list(rows)
    faults, used = [], {}
    for folder, path, is_own, header in includes():
        used.setdefault(folder, set())
        if is_own:
            target = Path(header).parent.as_posix()
            if not (SOURCE / header).is_file():
                faults.append(f"src/{path} includes {header}: there is no such header")
            elif target != folder:
                used[folder].add(target)
                if target not in rows.get(folder, []):
                    faults.append(f"src/{path} includes {header}: {folder} may not use {target}")
        elif "." in header and not folder.startswith("platform/") and header not in PORTABLE:
            faults.append(f"src/{path} includes <{header}>: only a backend uses the system's headers")
    if "--print" in sys.argv:
        for folder in sorted(used):
            print(f"{folder}: {' '.join(sorted(used[folder]))}")
        return 0
    for folder, allowed in rows.items():
        for target in allowed:
            if target not in used.get(folder, ()):
                faults.append(f"{TABLE.name}: {folder} no longer uses {target}; take it out")
            if target not in order[:order.index(folder)]:
                faults.append(f"{TABLE.name}: {target} has to stand in a row above {folder}")
        if folder not in used:
            faults.append(f"{TABLE.name}: there is no source file in {folder}; take the row out")
    faults += [f"{TABLE.name}: a row for {folder} is missing" for folder in used if folder not in rows]
    print("\n".join(faults) or "every include points down")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
