"""Trees of programs that we did not write; programs and buses that hang, die and come back."""
import os
import shutil
import signal
import tempfile
import threading
import time
import unittest

from ax_tools import find, gallery, missing_for, observe, request_on
from desktop_tools import DesktopTest, Program, output, until

# Of each browser: (role, name, value); what has no name is called "".
PAGES = {
    "firefox": [("AXGroup", "", "A paragraph of bold words."), ("AXGroup", "", "Shadow paragraph"),
                ("AXGroup", "", "Frame paragraph"), ("AXGroup", "", "Table caption"),
                ("AXPopUpButton", "Fruit", "Pear"), ("AXPopUpButton", "Aria", "Chosen")],
    "chromium": [("AXPopUpButton", "Fruit", "Pear"), ("AXStaticText", "Shadow paragraph", None),
                 ("AXStaticText", "editable ", None), ("AXGroup", "Editable", "editable content")],
}
SHEET = """<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:table="urn:oasis:names:tc:opendocument:xmlns:table:1.0"
 xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0" office:version="1.2"
 office:mimetype="application/vnd.oasis.opendocument.spreadsheet"><office:body><office:spreadsheet>
<table:table table:name="S"><table:table-row><table:table-cell office:value-type="string">
<text:p>first</text:p></table:table-cell></table:table-row><table:table-row><table:table-cell
 office:value-type="float" office:value="12.5"><text:p>12.5</text:p></table:table-cell>
</table:table-row></table:table></office:spreadsheet></office:body></office:document>"""


def open_files(host):
    return len(os.listdir(f"/proc/{host.process.pid}/fd"))


class ProgramsTest(DesktopTest):
    def setUp(self):
        super().setUp()
        self.host.result("ping")  # programs join the bus only when somebody is there

    def act(self, program, role, name=None, action="invoke", **more):
        request_on(self.host, program, "desktop_ax_action", role, name, action=action, **more)

    def state(self):
        return self.host.result("desktop_ax_get_state")

    def folder(self):
        return self.enterContext(tempfile.TemporaryDirectory(ignore_cleanup_errors=True))

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
                self.assertIn("*", state["nodes"][0]["name"])
                program.end()

    def test_pages_in_browsers(self):
        for browser, expected in PAGES.items():
            with self.subTest(browser):
                if missing_for(browser):
                    self.skipTest(f"{browser} is not installed")
                program = gallery(self, browser)
                until(lambda: "Gallery" in self.host.result("desktop_target")["target"].get("windowTitle", ""),
                      "the page", 60)
                # Nobody has asked for the page before: the first answer is no empty shell.
                if browser == "chromium":
                    self.assertIn("Push", self.state()["axText"])
                state = observe(self.host, None, lambda state: "Frame paragraph" in state["axText"])
                for role, name, value in expected:
                    values = [node.get("value") for node in state["nodes"]
                              if (node["role"], node.get("name", "")) == (role, name)]
                    self.assertIn(value, values, f"{name}\n{state['axText']}")
                self.act(None, "AXButton", "Push")
                until(lambda: "Pushed" in self.state()["axText"], "pushed")
                # Fields take no text from outside; they do take the focus, and what is typed then.
                request_on(self.host, None, "desktop_type", "AXTextField", "Entry", parameter="element", text="new")
                until(lambda: "new" in find(self.state(), "AXTextField", "Entry")["value"], "typed")
                for amount, is_at_top in ((2, False), (-1, False), (-10, True)):
                    self.act(None, "AXWebArea", action="scroll", amount=amount)
                    until(lambda: ("bounds" in find(self.state(), "AXHeading", "Heading text")) == is_at_top,
                          f"scrolled by {amount}")
                program.end()

    @unittest.skipUnless(shutil.which("soffice"), "libreoffice-calc is not installed")
    def test_spreadsheets_list_the_cells_that_are_showing(self):
        path = os.path.join(self.folder(), "sheet.fods")
        with open(path, "w") as file:
            file.write(SHEET)
        Program(self, "soffice", f"-env:UserInstallation=file://{self.folder()}", "--norestore",
                "--nologo", "--nofirststartwizard", "--calc", path, has_window=False)
        state = observe(self.host, None, lambda state: "AXCell | A2" in state["axText"])
        values = {node["name"]: node.get("value") for node in state["nodes"] if node["role"] == "AXCell"}
        self.assertEqual([values[name] for name in ("A1", "A2", "B1")], ["first", "12.5", None])
        rows = {name.lstrip("ABCDEFGHIJKLMNOPQRSTUVWXYZ") for name in values}
        self.assertTrue(10 < len(rows) < 100, sorted(rows))
        self.assertFalse(state["truncated"])
        self.assertTrue(find(state, "AXTable")["enabled"])
        # A click, which is the first, on a cell; it has what is typed then.
        request_on(self.host, None, "desktop_click", "AXCell", "B5", parameter="element")
        self.host.result("desktop_type", text="typed\n")
        until(lambda: find(self.state(), "AXCell", "B5").get("value") == "typed", "the cell")


class InterruptionsTest(DesktopTest):
    def timed_state(self):
        began = time.monotonic()
        state = self.host.result("desktop_ax_get_state")
        self.assertLess(time.monotonic() - began, 3)
        return state

    def test_programs_that_stop_or_die_in_the_middle(self):
        form = gallery(self, "gtk3", "1000")
        whole = observe(self.host, form)
        for delay in (0.005, 0.02, 0.05, 0.1):
            stop = threading.Timer(delay, os.kill, (form.pid, signal.SIGSTOP))
            stop.start()
            self.timed_state()
            stop.join()
            began = time.monotonic()
            self.timed_state()  # is not waited for any more, if it was in time to stop us
            self.host.result("desktop_target")
            self.host.request("desktop_ax_action", token="e0", action="invoke")
            self.assertLess(time.monotonic() - began, 3)
            if delay == 0.1:
                other = gallery(self, "qt5")
                observe(self.host, other)
                other.end()
            os.kill(form.pid, signal.SIGCONT)
            self.assertEqual(observe(self.host, form)["revision"], whole["revision"])
        before = open_files(self.host)
        for delay in (0.005, 0.05):
            death = threading.Timer(delay, form.end)
            death.start()
            self.timed_state()
            death.join()
            self.assertIn("error", self.host.request("desktop_ax_action", token="e0.0", action="invoke"))
            form = gallery(self, "gtk3", "1000")
            observe(self.host, form)
        self.assertEqual(open_files(self.host), before)

    def test_accessibility_buses_that_stop_or_die(self):
        form = gallery(self, "gtk3", "200")
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
        successor = gallery(self, "gtk3", "200")
        observe(self.host, successor)
        self.assertLessEqual(open_files(self.host), before)

    def accessibility_bus(self):
        """The daemon of this desktop's bus: a child of the launcher that the session bus knows."""
        launcher = output("dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/",
                          "org.freedesktop.DBus.GetConnectionUnixProcessID", "string:org.a11y.Bus").split()[-1]
        with open(f"/proc/{launcher}/task/{launcher}/children") as children:
            return int(children.read().split()[0])


if __name__ == "__main__":
    unittest.main()
