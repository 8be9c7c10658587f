"""Where elements are, in every toolkit and at every scale: their bounds beside a picture of the
screen, and clicks that have to reach them.

usage: test_places.py    for a sample; QUIL_PLACES=all for every toolkit at every scale
"""
import os
import re
import subprocess
import unittest

from ax_tools import gallery, missing_for
from desktop_tools import PYTHON, output, until
from gallery.gallery import COLOURS
from quil_host import Failure, Host

SCALES = {"gtk3": (1, 2), "gtk4": (1, 2), "qt5": (1, 1.25, 1.5, 2), "qt6": (1, 1.25, 1.5, 2),
          "qml6": (1, 1.25, 1.5, 2), "swing": (1, 2), "chromium": (1, 1.25, 1.5, 2),
          "firefox": (1, 1.25, 1.5, 2)}
SAMPLE = {"gtk3": (2,), "gtk4": (2,), "qt5": (1.5,), "qt6": (1.25,), "chromium": (2,)}
# What the gallery tells: what opens it, and the name of what is clicked then.
PROBES = {"push": (None, "Push"), "dialog": ("Dialog", "Done"), "open": ("Menu", "Open"), "popover": ("Popover", "Apple")}
# How far a toolkit's own rounding may take an edge, in pixels.
TOLERANCE = 2
# Not compared with the picture: lists that browsers paint as they like, and what Qt's list hides.
NOT_PAINTED = {("chromium", "open"), ("firefox", "open"), ("qt5", "popover"), ("qt6", "popover")}
# Java closes its own menus at this scale, whoever clicks into them.
NOT_CLICKED = {("swing", 2, "open"), ("swing", 2, "popover")}


def painted(what):
    """The rectangle of that colour on the screen; None when there is none."""
    width, height = map(int, re.search(r"dimensions:\s+(\d+)x(\d+)", output("xdpyinfo")).groups())
    pixels = subprocess.run(["import", "-silent", "-window", "root", "-depth", "8", "rgb:-"],
                            check=True, stdout=subprocess.PIPE).stdout
    colour = bytes.fromhex(COLOURS[what][1:])
    places = [(match.start() // 3 % width, match.start() // 3 // width)
              for match in re.finditer(re.escape(colour), pixels) if match.start() % 3 == 0]
    if not places or len(pixels) != width * height * 3:
        return None
    xs, ys = zip(*places)
    return min(xs), min(ys), max(xs) + 1, max(ys) + 1


def is_newer_gtk():
    """GTK 4.18 has no names for the items of its menus, and leaves the padding of popovers out."""
    ask = "import gi; gi.require_version('Gtk', '4.0'); from gi.repository import Gtk; print(Gtk.get_minor_version())"
    return int(output(PYTHON, "-c", ask)) > 10


class PlacesTest(unittest.TestCase):
    def look(self, host, name):
        """The element of that name, with bounds that are still the same at a second look."""
        def bounds():
            nodes = host.result("desktop_ax_get_state")["nodes"]
            return next((node for node in nodes if node.get("name") == name and "bounds" in node), None)

        def settled():
            first, second = bounds(), bounds()
            return second if first and second and first["bounds"] == second["bounds"] else None

        return until(settled, f"a place of {name}")

    def click(self, host, name):
        def try_it():
            error = host.request("desktop_click", element=self.look(host, name)["token"]).get("error")
            if error and error["code"] != "COMPUTER_CONTROL_STALE_SNAPSHOT":
                raise Failure(error)
            return not error

        until(try_it, f"a click on {name}")

    def compare(self, host, what, name):
        seen = told = None

        def agrees():
            nonlocal seen, told
            told, seen = self.look(host, name)["bounds"], painted(what)
            edges = told["x"], told["y"], told["x"] + told["width"], told["y"] + told["height"]
            return seen and all(abs(a - b) <= TOLERANCE for a, b in zip(edges, seen))

        try:
            until(agrees, "bounds", 8)
        except AssertionError:
            self.fail(f"{what} is painted at {seen}, its bounds are {told}")

    def check(self, toolkit, scale):
        with Host() as host:
            host.result("ping")
            program = gallery(self, toolkit, scale=scale)
            is_newer = toolkit == "gtk4" and is_newer_gtk()
            for what, (opener, name) in PROBES.items():
                if is_newer and what == "open":
                    continue
                if opener:
                    self.click(host, opener)
                if (toolkit, what) not in NOT_PAINTED and not (is_newer and what == "popover"):
                    self.compare(host, what, name)
                self.click(host, name)
                if toolkit in ("chromium", "firefox"):
                    until(lambda: any(window["name"].startswith(f"told {what}") for window in
                                      host.result("desktop_windows_list")["windows"]), f"a click on {what}")
                elif (toolkit, scale, what) not in NOT_CLICKED:
                    program.until_told(**{what: True})
            program.end()

    def test_bounds_and_clicks(self):
        for toolkit, scales in (SCALES if os.environ.get("QUIL_PLACES") == "all" else SAMPLE).items():
            for scale in scales:
                with self.subTest(toolkit=toolkit, scale=scale):
                    if (packages := missing_for(toolkit)):
                        self.skipTest(f"{packages} is not installed")
                    self.check(toolkit, scale)


if __name__ == "__main__":
    unittest.main()
