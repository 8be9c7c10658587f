#!/usr/bin/env python3
"""A tour of the runtime: a host that launches, observes and drives two applications.

usage: tour.py QUIL FOLDER

QUIL is the runtime's executable, FOLDER where the pictures go. The applications are galculator (GTK)
and mousepad (GTK). Every line that goes over the pipe is shown: "→" is a request, "←" its answer; long
ones are cut in the middle, where it is said how much is missing. The exit status is 0 when everything
came out as it should.
"""
import base64
import json
import os
import subprocess
import sys
import time

SHOWN = 400  # characters of a line
PATIENCE = 20  # seconds for an application to show up
STALE = "COMPUTER_CONTROL_STALE_SNAPSHOT"


class Runtime:
    """The runtime as a child process; one JSON line each way."""

    def __init__(self, executable):
        try:
            self.process = subprocess.Popen([executable], stdin=subprocess.PIPE,
                                            stdout=subprocess.PIPE)
        except OSError as error:
            sys.exit(f"tour: {executable} cannot be started: {error.strerror}")
        self.id = 0

    def request(self, method, quiet=False, **params):
        """Sends one request and returns its whole answer."""
        self.id += 1
        request = {"id": self.id, "method": method}
        if params:
            request["params"] = params
        line = json.dumps(request, ensure_ascii=False)
        self.process.stdin.write(line.encode() + b"\n")
        self.process.stdin.flush()
        answer = self.process.stdout.readline().decode()
        if not answer:
            sys.exit("tour: the runtime ended")
        if not quiet:
            show("→", line)
            show("←", answer.rstrip("\n"))
        return json.loads(answer)

    def result(self, method, quiet=False, **params):
        answer = self.request(method, quiet, **params)
        if "error" in answer:
            sys.exit(f"tour: {method} failed: {answer['error']}")
        return answer["result"]

    def until(self, condition, what, method, **params):
        """Asks again until the answer is as wanted; shows the answer that is."""
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            if condition(self.result(method, quiet=True, **params)):
                return self.result(method, **params)
            time.sleep(0.05)
        sys.exit(f"tour: {what} did not happen within {PATIENCE} s")


def show(direction, line):
    if len(line) > SHOWN:
        half = SHOWN // 2
        line = f"{line[:half]} […{len(line) - SHOWN} more…] {line[-half:]}"
    print(f"  {direction} {line}", flush=True)


def say(text):
    print(f"\n{text}", flush=True)


def check(truth, what):
    if not truth:
        sys.exit(f"tour: {what}")


def find(state, role, name=None):
    """The first element of that role (and name)."""
    for node in state["nodes"]:
        if node["role"] == role and name in (None, node.get("name")):
            return node
    sys.exit(f"tour: no {role} {name or ''} in\n{state['axText']}")


def press(runtime, role, name):
    """Presses an element; looks again when something has changed since the last look."""
    for _ in range(20):
        token = find(runtime.result("desktop_ax_get_state"), role, name)["token"]
        answer = runtime.request("desktop_ax_action", token=token, action="invoke")
        if "error" not in answer:
            return
        check(answer["error"]["code"] == STALE, f"{name} cannot be pressed: {answer['error']}")
    sys.exit(f"tour: the window does not come to rest, so {name} cannot be pressed")


def save(data_url, path):
    check(data_url, "there is no picture")
    with open(path, "wb") as file:
        file.write(base64.b64decode(data_url.partition(",")[2]))
    print(f"  (saved as {path})")


def launch(runtime, app_id, title):
    """Launches an application and waits until its window is in front and shows its elements."""
    runtime.result("desktop_launch_app", appId=app_id)
    runtime.until(lambda result: title in result["target"].get("windowTitle", "")
                  and result["target"].get("bundleIdentifier") == app_id,
                  f"{app_id} in front", "desktop_target")
    return runtime.until(lambda state: len(state["nodes"]) > 5, f"elements of {app_id}",
                         "desktop_ax_get_state")


def calculator(runtime, folder):
    say("The calculator is launched, and its window observed: every element has a token.")
    state = launch(runtime, "galculator.desktop", "galculator")

    say("A button (this toolkit calls it a check box) is pressed by its token. That changes the display, and with it the tree …")
    first = find(state, "AXCheckBox", "6")["token"]
    runtime.result("desktop_ax_action", token=first, action="invoke")
    say("… so the next token of the old tree is refused: it might name something else by now.")
    error = runtime.request("desktop_ax_action", token=first, action="invoke")["error"]
    check(error["code"] == STALE, "the old token was not refused")
    say("After another look the new tokens hold.")
    for name in "*7=":
        press(runtime, "AXCheckBox", name)
    runtime.until(lambda state: "42" in state["axText"], "the result", "desktop_ax_get_state")
    say("The display says 42. A picture of the window:")
    save(runtime.result("desktop_screenshot")["screenshotDataURL"],
         os.path.join(folder, "calculator.png"))


def editor(runtime, folder):
    say("An editor comes next. Its text is set, and read back.")
    state = launch(runtime, "org.xfce.mousepad.desktop", "Mousepad")
    text = find(state, "AXTextArea")["token"]
    runtime.result("desktop_ax_action", token=text, action="set_value", value="Set by token.")
    state = runtime.result("desktop_ax_get_state")
    text = find(state, "AXTextArea")["token"]
    check(runtime.result("desktop_read_value", token=text)["value"] == "Set by token.",
          "the text is not what was set")

    say("Keys are pressed, text is typed (any text) and pasted.")
    runtime.result("desktop_keypress", combo="cmd+end")
    typed = "\nTyped: Grüße, Ελλάδα, Привет, 日本語, 한국어 — “quotes”"
    runtime.result("desktop_type", text=typed)
    pasted = "\nPasted: the clipboard has its old text again."
    runtime.result("desktop_paste", text=pasted)
    expected = "Set by token." + typed + pasted
    runtime.until(lambda state: find(state, "AXTextArea").get("value") == expected,
                  f"the text {expected!r}", "desktop_ax_get_state")

    say("One Glimpse capture: text, picture, end.")
    runtime.result("startFrontmostGlimpseCapture", requestId="tour")
    runtime.result("nextGlimpseCaptureUpdate", requestId="tour")
    picture = runtime.result("nextGlimpseCaptureUpdate", requestId="tour")["update"]
    save(picture["screenshotDataURL"], os.path.join(folder, "editor.png"))
    done = runtime.result("nextGlimpseCaptureUpdate", requestId="tour")["update"]
    check(done["type"] == "completed", "the capture has no end")


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip())
    executable, folder = sys.argv[1:]
    runtime = Runtime(executable)
    say("What is the runtime allowed to do, and what is there?")
    permissions = runtime.result("ping")
    check(permissions["permissionsGranted"], "permissions are missing")
    runtime.result("desktop_windows_list")
    calculator(runtime, folder)
    editor(runtime, folder)
    say("Both run, and the window list knows them. Closing its input ends the runtime.")
    runtime.result("desktop_windows_list")
    runtime.process.stdin.close()
    check(runtime.process.wait() == 0, "the runtime failed")
    say(f"That was all. The pictures are in {folder}/.")


if __name__ == "__main__":
    main()
