"""The extension methods on a real desktop, by way of the Python client, beside maim, xprop, xclip and xsel.

QUIL_EXTENSIONS names the toolkits of input and waiting: "gtk3 gtk4 qt5 qt6"; QUIL_DESKTOP_WINDOW_MANAGER the window manager.
"""
import os
import re
import shutil
import subprocess
import threading
import time
import unittest

from desktop_tools import PYTHON, Program, XServer, geometry, output, text_window, until, window_app
from protocol_schema import ROOT
from quil_host import executable

import quil

TOOLKITS = os.environ.get("QUIL_EXTENSIONS", "gtk3 qt6").split()
WINDOW_MANAGERS = ("xfwm4", "metacity", "awesome")


def pixels(png, *options):
    """The picture's colours, as ImageMagick has them."""
    return subprocess.run(["convert", "png:-", *options, "-depth", "8", "rgb:-"], input=png, stdout=subprocess.PIPE, check=True).stdout


class Input(unittest.TestCase):
    def test_buttons_counts_chords_and_menus(self):
        desktop = self.enterContext(quil.Desktop(executable("quil"), timeout=20))
        for toolkit in TOOLKITS:
            with self.subTest(toolkit):
                desktop.observe()  # Qt 6 joins a bus that is in use
                program = text_window(self, toolkit)
                left, top, width, height = geometry(program.window)
                begin, word, end, below = ((left + x, top + y) for x, y in (
                    (1, 10), (12, 10), (width - 20, 10), (width // 2, height // 2)))

                def paste_primary():
                    subprocess.run(["xclip", "-selection", "primary", "-i"], input=b"mid", check=True)
                    click(end, button="middle")

                def windows():
                    return len(output("xdotool", "search", "--onlyvisible", "--pid", str(program.pid), check=False).split())

                def choose():
                    revision, shown = desktop.observe().revision, windows()
                    click(word, button="right")
                    until(lambda: windows() > shown, "the menu")
                    if toolkit.startswith("gtk"):
                        self.assertTrue(desktop.runtime.desktop_ax_wait(revision, 5000)["changed"])
                        desktop.get_by_role("menuitem", re.compile("^select all", re.I)).click()
                    else:  # Qt does not list such menus
                        desktop.keyboard.press("up")
                        desktop.keyboard.press("return")
                    until(lambda: windows() == shown, "the end of the menu")

                def click(place, **more):
                    desktop.runtime.desktop_mouse_click(point=desktop.mouse._points(place)[0], **more)

                click(below)
                # Each is done at once after the one before, and must not count its clicks in.
                for act, text, wanted in (
                        (lambda: None, "one two", "one two"),
                        (lambda: click(word, count=3), "four five", "four five"),
                        (lambda: (click(word), click(word, count=2)), "X", "X five"),
                        (lambda: (click(word, count=2), click(word)), "", "X five"),
                        (lambda: (click(begin), click(end, modifiers="shift")), "Z", "Z"),
                        (paste_primary, "", "Zmid"),
                        (lambda: desktop.mouse.drag([end, begin], seconds=0.2), "all", "all"),
                        (choose, "done", "done")):
                    act()
                    desktop.keyboard.type(text)
                    until(lambda: program.ask("text").rstrip("\n") == wanted, wanted, 5)
                program.end()

    def test_text_dragged_from_one_program_into_another(self):
        desktop = self.enterContext(quil.Desktop(executable("quil"), timeout=20))
        source, target = text_window(self, "gtk3"), text_window(self, "qt6")
        # Beside the other window, which comes to the front when it is clicked.
        output("xdotool", "windowmove", "--sync", str(target.window), "900", "60")
        for program, toolkit in ((source, "gtk3"), (target, "qt6")):
            other = target if program is source else source
            left, top, width, height = geometry(program.window)
            middle = tuple(at + size // 2 for at, size in zip(geometry(other.window)[:2], geometry(other.window)[2:]))
            program.ask("clear"), other.ask("clear")
            desktop.mouse.click((left + width // 2, top + height // 2))
            desktop.keyboard.type("dragged")
            desktop.keyboard.press("cmd+a")
            until(lambda: program.ask("text") == "dragged", "the text")
            # The pointer stays at the end for a second, since the programs come to terms by messages.
            desktop.mouse.drag([(left + 20, top + 10), (left + 60, top + 40), middle, middle], modifiers="ctrl", seconds=3)
            with self.subTest(f"from {toolkit}"):
                until(lambda: other.ask("text") == "dragged", "the text that is dropped", 10)


class Pictures(unittest.TestCase):
    def compare(self, desktop, environment):
        """Holds the picture of every display against another tool's; their names."""
        displays = desktop.runtime.desktop_displays_list()["displays"]
        for display in displays:
            box = "{width:.0f}x{height:.0f}+{x:.0f}+{y:.0f}".format(**display["bounds"])
            other = subprocess.run(["maim", "--hidecursor", "-g", box], env=environment, stdout=subprocess.PIPE, check=True).stdout
            for scale, options in ((1, ()), (0.5, ("-scale", "50%"))):
                ours = desktop.capture(display=display["id"], scale=scale)
                mine, theirs = pixels(ours), pixels(other, *options)
                self.assertEqual(len(mine), len(theirs))
                # Averages may be rounded otherwise.
                self.assertLessEqual(max(abs(a - b) for a, b in zip(mine, theirs)), 0 if scale == 1 else 1, (display, scale))
        return {display["name"] for display in displays}

    def test_displays_as_maim_pictures_them(self):
        server = XServer(self)
        xrandr = lambda *arguments: output("xrandr", *arguments, env=server.environment)
        xrandr("--setmonitor", "Left", "700/185x800/211+0+0", "screen")
        xrandr("--setmonitor", "Right", "580/153x600/158+700+100", "none")
        window_app(self, "gtk3", "pictured", 400, 300, "menu", env=server.environment)
        output("xdotool", "search", "--sync", "--onlyvisible", "--name", "^window_app.py$", env=server.environment)
        desktop = self.enterContext(quil.Desktop(["env", f"DISPLAY={server.display}", executable("quil")]))
        until(lambda: len(set(pixels(desktop.capture()))) > 8, "the window")
        self.assertEqual(self.compare(desktop, server.environment), {"Left", "Right"})
        if shutil.which("picom"):
            window_app(self, "gtk4", "translucent", 300, 200, env=server.environment)
            Program(self, "picom", "--backend", "xrender", "--active-opacity", "0.6", "--inactive-opacity", "0.6",
                    has_window=False, env=server.environment)
            before = desktop.capture()
            until(lambda: desktop.capture() != before, "the compositor's picture")
            until(lambda: (a := desktop.capture()) == desktop.capture() and a, "the end of fading")
            self.compare(desktop, server.environment)


class Clipboard(unittest.TestCase):
    def test_between_programs(self):
        desktop = self.enterContext(quil.Desktop(executable("quil"), timeout=20))
        xclip = ("xclip", "-selection", "clipboard")
        # The last one is too long for one property, which makes it come in pieces.
        for text in ("Grüße 😀\n\ttab", "naïve 世界 " * 200_000):
            desktop.clipboard.write(text)
            self.assertEqual(output(*xclip, "-o"), text)
            subprocess.run(xclip, input=(text + "!").encode(), check=True)
            until(lambda: desktop.clipboard.read() == text + "!", "the other's text")


class Windows(unittest.TestCase):
    def test_windows_come_to_the_front(self):
        desktop = self.enterContext(quil.Desktop(executable("quil"), timeout=20))
        programs = [window_app(self, "gtk3", "one"), window_app(self, "qt6", "two"), Program(self, "xterm", "-T", "three")]
        until(lambda: {program.window for program in programs} <= {window.id for window in desktop.windows()}, "the windows")

        def elsewhere(window):
            other = "0" if re.search(r"^1 +\*", output("wmctrl", "-d"), re.M) else "1"
            output("wmctrl", "-i", "-r", hex(window), "-t", other)

        def minimised(window):
            output("xdotool", "windowminimize", str(window))
        for way in (None, elsewhere, minimised):
            for program in programs:
                if way:
                    way(program.window)
                    until(lambda: program.window not in [one.id for one in desktop.windows()], way.__name__, 5)
                target = desktop.activate(program.window)
                with self.subTest(window=program.window, way=way):
                    self.assertEqual(target.pid, program.pid)
                    self.assertEqual(int(output("xdotool", "getactivewindow")), program.window)
                    self.assertEqual(output("xdotool", "getwindowfocus", "getwindowpid").strip(), str(program.pid))
                    self.assertIn(program.window, [one.id for one in desktop.windows()])
        programs[0].end()
        for act in (desktop.activate, lambda window: desktop.capture(window=window)):
            with self.assertRaisesRegex(quil.UnsupportedOperation, "window not found"):
                act(programs[0].window)

    @unittest.skipIf("QUIL_DESKTOP_WINDOW_MANAGER" in os.environ, "this is one of them")
    def test_other_window_managers(self):
        for name in filter(shutil.which, WINDOW_MANAGERS):
            with self.subTest(name):
                done = subprocess.run(
                    [os.path.join(ROOT, "scripts", "with-desktop"), PYTHON, "-B", __file__, "Windows", "Input"],
                    env={**os.environ, "QUIL_DESKTOP_WINDOW_MANAGER": name, "QUIL_EXTENSIONS": "gtk3"},
                    text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                self.assertEqual(done.returncode, 0, done.stdout)


class Waiting(unittest.TestCase):
    def test_changes_are_noticed_and_calm_is_kept(self):
        desktop = self.enterContext(quil.Desktop(executable("quil"), timeout=20))
        for toolkit in TOOLKITS:
            desktop.observe()
            program = text_window(self, toolkit)
            until(lambda: desktop.observe().target.pid == program.pid and len(desktop.last.elements) > 1, "the tree")
            with self.subTest(toolkit):
                revision = until(lambda: (a := desktop.observe().revision) == desktop.observe().revision and a, "calm")
                begin = time.monotonic()
                self.assertFalse(desktop.runtime.desktop_ax_wait(revision, 700)["changed"])
                self.assertLess(abs(time.monotonic() - begin - 0.7), 0.5)
                token = desktop.last.elements[-1].token
                desktop.runtime.desktop_read_value(token)  # which is as good as before
                typed = threading.Timer(0.3, output, ("xdotool", "type", "--delay", "100", "abcde"))
                typed.start()
                noticed = desktop.runtime.desktop_ax_wait(revision, 10_000)
                self.assertTrue(noticed["changed"] and time.monotonic() - begin < 5, noticed)
                calm = desktop.runtime.desktop_ax_wait(revision, 10_000, 700)
                self.assertTrue(calm["changed"])
                self.assertIn("abcde", desktop.observe().outline())
                self.assertEqual(desktop.last.revision, calm["revision"])
                typed.join()
            program.end()


if __name__ == "__main__":
    unittest.main()
