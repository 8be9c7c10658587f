#!/usr/bin/env python3
"""Compiles the Mac backend, without a Mac, against the declarations in include/.

Nothing is linked or run: this shows that every call of the backend fits our declaration of it, that
it overrides every operation of the interfaces, and that it compiles without a warning under
automatic reference counting, with the types of the Mac's own processors: a BOOL is a bool, 64 bits
are a long long. Exit status 77 when there is no clang++.
"""

import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

TESTS = pathlib.Path(__file__).resolve().parent
ROOT = TESTS.parent.parent
INCLUDE = TESTS / "include"
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wshadow", "-Wnon-virtual-dtor",
            "-Wunguarded-availability", "-Wno-gnu-include-next", "-Werror"]
# This machine's C and C++ headers stand in for the Mac's. They expect to be read for this machine:
# so what a compiler for the Mac would not tell them is given here.
LIBRARY = ["-nostdinc++", "-D_GNU_SOURCE", "-U__nonnull", "-D__x86_64__",
           "-D__builtin_ia32_pause()=((void)0)"]


def system_headers():
    """The folders in which this machine's C++ compiler looks for headers."""
    output = subprocess.run(["c++", "-xc++", "-E", "-v", os.devnull], capture_output=True, text=True,
                            check=True).stderr
    listed = output.split("#include <...> search starts here:")[1].split("End of search list.")[0]
    folders = [pathlib.Path(line.strip()).resolve() for line in listed.splitlines() if line.strip()]
    # clang brings its own headers for the compiler's part.
    return [folder for folder in folders if not (folder / "stddef.h").exists()
            or (folder / "stdlib.h").exists()]


def change_header(headers, folder, name, pattern, replacement):
    """Writes a C library's header into a folder that is searched before this machine's."""
    text = next(path for path in (header / name for header in headers) if path.exists()).read_text()
    text, changes = re.subn(pattern, replacement, text)
    assert changes, f"the C library's {name} reads in another way"
    (folder / name).parent.mkdir(exist_ok=True)
    (folder / name).write_text(text)


def mac_types(headers, folder):
    """On a Mac 64 bits are a long long, and not a long as sizes and NSInteger are; there are no
    floating-point numbers of 128 bits."""
    change_header(headers, folder, "bits/types.h", r"long int (__u?int64_t;)", r"long long int \1")
    change_header(headers, folder, "bits/floatn.h", r"(define __HAVE_FLOAT128) 1", r"\1 0")
    return folder


def complaints(source, headers):
    command = ["clang++", "-target", "arm64-apple-macosx13", "-fsyntax-only", "-x", "objective-c++",
               "-std=c++20", "-fobjc-arc", "-fblocks", *WARNINGS, *LIBRARY,
               "-I", ROOT / "src", "-isystem", INCLUDE]
    for folder in headers:
        command += ["-isystem", folder]
    done = subprocess.run([*command, source], capture_output=True, text=True)
    return done.stderr or done.returncode


def main():
    if not shutil.which("clang++"):
        print("no clang++: the Mac backend was not compiled")
        return 77
    sources = sorted((ROOT / "src/platform/macos").rglob("*.mm"))
    headers = system_headers()
    with (tempfile.TemporaryDirectory() as folder,
          concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool):
        headers.insert(0, mac_types(headers, pathlib.Path(folder)))
        found = list(filter(None, pool.map(lambda source: complaints(source, headers), sources)))
    print(*found, sep="\n", end="")
    print(f"{len(sources)} files: {len(found)} with complaints")
    return 1 if found or len(sources) < 2 else 0


if __name__ == "__main__":
    sys.exit(main())
