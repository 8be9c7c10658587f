"""Pictures of real windows, compared with those of another tool."""
import base64
import subprocess
import unittest

from desktop_tools import Program, geometry, output, until, window_app
from quil_host import Host

PREFIX = "data:image/png;base64,"


def pixels(png, *operations):
    """Every pixel of a PNG as four bytes, after ImageMagick's operations."""
    return subprocess.run(["convert", "png:-", *operations, "-depth", "8", "RGBA:-"], input=png,
                          stdout=subprocess.PIPE, check=True, timeout=60).stdout


def public_picture(window):
    """What another tool sees on the screen where the window is, at two pixels a point."""
    x, y, width, height = geometry(window)
    png = subprocess.run(["maim", "--hidecursor", f"--geometry={width}x{height}+{x}+{y}"],
                         stdout=subprocess.PIPE, check=True, timeout=60).stdout
    return pixels(png, "-scale", "200%")


class ScreenshotTest(unittest.TestCase):
    def setUp(self):
        self.host = self.enterContext(Host())

    def screenshot(self):
        url = self.host.result("desktop_screenshot")["screenshotDataURL"]
        self.assertEqual(url[:len(PREFIX)], PREFIX)
        return base64.b64decode(url[len(PREFIX):], validate=True)

    def activate(self, window):
        output("xdotool", "windowactivate", "--sync", str(window))

    def test_covered_window_looks_as_uncovered(self):
        for start in (lambda: window_app(self, "gtk3", "gtk3"),
                      lambda: window_app(self, "gtk4", "gtk4", 500, 300),
                      lambda: window_app(self, "qt5", "qt5"),
                      lambda: Program(self, "xterm", "-e", "sh", "-c", "ls /; exec sleep 99")):
            program = start()
            with self.subTest(program.process.args):
                self.activate(program.window)
                expected = public_picture(program.window)
                x, y, width, height = geometry(program.window)
                cover = Program(self, "xterm", "-bg", "red", "-geometry", f"9x3+{x + 30}+{y + 40}")
                output("wmctrl", "-i", "-r", hex(cover.window), "-b", "add,above")
                self.activate(program.window)
                until(lambda: public_picture(program.window) != expected, "the cover")
                with Host() as late:
                    self.host, early = late, self.host
                    self.assertEqual(pixels(self.screenshot()), expected)
                    self.host = early
                self.assertEqual(pixels(self.screenshot()), expected)
                program.end()
                cover.end()


if __name__ == "__main__":
    unittest.main()
