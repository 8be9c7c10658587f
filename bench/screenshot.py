#!/usr/bin/python3 -B
"""Times desktop_screenshot beside two public tools, on the same windows, in turns.

usage: scripts/with-desktop bench/screenshot.py [ROUNDS]

QUIL_BUILD_DIR names the build to measure (default build/release), which has to have its targets quil
and screenshot_steps. The other tools' pictures have one pixel per point, Quil's have four. Times are
medians in milliseconds: of Quil the whole request, from writing it to having its picture; of the
tools from start to end, the picture read from a pipe. Under each line stands where Quil's time goes.
"""
import base64
import os
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
os.environ.setdefault("QUIL_BUILD_DIR", os.path.join(ROOT, "build", "release"))
sys.path.insert(0, os.path.join(ROOT, "tests", "support"))
from desktop_tools import CHROMIUM, Cleanups, Program, geometry, output, until  # noqa: E402
from quil_host import Host  # noqa: E402

PAGE = """<html><body style='margin:0;font:15px sans-serif;
background:linear-gradient(160deg,#fdfcfb,#bcd4f0)'><canvas id=c width=480 height=320
style='float:right;margin:20px'></canvas><h1>A page</h1><p>%s</p><script>
const c = document.getElementById('c').getContext('2d'), d = c.createImageData(480, 320);
for (let i = 0, y = 0; y < 320; ++y) for (let x = 0; x < 480; ++x, i += 4) {
  const v = 90 * Math.sin(x / 37) * Math.cos(y / 23) + 40 * Math.sin(x * y / 900);
  d.data.set([128 + v, 120 + v / 2 + x / 9, 140 - v / 3 + y / 7, 255], i);
}
c.putImageData(d, 0, 0);</script></body></html>"""


def measure(rounds, window, host):
    def quil():
        url = host.result("desktop_screenshot")["screenshotDataURL"]
        return len(base64.b64decode(url.partition(",")[2]))

    def tool(*command):
        return len(subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout)

    ways = {"quil": quil,
            "maim": lambda: tool("maim", "--hidecursor", f"--window={window}"),
            "import": lambda: tool("import", "-window", str(window), "png:-")}
    times = {name: [] for name in ways}
    sizes = {}
    for _ in range(rounds):
        for name, take in ways.items():
            begin = time.perf_counter()
            sizes[name] = take()
            times[name].append((time.perf_counter() - begin) * 1000)
    return {name: (statistics.median(times[name]), sizes[name]) for name in ways}


def main(rounds):
    cleanups = Cleanups()
    with tempfile.TemporaryDirectory() as folder, Host() as host:
        text, page = os.path.join(folder, "text.txt"), os.path.join(folder, "page.html")
        with open(text, "w") as file, open(os.path.join(ROOT, "src/runtime/dispatch.cpp")) as code:
            file.write(code.read() * 9)
        with open(page, "w") as file:
            file.write(PAGE % ("Words of a page that goes on for a while. " * 120))
        editor = ("featherpad", "--standalone", text)
        browser = (*CHROMIUM, f"--user-data-dir={folder}/profile", f"--app=file://{page}")
        print(f"{'window':28}{'quil':>16}{'maim':>16}{'import':>16}   ms, bytes")
        try:
            for name, command, size in (("editor", editor, (400, 300)),
                                        ("editor", editor, (800, 600)), ("editor", editor, None),
                                        ("web page with a picture", browser, None)):
                program = Program(cleanups, *command)
                output("xdotool", "windowactivate", "--sync", str(program.window))
                if size:
                    output("xdotool", "windowsize", "--sync", str(program.window), *map(str, size))
                else:
                    output("wmctrl", "-i", "-r", hex(program.window), "-b",
                           "add,maximized_vert,maximized_horz")
                last = None

                def is_settled():
                    nonlocal last
                    before, last = last, host.result("desktop_screenshot")["screenshotDataURL"]
                    time.sleep(1)
                    return before == last
                until(is_settled, "a window at rest")
                results = measure(rounds, program.window, host)
                print(f"{name + ' %dx%d' % geometry(program.window)[2:]:28}" + "".join(
                    f"{ms:8.1f}{size:8}" for ms, size in results.values()), flush=True)
                steps = os.path.join(os.environ["QUIL_BUILD_DIR"], "bench", "screenshot_steps")
                print(output(steps, str(rounds)), end="", flush=True)
                program.end()
        finally:
            cleanups.close()


if __name__ == "__main__":
    main(int(sys.argv[1]) if len(sys.argv) > 1 else 15)
