"""Text goes to where the click before it went, whole; two clicks are a double click; a paste brings
the text; what a killed runtime leaves harms nobody: in every toolkit, under several window managers,
on an idle and on a busy machine.

QUIL_INPUT=PROGRAMS      those of field_programs.py to be tried on this desktop (default a sample); "all" for all of
                         them under every window manager
QUIL_INPUT_TIMES=NUMBER  so often (default 2)
QUIL_INPUT_BUSY=NUMBER   so many endless loops keep the machine busy (default 0)
"""
import collections
import os
import random
import re
import subprocess
import tempfile
import time
import unittest

from desktop_tools import PYTHON, Cleanups, Program
from field_programs import PROGRAMS, missing_for, start_program
from quil_host import Host

WINDOW_MANAGERS = ("openbox", "xfwm4", "metacity", "i3", "twm", "")
WANTED = os.environ.get("QUIL_INPUT", "gtk3 qt6 chromium")
DOUBLE_CLICK_SECONDS = 0.55
LONG = "abcdefghij" * 30
# Without one, i3 asks the user questions and twm lets the user place every window.
CONFIGURATIONS = {
    "i3": ("-c", "focus_follows_mouse no\n"),
    "twm": ("-f", "RandomPlacement\n" + "".join(f'{use}Font "fixed"\n' for use in (
        "Title", "Menu", "Icon", "Resize", "IconManager")))}
# GTK 4 takes the focus when it shows a window, and without a window manager no click moves it on.
FIXED_FOCUS = "", "gtk4"


class Turns:
    """One round of everything with a program; each returns what went wrong, or nothing."""

    def __init__(self, host, program):
        self.host = host
        self.program = program

    def arrives(self, index, text, seconds=4):
        wanted = [text if place == index else "" for place in range(len(self.program.places))]
        deadline = time.monotonic() + seconds
        while (found := self.program.texts()) != wanted and time.monotonic() < deadline:
            time.sleep(0.02)
        return "" if found == wanted else f"{found} for {wanted}"

    def names(self, answer, index):
        title = answer["target"].get("windowTitle")
        is_right = not title or self.program.titles[index] in (None, title)
        return "" if is_right else f"target {answer['target']} "

    def at_once(self, index):
        answer = self.host.result("desktop_type", text="hello", point=self.program.middle(index))
        return self.names(answer, index) + self.arrives(index, "hello")

    def apart(self, index):
        answer = self.host.result("desktop_click", point=self.program.middle(index))
        self.host.result("desktop_type", text=self.program.exact)
        return self.names(answer, index) + self.arrives(index, self.program.exact)

    def double_click(self, index):
        self.host.result("desktop_type", text="w" * 30, point=self.program.middle(index))
        self.arrives(index, "w" * 30)
        time.sleep(DOUBLE_CLICK_SECONDS)  # or toolkits count this click in
        self.host.result("desktop_double_click", point=self.program.top(index))
        self.host.result("desktop_type", text="X")
        return self.arrives(index, "X")

    def paste(self, index):
        self.host.result("desktop_clipboard_write", text="old")
        self.host.result("desktop_paste", text="näw😀", point=self.program.middle(index))
        problem = self.arrives(index, "näw😀")
        text = self.host.result("desktop_clipboard_read")["text"]
        return problem + ("" if text == "old" else f"then clipboard {text!r}")

    def kill(self, index):
        with Host() as victim:
            victim.result("ping")
            victim.send("desktop_type", {"text": LONG, "point": self.program.middle(index)})
            time.sleep(random.uniform(0, 0.1))
            victim.process.kill()
            victim.process.wait()
        before = self.program.texts()[index]
        # One that has begun before may act between events that the server still takes from the dead one.
        with Host() as following:
            # Elsewhere, or it is a double click, which selects what is there.
            following.result("desktop_type", text="|", point=self.program.middle(index, 40))
        deadline = time.monotonic() + 4
        while "|" not in (found := self.program.texts())[index] and time.monotonic() < deadline:
            time.sleep(0.02)
        text = found[index].replace("|", "", 1)
        # A key that was down may have repeated until it was released.
        whole = re.sub(r"(.)\1+$", r"\1", text)
        others = found[:index] + found[index + 1:]
        is_right = (LONG.startswith(whole) and text.startswith(before) and "|" in found[index]
                    and not "".join(others))
        return "" if is_right else f"after a kill {found}, before {before}"


def window_manager():
    return os.environ.get("QUIL_DESKTOP_WINDOW_MANAGER", "openbox").partition(" ")[0]


def reason_to_skip(name):
    if (window_manager(), name) == FIXED_FOCUS:
        return "the focus of two windows cannot be moved"
    return missing_for(name) and f"{missing_for(name)} is not installed"


def run(test, name, times):
    """The number of wrong rounds of each kind, and what went wrong in them."""
    program = start_program(test, name)
    problems = collections.defaultdict(list)
    for turn in range(times):
        with Host() as host:
            host.result("ping")
            turns = Turns(host, program)
            for kind, check in (("type", turns.at_once), ("type", turns.apart),
                                ("double click", turns.double_click), ("paste", turns.paste),
                                ("kill", turns.kill)):
                if kind not in program.can:
                    continue
                turn += 1
                problem = check(turn % len(program.places))
                if problem:
                    problems[check.__name__].append(problem)
                program.clear(host)
    return problems


class Matrix(unittest.TestCase):
    @unittest.skipIf(WANTED == "all", "the whole matrix runs")
    def test_programs(self):
        for _ in range(int(os.environ.get("QUIL_INPUT_BUSY", 0))):
            Program(self, PYTHON, "-c", "while True: pass", has_window=False)
        for name in WANTED.split():
            with self.subTest(name), Cleanups() as cleanups:
                if reason_to_skip(name):
                    self.skipTest(reason_to_skip(name))
                problems = run(cleanups, name, int(os.environ.get("QUIL_INPUT_TIMES", 2)))
                self.assertFalse(problems, {kind: (len(found), found[:2]) for kind, found in problems.items()})

    @unittest.skipUnless(WANTED == "all", "QUIL_INPUT is not \"all\"")
    def test_all(self):
        with_desktop = os.path.join(os.path.dirname(__file__), "../../scripts/with-desktop")
        folder = self.enterContext(tempfile.TemporaryDirectory())
        for manager in WINDOW_MANAGERS:
            command = manager
            if manager in CONFIGURATIONS:
                option, text = CONFIGURATIONS[manager]
                with open(os.path.join(folder, manager), "w") as file:
                    file.write(text)
                command = f"{manager} {option} {file.name}"
            for busy in "03":
                with self.subTest(manager=manager, busy=busy):
                    environment = {"QUIL_INPUT_TIMES": "10", **os.environ, "QUIL_DESKTOP_WINDOW_MANAGER": command,
                                   "QUIL_INPUT": " ".join(PROGRAMS), "QUIL_INPUT_BUSY": busy}
                    done = subprocess.run([with_desktop, PYTHON, "-B", __file__], env=environment)
                    self.assertEqual(done.returncode, 0)


if __name__ == "__main__":
    unittest.main()
