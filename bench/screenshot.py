#!/usr/bin/python3 -B
"""Times desktop_screenshot and desktop_capture beside two public tools, on the same windows and the
same screen, in turns.

usage: QUIL_DESKTOP_SCREEN=1920x1080x24 scripts/with-desktop bench/screenshot.py [ROUNDS]

QUIL_BUILD_DIR names the build to measure (default build/release), which has to have its targets quil
and screenshot_steps. Of windows, the other tools' pictures have one pixel per point, Quil's have
four. Times are medians in milliseconds, wall clock and then the processor time of the process: of
Quil the whole request, from writing it to having its picture; of the tools from start to end, the
picture read from a pipe. Under each window stands where Quil's time goes.

Of the whole screen with the last window on it, the pictures are compared, too: at scale 1 with that
of maim, at 0.5 with what ImageMagick makes of that by averaging.
"""
import base64
import os
import resource
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


def processor_time(pid):
    """Milliseconds that the threads of a process have run so far."""
    total = 0
    for thread in os.listdir(f"/proc/{pid}/task"):
        with open(f"/proc/{pid}/task/{thread}/schedstat") as file:
            total += int(file.read().split()[0])
    return total / 1e6


def children_time():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return (usage.ru_utime + usage.ru_stime) * 1000


def quil(host, method, **parameters):
    """A way to take a picture: its bytes, and the processor time."""
    def take():
        before = processor_time(host.process.pid)
        url = host.result(method, **parameters)["screenshotDataURL"]
        return base64.b64decode(url.partition(",")[2]), processor_time(host.process.pid) - before
    return take


def tool(*command):
    def take():
        before = children_time()
        picture = subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout
        return picture, children_time() - before
    return take


def measure(rounds, ways):
    """Of each way, the median times and the size of the picture, and the last picture."""
    walls, processors = ({name: [] for name in ways} for _ in range(2))
    pictures = {}
    for _ in range(rounds):
        for name, take in ways.items():
            begin = time.perf_counter()
            pictures[name], processor = take()
            walls[name].append((time.perf_counter() - begin) * 1000)
            processors[name].append(processor)
    for name in ways:
        print(f"{statistics.median(walls[name]):10.1f}{statistics.median(processors[name]):8.1f}"
              f"{len(pictures[name]):9}", end="")
    print(flush=True)
    return pictures


def difference(picture, other, *operations):
    """The most by which a channel of a pixel differs, of 255, after ImageMagick's operations on the
    other picture."""
    first, second = (subprocess.run(["convert", "png:-", *changes, "-depth", "8", "RGB:-"],
                                    input=png, stdout=subprocess.PIPE, check=True).stdout
                     for png, changes in ((picture, ()), (other, operations)))
    assert len(first) == len(second)
    return max(map(abs, map(int.__sub__, first, second)))


def measure_screen(rounds, host):
    print(f"\n{'whole screen':28}{'maim':>27}{'quil, scale 1':>27}{'quil, scale 0.5':>27}")
    pictures = None
    print(f"{'as the last window':28}", end="")
    pictures = measure(rounds, {"maim": tool("maim", "--hidecursor"),
                                "full": quil(host, "desktop_capture"),
                                "half": quil(host, "desktop_capture", scale=0.5)})
    print("largest difference of a channel: scale 1",
          difference(pictures["full"], pictures["maim"]), "of 255, scale 0.5",
          difference(pictures["half"], pictures["maim"], "-filter", "box", "-resize", "50%"))


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
        print(f"{'window':28}{'quil':>27}{'maim':>27}{'import':>27}   ms, processor ms, bytes")
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
                print(f"{name + ' %dx%d' % geometry(program.window)[2:]:28}", end="")
                measure(rounds, {
                    "quil": quil(host, "desktop_screenshot"),
                    "maim": tool("maim", "--hidecursor", f"--window={program.window}"),
                    "import": tool("import", "-window", str(program.window), "png:-")})
                steps = os.path.join(os.environ["QUIL_BUILD_DIR"], "bench", "screenshot_steps")
                print(output(steps, str(rounds)), end="", flush=True)
                if name != "web page with a picture":
                    program.end()
            measure_screen(rounds, host)
        finally:
            cleanups.close()


if __name__ == "__main__":
    main(int(sys.argv[1]) if len(sys.argv) > 1 else 15)
