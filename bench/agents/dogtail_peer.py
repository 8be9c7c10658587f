#!/usr/bin/python3
"""Does steps of a task with dogtail, which looks for elements by name and role over AT-SPI, and clicks and types by the X server's test
extension. Commands come as JSON lines, as quil-mcp's tools are called: {"do": "dump"}, or {"do": "click", "role": …, "name": …}. Each is
answered with {"text": …} or {"error": …}. A dump is what a model would have to read: dogtail's own print of the window.

usage: dogtail_peer.py APPLICATION    (its name on the accessibility bus)
"""
import contextlib
import io
import json
import os
import sys

os.environ.setdefault("XDG_SESSION_TYPE", "x11")
from dogtail import config

# It asks the settings of a GNOME session, where there is none.
config.config.checkForA11y = False
config.config.logDebugToStdOut = False
config.config.logDebugToFile = False
config.config.searchCutoffCount = 20

with contextlib.redirect_stdout(io.StringIO()):
    from dogtail import predicate, rawinput, tree

PRESSING = ("click", "press", "activate", "toggle")


def window(application):
    """The active window of the program; else its last one."""
    program = next(one for one in tree.root.applications() if one.name.lower() == application.lower())
    windows = [one for one in program.children if one.showing]
    return next((one for one in windows if one.getState().contains(1)), windows[-1])


def find(application, role, name):
    return window(application).findChild(
        predicate.GenericPredicate(roleName=role, name=name) if name is not None else predicate.GenericPredicate(roleName=role))


def do(application, command):
    what = command["do"]
    if what == "dump":
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            window(application).dump()
        return printed.getvalue()
    if what == "keys":
        for combo in command["keys"]:
            rawinput.keyCombo(combo)
        return ""
    if what == "type":
        rawinput.typeText(command["text"])
        return ""
    element = find(application, command["role"], command.get("name"))
    if what == "fill":
        if command["role"] == "slider":
            element.value = float(command["text"])
        else:
            element.text = command["text"]
    elif what == "point":
        element.click()
    else:
        action = next((one for one in PRESSING if one in element.actions), None)
        if action:
            element.doActionNamed(action)
        else:
            element.click()
    return ""


def main():
    application = sys.argv[1]
    for line in sys.stdin:
        try:
            answer = {"text": do(application, json.loads(line))}
        except Exception as error:  # whatever it cannot do is its answer
            answer = {"error": f"{type(error).__name__}: {error}"}
        print(json.dumps(answer), flush=True)


main()
