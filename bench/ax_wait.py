#!/usr/bin/python3 -B
"""How soon a host learns of a change, and what it costs to wait for one: desktop_ax_wait beside asking
for the tree again and again.

usage: scripts/with-desktop bench/ax_wait.py [ROUNDS]

QUIL_BUILD_DIR names the build to measure (default build/release), which has to have its tests. The
latency is from the change of a label in a GTK 3 window of 300 elements, by that program's clock, until
the host has the answer. The costs are of ten seconds in which nothing changes: the calls that a
program of 300 elements gets (tests/support/fake_program, which counts them), and the processor time
of Quil.
"""
import os
import statistics
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
os.environ.setdefault("QUIL_BUILD_DIR", os.path.join(ROOT, "build", "release"))
sys.path[:0] = [os.path.join(ROOT, folder) for folder in ("bench", "tests/support", "tests/desktop")]
from desktop_tools import PYTHON, Cleanups, until  # noqa: E402
from quil_host import Host  # noqa: E402
from screenshot import processor_time  # noqa: E402
from test_accessibility_trees import FakeProgram  # noqa: E402
from tree_model import Generator  # noqa: E402

ELEMENTS = 300
IDLE_SECONDS = 10
PROGRAM = f"""
import sys, time, gi
gi.require_version("Gtk", "3.0")
from gi.repository import GLib, Gtk
sys.path.insert(0, {os.path.join(ROOT, "bench")!r})
from gtk3_elements import fill
window = Gtk.Window(title="waiting")
box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
label = Gtk.Label(label="0")
box.add(label)
fill(box, 0, {ELEMENTS})
window.add(box)
window.show_all()
def change(*_):
    line = sys.stdin.readline()
    if not line:
        Gtk.main_quit()
    def now():
        print(time.monotonic(), flush=True)
        label.set_text(line.strip())
    GLib.timeout_add(400, now)
    return True
GLib.io_add_watch(0, GLib.IOCondition.IN, change)
Gtk.main()
"""


def changed_by_waiting(host, revision):
    return host.result("desktop_ax_wait", seconds=40, revision=revision, timeoutMs=30000)["revision"]


def changed_by_asking(pause):
    def ask(host, revision):
        while (state := host.result("desktop_ax_get_state"))["revision"] == revision:
            time.sleep(pause)
        return state["revision"]
    return ask


WAYS = {"desktop_ax_wait": changed_by_waiting, "asking without a pause": changed_by_asking(0),
        "asking every 50 ms": changed_by_asking(0.05)}


def latencies(host, rounds):
    program = subprocess.Popen([PYTHON, "-B", "-c", PROGRAM], stdin=subprocess.PIPE,
                               stdout=subprocess.PIPE, text=True)
    try:
        until(lambda: host.result("desktop_target")["target"].get("windowTitle") == "waiting"
              and len(host.result("desktop_ax_get_state")["nodes"]) > ELEMENTS, "the window")
        time.sleep(1)
        found = {name: [] for name in WAYS}
        for number in range(rounds * len(WAYS)):
            name = list(WAYS)[number % len(WAYS)]
            revision = host.result("desktop_ax_get_state")["revision"]
            program.stdin.write(f"{number + 1}\n")
            program.stdin.flush()
            after = WAYS[name](host, revision)
            found[name].append((time.monotonic() - float(program.stdout.readline())) * 1000)
            assert after != revision
        for name, times in found.items():
            print(f"{name}: median {statistics.median(times):.1f} ms, longest {max(times):.1f} ms "
                  f"of {rounds}", flush=True)
    finally:
        program.kill()
        program.communicate()


def idle_costs(host):
    generator = Generator(1, ELEMENTS)
    generator.fails = False
    generator.caches = True
    generator.bush(ELEMENTS)
    for element in generator.elements:
        element.pop("late", None)
    cleanups = Cleanups()
    try:
        program = FakeProgram(cleanups, {
            "title": "Fake 1", "toolkit": {"name": "gtk", "version": "3.24"}, "cache": True,
            "getAll": True, "elements": generator.elements})
        program.wait_until_in_front(host)
        for name, change in WAYS.items():
            revision = host.result("desktop_ax_get_state")["revision"]
            program.command({})
            before, observations = processor_time(host.process.pid), 0
            end = time.monotonic() + IDLE_SECONDS
            if change is changed_by_waiting:
                answer = host.result("desktop_ax_wait", revision=revision, timeoutMs=1000 * IDLE_SECONDS)
                assert not answer["changed"]
            else:
                pause = 0.05 if "every" in name else 0
                while time.monotonic() < end:
                    assert host.result("desktop_ax_get_state")["revision"] == revision
                    observations += 1
                    time.sleep(pause)
            print(f"{name}, {IDLE_SECONDS} s without a change: {program.command({})['calls']} calls, "
                  f"{processor_time(host.process.pid) - before:.0f} ms of processor time"
                  + f", {observations} observations" * bool(observations), flush=True)
    finally:
        cleanups.close()


def main(rounds):
    print(f"load average {os.getloadavg()[0]:.1f} on {os.cpu_count()} processors")
    with Host() as host:
        latencies(host, rounds)
        idle_costs(host)


if __name__ == "__main__":
    main(int(sys.argv[1]) if len(sys.argv) > 1 else 21)
