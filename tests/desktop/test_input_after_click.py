"""Text goes to where the click before it went, and two clicks are a double click: in every toolkit,
under several window managers, on an idle and on a busy machine.

usage: test_input_after_click.py [TOOLKIT...] [--times N] [--busy N]    by hand; N programs keep the
                                                                      machine busy
"""
import argparse
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

from desktop_tools import (CHROMIUM, PYTHON, SUPPORT, Cleanups, Program, change, geometry, output,
                           until)
from quil_host import Host

WIDTH, HEIGHT = map(int, re.findall(r"dimensions:\s+(\d+)x(\d+)", output("xdpyinfo"))[0])
DOUBLE_CLICK_SECONDS = 0.55
PAGE = """<meta charset=utf-8><title>["",""]</title><style>body {margin: 0; display: flex}
textarea {flex: 1; height: 97vh; border: 1px solid}</style><textarea id=a></textarea>
<textarea id=b></textarea><script>const tell = () => document.title = JSON.stringify([a.value, b.value]);
oninput = tell; onkeydown = e => { if (e.key == 'F9') { a.value = b.value = ''; tell(); } }</script>"""


def point(x, y):
    return {"x": (x + 0.5) / WIDTH, "y": (y + 0.5) / HEIGHT}


class TwoWindows:
    """Two text areas in windows of their own."""

    def __init__(self, test, toolkit, *options):
        command = [PYTHON, "-B", os.path.join(SUPPORT, "fields_app.py"), toolkit, *options]
        if toolkit == "swing":
            classes = test.enterContext(tempfile.TemporaryDirectory())
            output("javac", "-d", classes, os.path.join(SUPPORT, "FieldsApp.java"))
            command = ["java", "-cp", classes, "FieldsApp"]
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=subprocess.DEVNULL, text=True)
        test.addCleanup(self.end)
        windows = [int(until(lambda: output("xdotool", "search", "--onlyvisible", "--name",
                                            f"^{title}$", check=False), title).split()[0])
                   for title in ("one", "two")]
        for i, window in enumerate(windows):
            output("xdotool", "windowmove", str(window), str(20 + i * 500), "60", check=False)
        self.titles = "one", "two"
        until(lambda: all(geometry(w)[2] > 100 for w in windows), "the size")
        time.sleep(0.5)
        self.places = [geometry(window) for window in windows]

    def ask(self, what):
        self.process.stdin.write(what + "\n")
        self.process.stdin.flush()
        return json.loads(self.process.stdout.readline())

    def texts(self):
        return self.ask("texts")

    def clear(self, _host):
        self.ask("clear")

    def end(self):
        self.process.kill()
        self.process.wait()
        self.process.stdin.close()
        self.process.stdout.close()


class Browser:
    """Two text areas of a page, whose title tells what they hold."""

    def __init__(self, test, browser):
        folder = test.enterContext(tempfile.TemporaryDirectory(ignore_cleanup_errors=True))
        with open(os.path.join(folder, "page.html"), "w") as page:
            page.write(PAGE)
        address = f"file://{folder}/page.html"
        if browser == "chromium":
            command = [*CHROMIUM, f"--user-data-dir={folder}/profile", "--test-type", f"--app={address}"]
        else:
            os.mkdir(f"{folder}/profile")
            command = ["firefox", "--no-remote", "--profile", f"{folder}/profile", "--kiosk", address]
        self.program = Program(test, *command)
        self.titles = None, None
        self.window = int(until(lambda: output("xdotool", "search", "--onlyvisible", "--name",
                                               r'^\["","', check=False), "the page", 60).split()[0])
        time.sleep(2)
        x, y, width, height = geometry(self.window)
        self.places = [(x, y, width // 2, height), (x + width // 2, y, width // 2, height)]

    def texts(self):
        title = change(self.window, "_NET_WM_NAME").partition('"')[2].replace('\\"', '"')
        return json.loads(title[:title.rindex("]") + 1])

    def clear(self, host):
        host.result("desktop_keypress", combo="f9")
        until(lambda: self.texts() == ["", ""], "the empty fields")


def start(test, toolkit):
    return (Browser if toolkit in ("chromium", "firefox") else TwoWindows)(test, toolkit)


def middle(place):
    x, y, width, height = place
    return point(x + width // 2, y + height // 2)


def text_after_click(host, program, turn, apart):
    """What went wrong, if anything."""
    index = turn % 2
    wanted = ["", ""]
    wanted[index] = "hello"
    if apart:
        answer = host.result("desktop_click", point=middle(program.places[index]))
        host.result("desktop_type", text="hello")
    else:
        answer = host.result("desktop_type", text="hello", point=middle(program.places[index]))
    problem = ""
    title = answer["target"].get("windowTitle")
    if title and program.titles[index] not in (None, title):
        problem += f"target {answer['target']} "
    deadline = time.monotonic() + 3
    while sum(map(len, program.texts())) < 5 and time.monotonic() < deadline:
        time.sleep(0.02)
    if program.texts() != wanted:
        problem += f"{program.texts()} for {wanted}"
    program.clear(host)
    return problem


def double_click(host, program, turn):
    index = turn % 2
    x, y, _, height = program.places[index]
    host.result("desktop_type", text="w" * 30, point=middle(program.places[index]))
    top = point(x + 20, y + 10)
    time.sleep(DOUBLE_CLICK_SECONDS)  # or toolkits count this click in
    host.result("desktop_double_click", point=top)
    host.result("desktop_type", text="X")
    wanted = ["", ""]
    wanted[index] = "X"
    deadline = time.monotonic() + 3
    while program.texts() != wanted and time.monotonic() < deadline:
        time.sleep(0.02)
    problem = "" if program.texts() == wanted else f"double click: {program.texts()}"
    program.clear(host)
    return problem


def run(test, toolkit, times):
    host = test.enterContext(Host())
    program = start(test, toolkit)
    problems = []
    for turn in range(times):
        for problem in (text_after_click(host, program, turn, False),
                        text_after_click(host, program, turn + 1, True),
                        double_click(host, program, turn)):
            if problem:
                problems.append((turn, problem))
    return problems


class AfterClick(unittest.TestCase):
    def test_text_and_double_clicks(self):
        for toolkit in ("gtk3", "qt6", "chromium"):
            with self.subTest(toolkit), Cleanups() as cleanups:
                if toolkit == "chromium" and not shutil.which(toolkit):
                    self.skipTest("chromium is not installed")
                self.assertEqual(run(cleanups, toolkit, 2), [])


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("toolkits", nargs="*")
    parser.add_argument("--times", type=int, default=20)
    parser.add_argument("--busy", type=int, default=0)
    options, _ = parser.parse_known_args()
    if not options.toolkits:
        unittest.main()
    with Cleanups() as cleanups:
        for _ in range(options.busy):
            Program(cleanups, PYTHON, "-c", "while True: pass", has_window=False)
        for toolkit in options.toolkits:
            with Cleanups() as test:
                began = time.monotonic()
                problems = run(test, toolkit, options.times)
                print(os.environ.get("QUIL_DESKTOP_WINDOW_MANAGER", "openbox"), toolkit, len(problems), "of", 3 * options.times,
                      f"{time.monotonic() - began:.1f} s", problems[:3], flush=True)
