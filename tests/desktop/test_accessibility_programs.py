"""Trees of programs that we did not write; programs and buses that hang, die and come back."""
import os
import signal
import tempfile
import threading
import time
import unittest

from ax_tools import Form, bounds, find, observe, request_on, walk, window_of
from desktop_tools import CHROMIUM, Program, needs_chromium, output, until
from quil_host import Host

PAGE = """<title>Page</title><h1>Heading</h1><button onclick="this.textContent = 'Pressed'">Press me
</button><input aria-label="Name" value="old"><ul>%s</ul>""" % "".join(
    f"<li>Item {number}</li>" for number in range(300))


def open_files(host):
    return len(os.listdir(f"/proc/{host.process.pid}/fd"))


class ProgramsTest(unittest.TestCase):
    def setUp(self):
        self.host = self.enterContext(Host("quil"))
        self.host.result("ping")  # programs join the bus only when somebody is there

    def act(self, program, role, name=None, action="invoke", **more):
        request_on(self.host, program, "desktop_ax_action", role, name, action=action, **more)

    def test_a_calculator(self):
        program = Program(self, "galculator")
        state = observe(self.host, program)
        theirs = [(token, name, description, extents or None)
                  for token, name, description, extents in walk(window_of(program))]
        ours = [(node["token"], node.get("name", ""), node.get("description", ""),
                 bounds(node) if "bounds" in node else None) for node in state["nodes"]]
        self.assertEqual(ours, theirs)
        self.assertEqual(find(state, "AXMenuBarItem", "File")["actions"], ["AXPress"])
        for key in ("7", "*", "6", "="):
            self.act(program, "AXCheckBox", key)
        observe(self.host, program, lambda state: "42" in state["axText"])

    def test_editors(self):
        for command in (["mousepad", "--disable-server"], ["featherpad", "--standalone"]):
            with self.subTest(command[0]):
                program = Program(self, *command)
                self.act(program, "AXTextArea", action="set_value", value="naïve\nテスト")
                state = observe(self.host, program)
                area = find(state, "AXTextArea")
                self.assertEqual(self.host.result("desktop_read_value", token=area["token"])["value"],
                                 "naïve\nテスト")
                # The window says that its text has changed; nobody had to tell us.
                self.assertIn("*", find(state, state["nodes"][0]["role"])["name"])
                program.end()

    @needs_chromium
    def test_a_page_in_a_browser(self):
        folder = self.enterContext(tempfile.TemporaryDirectory(ignore_cleanup_errors=True))
        with open(f"{folder}/page.html", "w") as page:
            page.write(PAGE)
        program = Program(self, *CHROMIUM, f"--user-data-dir={folder}/data",
                          f"file://{folder}/page.html")
        until(lambda: "Page" in self.host.result("desktop_target")["target"].get("windowTitle", ""),
              "the page")
        # Nobody has asked for the page before: the first answer is no empty shell, however long the
        # browser has been known.
        self.assertIn("Press me", self.host.result("desktop_ax_get_state")["axText"])
        observe(self.host, program, lambda state: "Item 299" in state["axText"])
        self.act(program, "AXButton", "Press me")
        observe(self.host, program, lambda state: "Pressed" in state["axText"])
        # Its fields take no text from outside; they do take the focus, and what is typed then.
        request_on(self.host, program, "desktop_type", "AXTextField", "Name", parameter="element",
                   text="new")
        observe(self.host, program, lambda state: "new" in
                find(state, "AXTextField", "Name")["value"])


class InterruptionsTest(unittest.TestCase):
    def setUp(self):
        self.host = self.enterContext(Host("quil"))
        self.host.result("ping")

    def timed_state(self):
        began = time.monotonic()
        state = self.host.result("desktop_ax_get_state")
        self.assertLess(time.monotonic() - began, 3)
        return state

    def test_programs_that_stop_or_die_in_the_middle(self):
        form = Form(self, "gtk3", "1000")
        whole = observe(self.host, form)
        for delay in (0.005, 0.02, 0.05, 0.1):
            stop = threading.Timer(delay, os.kill, (form.pid, signal.SIGSTOP))
            stop.start()
            self.timed_state()
            stop.join()
            began = time.monotonic()
            self.timed_state()  # is not waited for any more, if it was in time to stop us
            self.timed_state()
            self.assertLess(time.monotonic() - began, 3)
            os.kill(form.pid, signal.SIGCONT)
            self.assertEqual(observe(self.host, form)["revision"], whole["revision"])
        before = open_files(self.host)
        for delay in (0.005, 0.05):
            death = threading.Timer(delay, form.end)
            death.start()
            self.timed_state()
            death.join()
            form = Form(self, "gtk3", "1000")
            observe(self.host, form)
        self.assertEqual(open_files(self.host), before)

    def test_accessibility_buses_that_stop_or_die(self):
        form = Form(self, "gtk3", "200")
        whole = observe(self.host, form)
        bus = self.accessibility_bus()
        os.kill(bus, signal.SIGSTOP)
        try:
            for _ in range(2):
                self.assertEqual(self.timed_state()["nodes"],
                                 [{"token": "e0", "role": "AXUnknown"}])
        finally:
            os.kill(bus, signal.SIGCONT)
        self.assertEqual(observe(self.host, form)["revision"], whole["revision"])
        before = open_files(self.host)
        death = threading.Timer(0.02, os.kill, (bus, signal.SIGKILL))
        death.start()
        self.timed_state()
        death.join()
        # The session starts another bus for those who ask; programs of the old one are not on it.
        until(lambda: self.host.result("ping")["accessibility"], "another bus")
        successor = Form(self, "gtk3", "200")
        observe(self.host, successor)
        self.assertLessEqual(open_files(self.host), before)

    def accessibility_bus(self):
        """The daemon of this desktop's bus: a child of the launcher that the session bus knows."""
        launcher = int(self.owner("org.a11y.Bus"))
        with open(f"/proc/{launcher}/task/{launcher}/children") as children:
            return int(children.read().split()[0])

    def owner(self, name):
        return output("dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/",
                      "org.freedesktop.DBus.GetConnectionUnixProcessID",
                      f"string:{name}").split()[-1]


if __name__ == "__main__":
    unittest.main()
