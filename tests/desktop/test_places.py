"""Where elements are, in every toolkit and at every scale: their bounds beside a picture of the
screen, and clicks that have to reach them.

usage: test_places.py    for a sample; QUIL_PLACES=all for every toolkit at every scale
"""
import os
import queue
import re
import shutil
import signal
import subprocess
import threading
import unittest

from desktop_tools import PYTHON, SUPPORT, output, until
from places_app import COLOURS
from quil_host import Failure, Host

SCALES = {"gtk3": (1, 2), "gtk4": (1, 2), "qt5": (1, 1.25, 1.5, 2), "qt6": (1, 1.25, 1.5, 2),
          "quick": (1, 1.25, 1.5, 2), "swing": (1, 2), "chromium": (1, 1.25, 1.5, 2),
          "firefox": (1, 1.25, 1.5, 2)}
SAMPLE = {"gtk3": (2,), "gtk4": (2,), "qt5": (1.5,), "qt6": (1.25,), "chromium": (2,)}
NEEDS = {"swing": "javac", "chromium": "chromium", "firefox": "firefox"}
# How far a toolkit's own rounding may take an edge, in pixels.
TOLERANCE = 2
# Not compared with the picture: lists that browsers paint as they like, and what Qt's list hides.
NOT_PAINTED = {("chromium", "menu"), ("firefox", "menu"), ("qt5", "popover"), ("qt6", "popover")}
# Java closes its own menus at this scale, whoever clicks into them.
NOT_CLICKED = {("swing", 2, "menu"), ("swing", 2, "popover")}


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


class PlacesApp:
    def __init__(self, test, toolkit, scale):
        environment = dict(os.environ, PLACES_SCALE=str(scale))
        environment["GDK_SCALE" if toolkit.startswith("gtk") else "QT_SCALE_FACTOR"] = str(scale)
        self.process = subprocess.Popen(
            [PYTHON, "-B", os.path.join(SUPPORT, "places_app.py"), toolkit], env=environment,
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, start_new_session=True)
        test.addCleanup(self.end)
        self.clicks = queue.Queue()
        threading.Thread(target=lambda: [self.clicks.put(line.strip())
                                         for line in self.process.stdout], daemon=True).start()

    def end(self):
        if self.process.poll() is not None:
            return
        os.killpg(self.process.pid, signal.SIGKILL)
        self.process.wait()


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

    def check(self, toolkit, scale):
        with Host() as host:
            host.result("ping")
            app = PlacesApp(self, toolkit, scale)
            for what in ("main", "dialog", "menu", "popover"):
                if what != "main":
                    self.click(host, f"Open {what}")
                if (toolkit, what) not in NOT_PAINTED:
                    seen = until(lambda: painted(what), f"{what} on the screen")

                    def agrees():
                        nonlocal seen, told
                        told = self.look(host, f"Probe {what}")["bounds"]
                        seen = painted(what) or seen
                        edges = (told["x"], told["y"], told["x"] + told["width"],
                                 told["y"] + told["height"])
                        return all(abs(a - b) <= TOLERANCE for a, b in zip(edges, seen))

                    told = None
                    try:
                        until(agrees, "bounds", 8)
                    except AssertionError:
                        self.fail(f"{what} is painted at {seen}, its bounds are {told}")
                self.click(host, f"Probe {what}")
                if (toolkit, scale, what) in NOT_CLICKED:
                    continue
                self.assertEqual(app.clicks.get(timeout=10), f"Probe {what}")
            app.end()

    def test_bounds_and_clicks(self):
        for toolkit, scales in (SCALES if os.environ.get("QUIL_PLACES") == "all" else SAMPLE).items():
            for scale in scales:
                with self.subTest(toolkit=toolkit, scale=scale):
                    needed = NEEDS.get(toolkit)
                    if needed and not shutil.which(needed):
                        self.skipTest(f"{needed} is not installed")
                    self.check(toolkit, scale)


if __name__ == "__main__":
    unittest.main()
