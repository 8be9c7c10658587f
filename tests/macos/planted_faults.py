#!/usr/bin/env python3
"""Plants one fault after the other in the Mac backend and tells which conversation catches it.

    QUIL_BUILD_DIR=build/mac tests/macos/planted_faults.py [--sample | WORD...]

Without arguments all of them, which takes some minutes; with words those whose description holds one
of them; --sample takes every twelfth. A fault is a source file with one place in another form: the
file alone is compiled anew, beside the tree, and linked to what has been built. Fails when a fault is
not caught, or its place is no longer there.
"""
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

TESTS = pathlib.Path(__file__).resolve().parent
ROOT = TESTS.parent.parent
BACKEND = ROOT / "src/platform/macos"
BUILD = pathlib.Path(os.environ["QUIL_BUILD_DIR"]).resolve()
# From the quickest to the slowest; the first that fails ends the search.
CONVERSATIONS = [["test_mac.py", "-k", "all_methods"], ["test_mac.py", "-k", "OtherProcesses"],
                 ["test_mac.py", "-k", "recordings"], ["test_protocol.py"],
                 *(["test_mac.py", "-k", name] for name in ("any_call", "SilentProcesses", "grows"))]


def written_faults():
    """Of each block of planted_faults.txt: what is wrong, the file and its text with the fault."""
    for block in (TESTS / "planted_faults.txt").read_text().split("\n\n# ")[1:]:
        what, name, *lines = block.splitlines()
        right, wrong = ("\n".join(line[1:] for line in lines if line.startswith(sign)) for sign in "-+")
        text = (BACKEND / name).read_text()
        yield what, name, text.replace(right, wrong, 1) if right in text else None


def faults_of_ownership():
    """Each reference that the backend takes over is shared in its stead, and never released; each that
    it shares is taken over, and released once too often."""
    for path in sorted(BACKEND.glob("*.mm")):
        text = path.read_text()
        for place in re.finditer(r"(?<=>::)(adopt|share)(?=\()", text):
            line = text[:place.start()].count("\n") + 1
            other = {"adopt": "share", "share": "adopt"}[place[0]]
            yield (f"{other} instead of {place[0]} in line {line} of {path.name}", path.name,
                   text[:place.start()] + other + text[place.end():])


def build_with(source, folder):
    """An executable with that file in place of the backend's file of the same name."""
    entry = next(entry for entry in json.loads((BUILD / "compile_commands.json").read_text())
                 if pathlib.Path(entry["file"]) == BACKEND / source.name
                 and "quil_mac_backend" in entry["command"])
    command = shlex.split(entry["command"])
    right_object = command[command.index("-o") + 1]
    wrong_object = str(folder / "fault.o")
    command = [wrong_object if word == right_object else str(source) if word == entry["file"] else word
               for word in command]
    # What a fault leaves unused is no reason to refuse it.
    subprocess.run([*command, "-w"], cwd=BUILD, check=True, capture_output=True)
    link = subprocess.run(["ninja", "-t", "commands", "-s", "quil-mac-fake"], cwd=BUILD, check=True,
                          capture_output=True, text=True).stdout.strip()
    fake = folder / "quil-mac-fake"
    link = link.replace(right_object, wrong_object).replace("-o quil-mac-fake", f"-o {fake}")
    subprocess.run(link, cwd=BUILD, shell=True, check=True, capture_output=True)
    return fake


def caught_by(fake):
    environment = {**os.environ, "QUIL_BUILD_DIR": str(BUILD), "QUIL_MAC_FAKE": str(fake),
                   "PYTHONPATH": f"{TESTS.parent / 'support'}:{ROOT / 'clients/python'}"}
    for conversation in CONVERSATIONS:
        done = subprocess.run([sys.executable, "-B", *conversation, "-f"], cwd=TESTS,
                              env=environment, capture_output=True, text=True)
        if "_FailedTest" in done.stderr:
            raise SystemExit(done.stderr)
        if done.returncode != 0:
            lines = done.stdout.splitlines() + done.stderr.splitlines()
            return next((line for line in lines if line.startswith(("FAIL:", "ERROR:"))), "?")
    return None


def main():
    words = sys.argv[1:]
    faults = [*written_faults(), *faults_of_ownership()]
    faults = faults[::12] if words == ["--sample"] else [
        fault for fault in faults if not words or any(word in fault[0] for word in words)]
    missed = 0
    for what, name, text in faults:
        if text is None:
            print(f"{what}: the line is no longer in {name}", flush=True)
            missed += 1
            continue
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder) / name
            source.write_text(text)
            catcher = caught_by(build_with(source, pathlib.Path(folder)))
        print(f"{what}: {catcher or 'NOT CAUGHT'}", flush=True)
        missed += catcher is None
    print(f"{len(faults)} faults, {missed} not caught")
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
