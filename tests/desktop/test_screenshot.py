"""Pictures of real windows: every pixel, whatever happens on the screen."""
import base64
import os
import random
import subprocess
import time
import unittest

import picture_app
from desktop_tools import (PYTHON, SUPPORT, Program, XServer, change, geometry, output, until,
                           window_app)
from quil_host import Host

PREFIX = "data:image/png;base64,"


def pixels(png, *operations):
    """Every pixel of a PNG as four bytes, after ImageMagick's operations."""
    return subprocess.run(["convert", "png:-", *operations, "-depth", "8", "RGBA:-"], input=png,
                          stdout=subprocess.PIPE, check=True, timeout=60).stdout


def on_the_screen(window):
    """What another tool sees on the screen where the window is, at two pixels a point."""
    x, y, width, height = geometry(window)
    png = subprocess.run(["maim", "--hidecursor", f"--geometry={width}x{height}+{x}+{y}"],
                         stdout=subprocess.PIPE, check=True, timeout=60).stdout
    return pixels(png, "-scale", "200%")


def part(picture, width, place):
    """The pixels of a picture that lie in that place (x, y, width, height in points)."""
    x, y, columns, rows = (2 * side for side in place)
    return b"".join(picture[4 * (2 * width * row + x):4 * (2 * width * row + x + columns)]
                    for row in range(y, y + rows))


class ScreenshotTest(unittest.TestCase):
    def picture(self, host):
        """The pixels of a screenshot; nothing when there is none."""
        url = host.result("desktop_screenshot")["screenshotDataURL"]
        if not url:
            return b""
        self.assertEqual(url[:len(PREFIX)], PREFIX)
        return pixels(base64.b64decode(url[len(PREFIX):], validate=True))

    def picture_app(self, width=120, height=90, kind="", env=None):
        return Program(self, PYTHON, "-B", os.path.join(SUPPORT, "picture_app.py"), "known",
                       str(width), str(height), *kind.split(), env=env)

    def activate(self, window):
        output("xdotool", "windowactivate", "--sync", str(window), stderr=subprocess.DEVNULL)

    def shows(self, host, expected, what):
        """Waits until the picture is that one: programs paint at their own pace."""
        until(lambda: self.picture(host) == expected, what, 10)

    def test_covered_window_looks_as_uncovered(self):
        for start in (lambda: window_app(self, "gtk3", "gtk3"),
                      lambda: window_app(self, "gtk4", "gtk4", 500, 300),
                      lambda: self.picture_app(300, 200),
                      lambda: Program(self, "xterm", "-e", "sh", "-c", "ls /; exec sleep 99")):
            program = start()
            with self.subTest(program.process.args):
                self.activate(program.window)
                expected = until(lambda: (seen := on_the_screen(program.window)) ==
                                 on_the_screen(program.window) and seen, "at rest")
                x, y, *_ = geometry(program.window)
                with Host() as early:
                    self.assertEqual(self.picture(early), expected)
                    cover = Program(self, "xterm", "-bg", "red", "-geometry", f"9x3+{x + 30}+{y + 40}")
                    output("wmctrl", "-i", "-r", hex(cover.window), "-b", "add,above")
                    self.activate(program.window)
                    until(lambda: on_the_screen(program.window) != expected, "the cover")
                    self.assertEqual(self.picture(early), expected)
                # Nothing has kept what is covered since that host ended.
                with Host() as late:
                    self.assertEqual(self.picture(late), expected)
                program.end()
                cover.end()

    def test_every_pixel(self):
        host = self.enterContext(Host())
        for kind in ("", "transparent", "shaped"):
            with self.subTest(kind):
                program = self.picture_app(kind=kind)
                self.activate(program.window)
                output("xdotool", "mousemove", "--window", str(program.window), "60", "45")
                self.shows(host, picture_app.expected(120, 90, kind), kind)
                program.end()

    def test_places(self):
        program = self.picture_app()
        whole = picture_app.expected(120, 90)
        self.activate(program.window)
        with Host() as host:
            self.shows(host, whole, "painted")
        for place in ((-70, -50), (1300, 720), (300, 300)):
            output("xdotool", "windowmove", "--sync", str(program.window), *map(str, place))
            with Host() as host:
                self.assertEqual(self.picture(host), whole, place)
        host = self.enterContext(Host())
        output("xdotool", "windowminimize", "--sync", str(program.window))
        self.assertEqual(self.picture(host), b"")
        self.activate(program.window)
        self.shows(host, whole, "shown again")
        change(program.window, "-f", "_GTK_FRAME_EXTENTS", "32c", "-set", "_GTK_FRAME_EXTENTS",
               "5,10,15,20")
        self.assertEqual(self.picture(host), part(whole, 120, (5, 15, 105, 55)))
        program.end()
        self.assertEqual(self.picture(host), b"")

    def test_servers(self):
        whole = picture_app.expected(120, 90)
        for options in (("-extension", "MIT-SHM"), ("-extension", "DAMAGE"),
                        ("-extension", "SHAPE"), ("-screen", "0", "800x600x16")):
            with self.subTest(options):
                server = XServer(self, *options)
                program = self.picture_app(env=server.environment)
                host = self.enterContext(Host(env=server.environment))
                if "-screen" not in options:
                    self.shows(host, whole, "the window")
                    continue
                imported = lambda: pixels(subprocess.run(
                    ["import", "-window", str(program.window), "png:-"], env=server.environment,
                    stdout=subprocess.PIPE, check=True, timeout=60).stdout, "-scale", "200%")
                # The two may round five bits to eight in different ways.
                until(lambda: max(abs(a - b) for a, b in zip(self.picture(host), imported(),
                                                             strict=True)) <= 1, "the colours")
        blind = self.enterContext(Host(env=XServer(self, "-extension", "Composite").environment))
        self.assertEqual(blind.error("desktop_screenshot")["message"],
                         "screen recording permission required")

    def test_windows_that_change_meanwhile(self):
        chance = random.Random(1)
        host = self.enterContext(Host())
        program = Program(self, "xterm", "-bg", "#336699")
        pictures = absent = 0
        deadline = time.monotonic() + 60
        while pictures < 30 or absent < 10:
            self.assertLess(time.monotonic(), deadline, (pictures, absent))
            action = chance.choice((
                ("windowmove", program.window, chance.randrange(1200), chance.randrange(600)),
                ("windowsize", program.window, *chance.choices(range(60, 700), k=2)),
                ("windowunmap", program.window), ("windowmap", program.window),
                ("windowkill", program.window)))
            # One after the other, so that some change falls into each step of a capture.
            changing = subprocess.Popen(["xdotool", *map(str, action)], stderr=subprocess.DEVNULL)
            while changing.poll() is None:
                answer = host.result("desktop_screenshot")["screenshotDataURL"]
                pictures += answer.startswith(PREFIX)
                absent += answer == ""
            changing.wait()
            if action[0] == "windowkill":
                program.end()
                program = Program(self, "xterm", "-bg", "#336699")


if __name__ == "__main__":
    unittest.main()
