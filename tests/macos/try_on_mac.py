#!/usr/bin/env python3
"""What scripts/try-on-mac does once Quil is built: drives two programs of the system through every
method, compares what can be compared, and writes mac-report.txt.

    try_on_mac.py [PROGRAM [ARGUMENT...]]    (quil, unless given; in QUIL_BUILD_DIR)
"""
import base64
import os
import platform
import struct
import subprocess
import sys
import time

from quil_host import Failure, Host, executable

FOLDER = "mac-report"
TEXT = "Grüße, 世界 😀 e\u0301"
MIDDLE = {"x": 0.5, "y": 0.5}
PERMISSIONS = {"accessibility": "Accessibility", "inputMonitoring": "Input Monitoring",
               "screenRecording": "Screen & System Audio Recording"}
KEYS = {"7": ("7", "seven", "Seven"), "×": ("×", "multiply", "Multiply"),
        "6": ("6", "six", "Six"), "=": ("=", "equals", "Equals")}


class Report:
    def __init__(self, path):
        self.file = open(path, "w", encoding="utf-8")
        self.failures = 0

    def line(self, text):
        print(text, flush=True)
        self.file.write(text + "\n")
        self.file.flush()

    def check(self, what, compare):
        """One line for what `compare` finds: True is well, anything else is written down."""
        begun = time.monotonic()
        try:
            found = compare()
        except (Failure, LookupError, AssertionError, OSError) as error:
            found = f"{type(error).__name__}: {error}"
        took = f"{time.monotonic() - begun:.2f} s"
        self.failures += found is not True
        self.line(f"{'ok    ' if found is True else 'FAILED'} {took:>8}  {what}" +
                  ("" if found is True else f": {found}"))
        return found is True


def same(found, wanted):
    return True if found == wanted else f"{found!r} instead of {wanted!r}"


def said_by(*command):
    try:
        done = subprocess.run(command, capture_output=True, text=True, timeout=20)
        return " ".join((done.stdout + done.stderr).split())
    except OSError:
        return "not to be had here"


def until(question, seconds=20):
    """Asks until the answer is something, or the time is over."""
    deadline = time.monotonic() + seconds
    while not (answer := question()) and time.monotonic() < deadline:
        time.sleep(0.2)
    return answer


class Trial:
    def __init__(self, host, report):
        self.host, self.report = host, report
        self.check = report.check

    def nodes(self):
        return self.host.result("desktop_ax_get_state")["nodes"]

    def find(self, **wanted):
        """The first node with one of the given values in each of the given members."""
        return next((node for node in self.nodes() if all(
            node.get(key) in (values if isinstance(values, tuple) else (values,))
            for key, values in wanted.items())), None)

    def token(self, **wanted):
        node = until(lambda: self.find(**wanted), 5)
        if not node:
            raise LookupError(f"nothing like {wanted}")
        return node["token"]

    def in_front(self, name):
        return self.host.result("desktop_target")["target"].get("name") == name

    def app(self, name):
        apps = self.host.result("desktop_apps_list")["apps"]
        return next(app for app in apps if app["name"] == name)

    def launch(self, name):
        app = self.app(name)
        assert not app["running"], f"{name} is running: close it first"
        self.host.result("desktop_launch_app", appId=app["appId"])
        return until(lambda: self.in_front(name)) or f"{name} did not come to the front"

    def quit(self, name):
        if self.in_front(name):
            self.host.result("desktop_keypress", combo="cmd+q")
        for _ in range(2):
            if until(lambda: not self.app(name)["running"], 5):
                return True
            # A sheet that asks whether to keep the text.
            sheet = self.in_front(name) and self.find(name=("Delete", "Don’t Save", "Don't Save"))
            if not sheet:
                break
            self.host.result("desktop_ax_action", token=sheet["token"], action="invoke")
        return f"{name} is still there: close it by hand"

    def picture(self, name, data_url):
        """Keeps the picture; its size in pixels."""
        assert data_url, "no picture"
        data = base64.b64decode(data_url.split(",", 1)[1])
        assert data.startswith(b"\x89PNG"), "no PNG"
        with open(os.path.join(FOLDER, name + ".png"), "wb") as file:
            file.write(data)
        return struct.unpack(">II", data[16:24])

    def places(self, name):
        """The window's bounds in the tree, in the window list, and twice that in its picture."""
        window = self.find(role="AXWindow")["bounds"]
        listed = next(entry for entry in self.host.result("desktop_windows_list")["windows"]
                      if entry["owner"] == name)["bounds"]
        found = same([window[key] for key in ("x", "y", "width", "height")],
                     [round(listed[key]) for key in ("X", "Y", "Width", "Height")])
        size = self.picture(name, self.host.result("desktop_screenshot")["screenshotDataURL"])
        return found if found is not True else same(
            size, (2 * window["width"], 2 * window["height"]))

    def calculator(self):
        if not self.check("launch Calculator", lambda: self.launch("Calculator")):
            return

        def multiply():
            for names in KEYS.values():
                node = next((n for n in self.nodes() if n["role"] == "AXButton" and any(
                    n.get(member) in names for member in ("name", "description", "identifier"))),
                    None)
                assert node, f"no button {names}"
                self.host.result("desktop_ax_action", token=node["token"], action="invoke")
            return True if until(lambda: "42" in self.host.result("desktop_ax_get_state")["axText"],
                                 5) else "42 is nowhere in the text"
        self.check("7 × 6 = 42 by buttons", multiply)
        self.check("bounds and picture of Calculator", lambda: self.places("Calculator"))
        self.check("Calculator has ended", lambda: self.quit("Calculator"))

    def editor(self):
        if not self.check("launch TextEdit", lambda: self.launch("TextEdit")):
            return
        area = {"role": "AXTextArea"}
        if not until(lambda: self.find(**area), 3):
            self.host.result("desktop_keypress", combo="cmd+n")
        do, host = self.check, self.host

        def value():
            return host.result("desktop_read_value", token=self.token(**area))["value"]

        def set_to(text):
            host.result("desktop_ax_action", token=self.token(**area), action="set_value", value=text)
            return same(value(), text)

        def entered(method):
            host.result(method, text=TEXT, element=self.token(**area))
            until(lambda: value() == TEXT, 3)
            return same(value(), TEXT)

        do("set the text", lambda: set_to("one"))
        do("focus the text", lambda: host.result("desktop_ax_action", token=self.token(**area),
                                                 action="focus")["ok"])
        do("empty the text", lambda: set_to(""))
        do("type", lambda: entered("desktop_type"))
        do("empty the text again", lambda: set_to(""))
        do("paste", lambda: entered("desktop_paste"))
        do("a token that has become stale", lambda: same(
            host.error("desktop_read_value", token="e9.9").get("code") is None, False))
        self.recorded(area)
        do("double click", lambda: host.result("desktop_double_click",
                                               element=self.token(**area))["ok"])
        do("scroll", lambda: host.result("desktop_scroll", element=self.token(**area),
                                         amount=-2)["ok"])
        do("move", lambda: host.result("desktop_move", point=MIDDLE)["ok"])
        do("drag", lambda: host.result("desktop_drag", **{
            "from": MIDDLE, "to": {"x": 0.55, "y": 0.5}})["ok"])
        do("press keys", lambda: host.result("desktop_keypress", combo="shift+left")["ok"])
        do("bounds and picture of TextEdit", lambda: self.places("TextEdit"))

        def glimpse():
            host.result("startFrontmostGlimpseCapture", requestId="try")
            updates = [host.result("nextGlimpseCaptureUpdate", requestId="try")["update"]
                       for _ in range(3)]
            host.result("cancelGlimpseCapture", requestId="try")
            self.picture("glimpse", updates[1]["screenshotDataURL"])
            return same([update["type"] for update in updates],
                        ["axText", "screenshot", "completed"])
        do("Glimpse capture", glimpse)
        do("empty the text at the end", lambda: set_to(""))
        do("TextEdit has ended", lambda: self.quit("TextEdit"))

    def recorded(self, area):
        def compare():
            self.host.result("startInputRecording")
            self.host.result("desktop_click", element=self.token(**area))
            first = self.host.result("nextInputEvent", timeoutMs=3000).get("event") or {}
            self.host.result("desktop_keypress", combo="right")
            time.sleep(0.5)
            rest = self.host.result("stopInputRecording")["events"]
            return same([first.get("action"), *[event["action"] for event in rest]],
                        ["click", "keypress"])
        self.check("a recording of our own click and key", compare)


def main():
    program = sys.argv[1:] or ["quil"]
    os.makedirs(FOLDER, exist_ok=True)
    report = Report("mac-report.txt")
    report.line(f"system: {said_by('sw_vers')} {platform.machine()}")
    report.line(f"executable: {said_by('lipo', '-archs', executable(program[0]))}, "
                f"{said_by('codesign', '--display', '--requirements', '-', executable(program[0]))}")
    with Host(*program) as host:
        permissions = host.result("ping")
        missing = [name for key, name in PERMISSIONS.items() if not permissions[key]]
        report.line(f"permissions: {permissions}")
        if missing:
            report.line("missing: " + ", ".join(missing))
            report.line("Open System Settings, Privacy & Security. In each of these lists press +, "
                        "choose the program in which this script runs (Terminal), turn it on, quit "
                        "that program, open it again and run this script again.")
            return 2
        trial = Trial(host, report)
        report.check("an unknown method", lambda: same(
            host.error("no_such_thing"), {"message": "unknown method: no_such_thing"}))
        trial.calculator()
        trial.editor()
        lines, status, errors = host.close()
        report.check("the end", lambda: same((lines, status), ([], 0)))
        report.line(f"standard error: {errors.decode(errors='replace').strip() or 'nothing'}")
    report.line(f"{report.failures} failed; please send mac-report.txt and {FOLDER}/")
    return 1 if report.failures else 0


if __name__ == "__main__":
    sys.exit(main())
