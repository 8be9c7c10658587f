#!/usr/bin/env python3
"""10,000 key presses, clicks and turns of the wheel in a second: what recording them costs and loses.

usage: bench/recording_flood.py [BUILD_FOLDER] [ROUNDS]     (build/release and 3 when not said)

Each kind of window gets a private desktop of its own (its name in QUIL_BENCH_WINDOW inside of it).
Each round floods it twice, by XTEST, once while nothing records and once while Quil does: 9,500
presses of a letter and, between them, 250 clicks into the window and 250 turns of the wheel, evenly
in a second. Quil's processor time is that of all its threads until the window has caught up, without
the making of the answer; "server" is the longest of the round trips to the X server that another
client makes meanwhile; "window" is when the window's text has changed for the last time.
"""
import ctypes
import os
import subprocess
import sys
import threading
import time
from collections import Counter

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests", "support"))

WINDOWS = ("none", "xterm", "gtk3", "gtk4", "qt5", "qt6")
COUNT = 10_000
BURST = 50  # events sent at a time, 200 times a second
PLACES = ((400, 300), (500, 300))  # clicked in turns, so that no two make a double click
LETTER, BUTTON, WHEEL = 38, 1, 5  # the key "a", the primary button, down
QUIET_SECONDS = 5


class Server:
    """A connection to the X server."""

    def __init__(self):
        self.x11, self.xtest = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXtst.so.6")
        self.x11.XOpenDisplay.restype = ctypes.c_void_p
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(None))

    def move(self, place):
        self.xtest.XTestFakeMotionEvent(self.display, -1, *place, ctypes.c_ulong(0))

    def round_trip(self):
        self.x11.XSync(self.display, 0)

    def flood(self):
        """Sends the flood; how long that took."""
        key, button = self.xtest.XTestFakeKeyEvent, self.xtest.XTestFakeButtonEvent
        at_once = ctypes.c_ulong(0)
        began = time.monotonic()
        for number in range(COUNT):
            send, detail = (key, LETTER) if number % 20 else \
                           (button, BUTTON if number % 40 else WHEEL)
            if send is button:
                self.move(PLACES[number // 40 % 2])
            send(self.display, detail, 1, at_once)
            send(self.display, detail, 0, at_once)
            if number % BURST == BURST - 1:
                self.round_trip()
                time.sleep(max(0, began + (number + 1) / COUNT - time.monotonic()))
        return time.monotonic() - began


class RoundTrips(threading.Thread):
    """Asks the server again and again; the times it took, in ms."""

    def __init__(self):
        super().__init__()
        self.times, self.ends = [], False
        self.start()

    def run(self):
        server = Server()
        while not self.ends:
            began = time.monotonic()
            server.round_trip()
            self.times.append((time.monotonic() - began) * 1000)
            time.sleep(0.002)

    def end(self):
        self.ends = True
        self.join()
        return max(self.times)


def processor_ms(pid):
    total = 0
    for task in os.listdir(f"/proc/{pid}/task"):
        with open(f"/proc/{pid}/task/{task}/schedstat") as file:
            total += int(file.read().split()[0])
    return total / 1e6


class Window:
    def __init__(self, cleanups, kind):
        from desktop_tools import Program, text_window
        self.app = None
        if kind == "none":
            return
        if kind == "xterm":
            window = Program(cleanups, "xterm", "-geometry", "100x40+100+100", "-e", "cat").window
        else:
            self.app = text_window(cleanups, kind)
            window = self.app.window
        subprocess.run(["xdotool", "windowactivate", "--sync", str(window),
                        "windowmove", "--sync", str(window), "200", "150"])
        time.sleep(1)

    def catch_up(self):
        """Waits until no more letters come; how many there are, and when the last one came."""
        count, last = 0, time.monotonic()
        while self.app and time.monotonic() < last + QUIET_SECONDS:
            if (letters := self.app.ask("text").count("a")) != count:
                count, last = letters, time.monotonic()
            time.sleep(0.05)
        return count, last


def one_flood(window, host):
    if window.app:
        window.ask("clear")
    server = Server()
    server.move(PLACES[0])
    server.round_trip()
    round_trips = RoundTrips()
    if host:
        host.result("startInputRecording")
        time.sleep(0.3)
        cost = processor_ms(host.process.pid)
    began = time.monotonic()
    took = server.flood()
    longest = round_trips.end()
    letters, last = window.catch_up()
    figures = {"flood": took, "server": longest, "window": last - began, "letters": letters}
    if host:
        time.sleep(1)
        figures["cost"] = processor_ms(host.process.pid) - cost
        began = time.monotonic()
        events = host.result("stopInputRecording", seconds=120)["events"]
        figures["stop"] = time.monotonic() - began
        figures.update(Counter(event["action"] for event in events))
    time.sleep(0.5)
    return figures


def inside(kind, rounds):
    from desktop_tools import Cleanups
    from quil_host import Host
    cleanups = Cleanups()
    try:
        window = Window(cleanups, kind)
        with Host() as host:
            for _ in range(rounds):
                for recorder in (None, host):
                    figures = one_flood(window, recorder)
                    print(f"{kind:6} {'Quil' if recorder else '-':5}", "  ".join(
                        f"{name} {value:.1f}" if isinstance(value, float) else f"{name} {value}"
                        for name, value in figures.items()), flush=True)
    finally:
        cleanups.close()


def main():
    folder = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else
                             os.path.join(ROOT, "build", "release"))
    rounds = sys.argv[2] if len(sys.argv) > 2 else "3"
    os.environ["QUIL_BUILD_DIR"] = folder
    if kind := os.environ.get("QUIL_BENCH_WINDOW"):
        return inside(kind, int(rounds))
    for kind in WINDOWS:
        subprocess.run([os.path.join(ROOT, "scripts", "with-desktop"), "/usr/bin/python3", "-B",
                        __file__, folder, rounds],
                       env=dict(os.environ, QUIL_BENCH_WINDOW=kind))


if __name__ == "__main__":
    main()
