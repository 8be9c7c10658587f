#!/usr/bin/python3 -B
"""What desktop_ax_get_state takes of what an application needs itself: GTK 3 windows and pages of rows
in browsers, of which 4,000 elements are read.

usage: scripts/with-desktop bench/ax_share.py [ROUNDS]

QUIL_BUILD_DIR names the build to measure (default build/release). The trees have been read before.
Printed are medians: elapsed seconds, seconds of processor time of all of the application's processes
and of Quil for the same reply, and the first by the second. The last two may overlap.
"""
import os
import signal
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
os.environ.setdefault("QUIL_BUILD_DIR", os.path.join(ROOT, "build", "release"))
sys.path[:0] = [os.path.join(ROOT, "bench"), os.path.join(ROOT, "tests", "support")]
from desktop_tools import CHROMIUM, PYTHON, until  # noqa: E402
from quil_host import Host  # noqa: E402
from screenshot import processor_time  # noqa: E402

ROWS = 5000
ELEMENTS = 4000


def processes(pid):
    """A process and all that it started, which have not ended."""
    children = subprocess.run(["ps", "-o", "pid=", "--ppid", str(pid)], stdout=subprocess.PIPE,
                              text=True).stdout.split()
    return [pid] + [inner for child in children for inner in processes(int(child))]


def application_time(pid):
    total = 0
    for process in processes(pid):
        try:
            total += processor_time(process)
        except OSError:
            pass  # has ended
    return total / 1000


def processor_times(pid, host):
    """Seconds that the application and Quil have taken until now."""
    return application_time(pid), processor_time(host.process.pid) / 1000


def measure(host, rounds, name, command):
    program = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def observe():
        return len(host.result("desktop_ax_get_state", seconds=60)["nodes"])
    try:
        until(lambda: observe() >= ELEMENTS, name, 60)
        time.sleep(3)  # a browser goes on for a while after its page is there
        taken = []
        for _ in range(rounds):
            before = processor_times(program.pid, host)
            elapsed, result = host.timed("desktop_ax_get_state", seconds=60)
            after = processor_times(program.pid, host)
            assert len(result()["nodes"]) >= ELEMENTS
            taken.append([elapsed, *map(float.__sub__, after, before)])
        elapsed, application, quil = map(statistics.median, zip(*taken))
        print(f"{name:28}{elapsed:8.3f}{application:8.3f}{quil:8.3f}{elapsed / application:8.2f}", flush=True)
    finally:
        for process in reversed(processes(program.pid)):
            try:
                os.kill(process, signal.SIGKILL)
            except ProcessLookupError:
                pass
        program.wait()
    until(lambda: observe() < ELEMENTS, "the end of " + name)


def main(rounds):
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder, Host() as host:
        pages = {"list": "<ul>" + "".join(f"<li>row {i}" for i in range(ROWS)),
                 "table": "<table>" + "".join(f"<tr><td>row {i}<td>value {i}" for i in range(ROWS))}
        for kind, content in pages.items():
            with open(f"{folder}/{kind}.html", "w") as file:
                file.write("<!DOCTYPE html><title>rows</title>" + content)
        os.mkdir(f"{folder}/firefox")
        gtk3 = (PYTHON, "-B", os.path.join(ROOT, "bench", "gtk3_elements.py"))
        firefox = ("firefox-esr", "--no-remote", "--profile", f"{folder}/firefox")
        chromium = (*CHROMIUM, f"--user-data-dir={folder}/chromium")
        print(f"{'':28}{'elapsed':>8}{'app.':>8}{'quil':>8}{'ratio':>8}")
        measure(host, rounds, "GTK 3, flat", (*gtk3, "flat", str(ELEMENTS)))
        measure(host, rounds, "GTK 3, nested", (*gtk3, "nested", str(ELEMENTS)))
        for kind in pages:
            measure(host, rounds, f"Firefox, {kind}", (*firefox, f"file://{folder}/{kind}.html"))
            measure(host, rounds, f"Chromium, {kind}", (*chromium, f"--app=file://{folder}/{kind}.html"))


if __name__ == "__main__":
    main(int(sys.argv[1]) if len(sys.argv) > 1 else 5)
