"""What tests on a real desktop need: programs to look at, and what other tools say of them."""
import contextlib
import json
import os
import queue
import re
import signal
import subprocess
import threading
import time
import unittest

from quil_host import Host

SUPPORT = os.path.dirname(os.path.abspath(__file__))
PYTHON = "/usr/bin/python3"
# As it runs on a private desktop; to be followed by the folder for its profile (--user-data-dir).
CHROMIUM = ("chromium", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
            "--disable-background-networking", "--disable-component-update", "--disable-sync")


def firefox(folder):
    """The command for Firefox with its profile in that folder; it starts only where it can write at home, too."""
    return ["env", f"HOME={folder}", "firefox", "--no-remote", "--profile", folder]


def output(*command, check=True, **options):
    """The output of a command that must succeed."""
    return subprocess.run(command, check=check, stdout=subprocess.PIPE, text=True, timeout=60,
                          **options).stdout


def until(condition, what, seconds=30):
    """Waits for something that announces itself by no event; its value."""
    deadline = time.monotonic() + seconds
    while not (value := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"{what}: not within {seconds} s")
        time.sleep(0.02)
    return value


class Cleanups(contextlib.ExitStack):
    """Stands in for a test, outside of one: ends what was started with it."""

    addCleanup = contextlib.ExitStack.callback
    enterContext = contextlib.ExitStack.enter_context


class Program:
    """A program that runs as long as the test, with all that it starts: one that shows a window, unless
    said otherwise. One that `talks` does so by lines of JSON."""

    def __init__(self, test, *command, has_window=True, talks=False, env=None, stdout=subprocess.DEVNULL):
        pipe = subprocess.PIPE if talks else None
        self.process = subprocess.Popen(command, env=env, stdin=pipe or subprocess.DEVNULL, stdout=pipe or stdout,
                                        stderr=subprocess.DEVNULL, start_new_session=True, text=True)
        self.pid = self.process.pid
        self.lines = queue.SimpleQueue()
        if talks:
            threading.Thread(target=self.read, daemon=True).start()
        test.addCleanup(self.end)
        self.window = self.find_window(env) if has_window else None

    def find_window(self, env=None):
        # Not with --sync: the search fails when some other window vanishes under it.
        search = ("xdotool", "search", "--onlyvisible", "--all", "--pid", str(self.pid),
                  "--name", ".")
        return int(until(lambda: output(*search, check=False, env=env, stderr=subprocess.DEVNULL),
                         f"a window of {self.process.args[0]}").split()[0])

    def read(self):
        with self.process.stdout as lines:
            for line in lines:
                self.lines.put(json.loads(line))

    def ask(self, what):
        """What the program answers."""
        self.process.stdin.write(what + "\n")
        self.process.stdin.flush()
        return self.lines.get(timeout=60)

    def until_told(self, **wanted):
        """Waits until the program says this of itself."""
        while self.lines.get(timeout=20) != wanted:
            pass

    def end(self):
        with contextlib.suppress(ProcessLookupError):
            os.killpg(self.pid, signal.SIGKILL)
        self.process.wait()
        if self.process.stdin:
            self.process.stdin.close()


def window_app(test, toolkit, titles, width=300, height=200, *options, env=None):
    """Windows of tests/support/window_app.py, of which the first is known by its number."""
    return Program(test, PYTHON, "-B", os.path.join(SUPPORT, "window_app.py"), toolkit, titles,
                   str(width), str(height), *options, env=env, talks=True,
                   has_window=toolkit != "tk")  # whose windows do not tell their process


def text_window(test, toolkit, *options):
    """A window that has the focus and is filled by a text area."""
    program = window_app(test, toolkit, "input", 500, 400, "plain", *options)
    output("xdotool", "windowfocus", "--sync", str(program.window))
    until(lambda: output("xdotool", "getwindowfocus", "getwindowpid").strip() == str(program.pid),
          "the focus")
    program.ask("text")
    return program


def change(window, *arguments):
    """xprop on a window; what it says."""
    return output("xprop", "-id", str(window), *arguments)


def geometry(window):
    """x, y, width and height of a window on the screen, as xwininfo has them."""
    text = output("xwininfo", "-id", str(window))
    return tuple(int(re.search(rf"{name}:\s+(-?\d+)", text).group(1)) for name in
                 ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))


def stacking():
    """The windows that the window manager lists, front to back."""
    text = output("xprop", "-root", "_NET_CLIENT_LIST_STACKING")
    return [int(number, 16) for number in re.findall(r"0x[0-9a-f]+", text)][::-1]


class DesktopTest(unittest.TestCase):
    """A test with a runtime, and what that says of the desktop."""

    def setUp(self):
        self.host = self.enterContext(Host())

    def windows(self):
        return self.host.result("desktop_windows_list")["windows"]

    def entry(self, window):
        """The window with that id; None when it is not listed."""
        return next((entry for entry in self.windows() if entry["id"] == window), None)

    def target(self):
        return self.host.result("desktop_target")["target"]

    def apps(self):
        return self.host.result("desktop_apps_list")["apps"]

    def end_everything(self):
        """Kills whatever shows a window."""
        for window in self.windows():
            os.kill(window["pid"], signal.SIGKILL)
        until(lambda: not self.windows(), "the end of all windows")


class XServer:
    """An X server of the test's own, without a window manager."""

    def __init__(self, test, *options):
        self.process = None
        self.options = options
        test.addCleanup(self.stop)
        reader, writer = os.pipe()
        self.start("-displayfd", str(writer), pass_fds=[writer])
        os.close(writer)
        with os.fdopen(reader) as stream:
            self.display = ":" + stream.readline().strip()
        self.environment = dict(os.environ, DISPLAY=self.display)

    def start(self, *arguments, **options):
        """Starts the server again, under the same number, and waits until it serves."""
        numbered = bool(arguments)
        self.process = subprocess.Popen(
            ["Xvfb", *(arguments or [self.display]), "-screen", "0", "1280x800x24", "-nolisten",
             "tcp", "-noreset", *self.options], stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, **options)
        if not numbered:
            until(lambda: subprocess.run(["xset", "q"], env=self.environment,
                                         capture_output=True).returncode == 0, "the X server")

    def stop(self):
        if self.process:
            self.process.kill()
            self.process.wait()
        self.process = None
