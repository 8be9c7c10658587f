#!/usr/bin/env python3
"""What scripts/try-on-mac does once Quil is built: drives two programs of the system through every
method, compares what can be compared, and writes mac-report.txt.

    try_on_mac.py [PROGRAM [ARGUMENT...]]    (quil in QUIL_BUILD_DIR, unless given)
"""
import os
import platform
import re
import subprocess
import sys
import time

from quil import Desktop, Fraction, QuilError, StaleSnapshot, expect

FOLDER = "mac-report"
TEXT = "Grüße, 世界 😀 e\u0301"
MIDDLE = Fraction(0.5, 0.5)
PERMISSIONS = {"accessibility": "Accessibility", "inputMonitoring": "Input Monitoring",
               "screenRecording": "Screen & System Audio Recording"}
KEYS = ["7|seven", "×|multiply", "6|six", "=|equals"]


class Report:
    def __init__(self, path):
        self.file = open(path, "w", encoding="utf-8")
        self.failures = 0

    def line(self, text):
        for file in (sys.stdout, self.file):
            print(text, file=file, flush=True)

    def check(self, what, compare, *arguments):
        """One line for what `compare` finds: True is well, anything else is written down."""
        begun = time.monotonic()
        try:
            found = compare(*arguments)
        except (QuilError, LookupError, AssertionError, OSError) as error:
            found = f"{type(error).__name__}: {error}"
        well = found in (True, None)
        self.failures += not well
        self.line(f"{'ok    ' if well else 'FAILED'} {time.monotonic() - begun:>6.2f} s  {what}" +
                  ("" if well else f": {found}"))
        return well


def same(found, wanted):
    return found == wanted or f"{found!r} instead of {wanted!r}"


def said_by(*command):
    try:
        done = subprocess.run(command, capture_output=True, text=True, timeout=20)
        return " ".join((done.stdout + done.stderr).split())
    except OSError:
        return "not to be had here"


class Trial:
    def __init__(self, desktop, report):
        self.desktop, self.runtime, self.check = desktop, desktop.runtime, report.check
        self.area = desktop.locator(role="AXTextArea")

    def app(self, name):
        return next(app for app in self.desktop.apps() if app.name == name)

    def launch(self, name):
        app = self.app(name)
        assert not app.running, f"{name} is running: close it first"
        return same(self.desktop.launch(app.app_id).name, name)

    def quit(self, name):
        def in_front():
            return self.desktop.target().name == name
        if in_front():
            self.desktop.keyboard.press("cmd+q")
        # A sheet may ask whether to keep the text.
        no = self.desktop.locator(role="AXButton", name=re.compile("^(Delete|Don['’]t Save)$"))
        deadline = time.monotonic() + 10
        while self.app(name).running:
            if time.monotonic() > deadline:
                return f"{name} is still there: close it by hand"
            if in_front() and no.exists():
                no.click()
            time.sleep(0.2)
        return True

    def bounds_and_picture(self, name):
        """The window's bounds in the tree, in the window list, and twice that in its picture."""
        picture = self.desktop.screenshot()
        picture.save(os.path.join(FOLDER, name + ".png"))
        bounds = self.desktop.locator(role="AXWindow").first.bounds()
        listed = next(window.bounds for window in self.desktop.windows() if window.owner == name)
        return same((bounds, picture.size), (tuple(map(round, listed)),
                                             (2 * bounds.width, 2 * bounds.height)))

    def calculator(self):
        def multiply():
            for names in KEYS:
                name = re.compile(f"^({names})$", re.IGNORECASE)
                look = self.desktop.observe()
                found = look.find(role="AXButton", name=name) or look.find(role="AXButton", id=name)
                assert found, f"no button {names}"
                self.runtime.desktop_ax_action(found[0].token, "invoke")
            expect(self.desktop.get_by_text("42").first).to_be_visible()
        if self.check("launch Calculator", self.launch, "Calculator"):
            self.check("7 × 6 = 42 by buttons", multiply)
            self.check("bounds and picture of Calculator", self.bounds_and_picture, "Calculator")
            self.check("Calculator has ended", self.quit, "Calculator")

    def editor(self):
        if not self.check("launch TextEdit", self.launch, "TextEdit"):
            return
        if not self.area.exists():
            self.desktop.keyboard.press("cmd+n")
        do, mouse, area = self.check, self.desktop.mouse, self.area

        def set_to(text):
            self.runtime.desktop_ax_action(area.element().token, "set_value", text)
            return same(area.value(), text)

        def entered(method):
            method(TEXT, area.element().token)
            expect(area).to_have_value(TEXT)

        def stale():
            try:
                return self.runtime.desktop_read_value("e9.9")
            except StaleSnapshot:
                return True

        do("set the text", set_to, "one")
        do("focus the text", area.focus)
        do("empty the text", set_to, "")
        do("type", entered, self.runtime.desktop_type)
        do("empty the text again", set_to, "")
        do("paste", entered, self.runtime.desktop_paste)
        do("a token that has become stale", stale)
        do("a recording of our own click and key", self.recorded)
        do("double click", area.double_click)
        do("scroll", area.scroll, -2)
        do("move", mouse.move, MIDDLE)
        do("drag", mouse.drag, [MIDDLE, Fraction(0.55, 0.5)])
        do("press keys", self.desktop.keyboard.press, "shift+left")
        do("bounds and picture of TextEdit", self.bounds_and_picture, "TextEdit")
        do("Glimpse capture", self.glimpse)
        do("empty the text at the end", set_to, "")
        do("TextEdit has ended", self.quit, "TextEdit")

    def glimpse(self):
        views = list(self.desktop.glimpse())
        views[1].picture.save(os.path.join(FOLDER, "glimpse.png"))
        return same([view.type for view in views], ["axText", "screenshot"])

    def recorded(self):
        with self.desktop.record() as recording:
            self.area.click(pointer=True)
            next(recording.within(3), None)
            self.desktop.keyboard.press("right")
            time.sleep(0.5)
        return same([action["action"] for action in recording.actions], ["click", "keypress"])


def main():
    program, *arguments = sys.argv[1:] or [os.path.join(os.environ["QUIL_BUILD_DIR"], "quil")]
    os.makedirs(FOLDER, exist_ok=True)
    report = Report("mac-report.txt")
    report.line(f"system: {said_by('sw_vers')} {platform.machine()}")
    report.line(f"executable: {said_by('lipo', '-archs', program)}, "
                f"{said_by('codesign', '--display', '--requirements', '-', program)}")
    # Its standard error is sent back, too.
    command = ["/bin/sh", "-c", f'exec "$0" "$@" 2>{FOLDER}/errors.txt', program, *arguments]
    with Desktop(command) as desktop:
        permissions = desktop.permissions()
        missing = [name for key, name in PERMISSIONS.items() if not permissions[key]]
        report.line(f"permissions: {permissions}")
        if missing:
            report.line("missing: " + ", ".join(missing))
            report.line("Open System Settings, Privacy & Security. In each of these lists press +, "
                        "choose the program in which this script runs (Terminal), turn it on, quit "
                        "that program, open it again and run this script again.")
            return 2
        trial = Trial(desktop, report)
        trial.calculator()
        trial.editor()
    report.check("the end", same, desktop.runtime._process.returncode, 0)
    report.line(f"{report.failures} failed; please send mac-report.txt and {FOLDER}/")
    return 1 if report.failures else 0


if __name__ == "__main__":
    sys.exit(main())
