"""What tests of observed trees need: forms to observe, and what libatspi sees of them."""
import json
import os
import queue
import subprocess
import threading

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi

from desktop_tools import PYTHON, SUPPORT, Program, until
from quil_host import Failure


class Form(Program):
    """tests/support/form_app.py, and what it says of itself."""

    def __init__(self, test, toolkit, *arguments):
        super().__init__(test, PYTHON, "-B", os.path.join(SUPPORT, "form_app.py"), toolkit,
                         *arguments, stdout=subprocess.PIPE)
        self.states = queue.Queue()
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stdout:
            self.states.put(json.loads(line))

    def until(self, **wanted):
        """Waits for a state with these members."""
        while True:
            state = self.states.get(timeout=20)
            if wanted.items() <= state.items():
                return state

    def end(self):
        super().end()
        self.process.stdout.close()


def observe(host, program, condition=lambda state: True):
    """The tree of the program, once it is in front, as wanted, and changes no more."""
    revision = None

    def look():
        nonlocal revision
        before, state = revision, host.result("desktop_ax_get_state")
        revision = state["revision"]
        is_whole = len(state["nodes"]) > 5 and condition(state)
        is_front = state.get("target", {}).get("pid") == program.pid
        return state if is_front and is_whole and before == revision else None

    return until(look, "the program's tree")


def find(state, role, name=None):
    found = [node for node in state["nodes"]
             if node["role"] == role and name in (None, node.get("name"))]
    if not found:
        raise AssertionError(f"no {role} {name} in\n{state['axText']}")
    return found[0]


def request_on(host, program, method, role, name=None, parameter="token", **more):
    """Sends a request that names an element, as hosts do: observes again when the tree has changed
    meanwhile."""
    def try_it():
        token = find(observe(host, program), role, name)["token"]
        error = host.request(method, **{parameter: token}, **more).get("error", {})
        if error and error["code"] != "COMPUTER_CONTROL_STALE_SNAPSHOT":
            raise Failure(error)
        return not error

    until(try_it, f"{method} of {role} {name}")


def walk(accessible, token="e0"):
    """What libatspi sees: (token, name, description, size or None), parents first."""
    extents = None
    states = accessible.get_state_set()
    if states.contains(Atspi.StateType.SHOWING) and "Component" in accessible.get_interfaces():
        rect = Atspi.Component.get_extents(accessible, Atspi.CoordType.SCREEN)
        if rect.width > 0 and rect.height > 0:
            extents = (rect.x, rect.y, rect.width, rect.height)
    yield token, accessible.get_name(), accessible.get_description(), extents
    for position in range(accessible.get_child_count()):
        yield from walk(accessible.get_child_at_index(position), f"{token}.{position}")


def window_of(program):
    desktop = Atspi.get_desktop(0)
    for position in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(position)
        if application and application.get_process_id() == program.pid:
            return application.get_child_at_index(0)
    raise AssertionError("libatspi does not see the program")


def has_focused_field(accessible):
    """Whether a text field in there has the keyboard focus, as libatspi sees it."""
    states = accessible.get_state_set()
    if states.contains(Atspi.StateType.FOCUSED) and states.contains(Atspi.StateType.EDITABLE):
        return True
    return any(has_focused_field(accessible.get_child_at_index(position))
               for position in range(min(accessible.get_child_count(), 20)))


def bounds(node):
    return tuple(node["bounds"][key] for key in ("x", "y", "width", "height"))
