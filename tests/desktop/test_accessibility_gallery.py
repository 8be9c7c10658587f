"""What elements of every toolkit say that they hold, and whether what is done to them happens."""
import json
import os
import queue
import shutil
import subprocess
import tempfile
import threading
import unittest

from ax_tools import find, observe, request_on
from desktop_tools import CHROMIUM, PYTHON, SUPPORT, Program, until
from quil_host import Host

GALLERY = os.path.join(SUPPORT, "gallery")
ATK_WRAPPER = "/usr/share/java/java-atk-wrapper.jar"

# Of each toolkit: (role, name, value) of elements, None for no value; a name of None is the first.
VALUES = {
    "gtk3": [("AXButton", "Push", None), ("AXPopUpButton", None, "Pear"),
             ("AXComboBox", None, "Pear"), ("AXIncrementor", None, "25"),
             ("AXProgressIndicator", None, "0.4"), ("AXRadioButton", "First", "1"),
             ("AXRadioButton", "Second", "0"), ("AXCheckBox", "More", "0"),
             ("AXCell", "cell0_0", None), ("AXStaticText", "in a frame", None)],
    "gtk4": [("AXCheckBox", "Two", "1"), ("AXIncrementor", None, "25"), ("AXLink", "Link", None),
             ("AXLevelIndicator", None, "0.6")],
    "qt5": [("AXButton", "Push", None), ("AXRadioButton", "First", "1"),
            ("AXRadioButton", "Second", "0"), ("AXComboBox", None, "Pear"),
            ("AXStaticText", "", "read only text"), ("AXMenuItem", "File", None)],
    "qml5": [("AXComboBox", "Fruit", "Pear"), ("AXTextField", None, "entry text"),
             ("AXRadioButton", "First", "1"), ("AXCheckBox", "Check", "0")],
    "swing": [("AXButton", "Push", None), ("AXMenuItem", "Open", None),
              ("AXMenuBarItem", "File", None), ("AXPopUpButton", None, "Pear"),
              ("AXComboBox", "Editable", "Pear"), ("AXIncrementor", "Spin", "25"),
              ("AXTextField", "Entry", "entry text"), ("AXRadioButton", "Two", "1"),
              ("AXStaticText", "cell0_0", None)],
}
VALUES["qt6"], VALUES["qml6"] = VALUES["qt5"], VALUES["qml5"]

# (role, name, request, what the program then says of itself)
INVOKE = {"action": "invoke"}
ACTIONS = {
    "gtk3": [("AXCheckBox", "Toggle", INVOKE, {"toggle": True}),
             ("AXCheckBox", "More", INVOKE, {"more": True}),
             ("AXIncrementor", None, {"action": "set_value", "value": "60"}, {"spin": 60})],
    "gtk4": [("AXCheckBox", "GtkSwitch", INVOKE, {"switch": True})],
    "qt5": [("AXCheckBox", "Check", INVOKE, {"check": True}),
            ("AXRadioButton", "One", INVOKE, {"one": True}),
            ("AXRadioButton", "Second", INVOKE, {"tab": 1}),
            ("AXIncrementor", None, {"action": "set_value", "value": "60"}, {"spin": 60}),
            ("AXMenuItem", "File", INVOKE, {"menu": True})],
    "qml5": [("AXCheckBox", "Check", INVOKE, {"check": True}),
             ("AXCheckBox", "Toggle", INVOKE, {"toggle": True}),
             ("AXCheckBox", "Switch", INVOKE, {"switch": True}),
             ("AXRadioButton", "One", INVOKE, {"one": True}),
             ("AXButton", "Push", INVOKE, {"push": True}),
             ("AXSlider", None, {"action": "set_value", "value": "60"}, {"slider": 60})],
    "swing": [("AXCheckBox", "Toggle", INVOKE, {"toggle": True}),
              ("AXSlider", "Slide", {"action": "set_value", "value": "30"}, {"slider": 30}),
              ("AXIncrementor", "Spin", {"action": "set_value", "value": "22"}, {"spin": 22}),
              ("AXPopUpButton", None, INVOKE, {"combo": True})],
}
ACTIONS["qt6"] = ACTIONS["qt5"]
# Buttons of Qt Quick 6.4 answer that they are pressed, and do nothing.
ACTIONS["qml6"] = [action for action in ACTIONS["qml5"] if action[0] != "AXButton"]


PAGE = os.path.join(GALLERY, "gallery.html")
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


def missing(toolkit):
    """What is not installed of what the toolkit's gallery needs; None when nothing is."""
    if toolkit == "swing":
        has_java = shutil.which("java") and shutil.which("javac") and os.path.exists(ATK_WRAPPER)
        return None if has_java else "default-jdk and libatk-wrapper-java"
    if toolkit.startswith("qml"):
        version = toolkit[-1]
        check = f"import PyQt{version}.QtQuick, PyQt{version}.QtQml"
        found = subprocess.run([PYTHON, "-c", check], capture_output=True).returncode == 0
        return None if found else f"python3-pyqt{version}.qtquick"
    return None


class Gallery(Program):
    """tests/support/gallery, and what it says of itself."""

    def __init__(self, test, toolkit):
        command = [PYTHON, "-B", os.path.join(GALLERY, "gallery.py"), toolkit]
        if toolkit == "swing":
            folder = test.enterContext(tempfile.TemporaryDirectory())
            subprocess.run(["javac", "-d", folder, os.path.join(GALLERY, "Gallery.java")],
                           check=True)
            command = ["java", "-cp", folder + ":" + ATK_WRAPPER,
                       "-Djavax.accessibility.assistive_technologies="
                       "org.GNOME.Accessibility.AtkWrapper", "Gallery"]
        super().__init__(test, *command, stdout=subprocess.PIPE)
        self.changes = queue.Queue()
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        for line in self.process.stdout:
            self.changes.put(json.loads(line))

    def until(self, wanted):
        while self.changes.get(timeout=20) != wanted:
            pass

    def end(self):
        super().end()
        self.process.stdout.close()


def value_of(state, role, name):
    """The value of the element; one that is called "" has no name."""
    nodes = [node for node in state["nodes"] if node["role"] == role
             and (name is None or node.get("name", "") == name)]
    return [node.get("value") for node in nodes]


class Toolkits(unittest.TestCase):
    def setUp(self):
        self.host = self.enterContext(Host("quil"))
        self.host.result("desktop_ax_get_state")  # Qt 6 joins a bus that is in use

    def gallery(self, toolkit):
        if (packages := missing(toolkit)):
            self.skipTest(f"{toolkit} needs {packages}")
        gallery = Gallery(self, toolkit)
        return gallery, observe(self.host, gallery, lambda state: "Push" in state["axText"])

    def test_elements_hold_what_they_show_and_do_what_is_asked(self):
        for toolkit, expected in VALUES.items():
            with self.subTest(toolkit):
                gallery, state = self.gallery(toolkit)
                for role, name, value in expected:
                    values = value_of(state, role, name)
                    self.assertIn(value, values, f"{role} {name}\n{state['axText']}")
                    self.assertNotIn("secret", state["axText"])
                for role, name, request, change in ACTIONS[toolkit]:
                    request_on(self.host, gallery, "desktop_ax_action", role, name, **request)
                    gallery.until(change)
                gallery.end()

    def test_pages_of_swing_are_scrolled_by_the_wheel(self):
        gallery, state = self.gallery("swing")
        area = find(state, "AXTextArea", "Area")["token"]
        pane = area.rpartition(".")[0].rpartition(".")[0]
        self.host.result("desktop_ax_action", token=pane, action="scroll", amount=2)
        moved = [change["scrolled"] for change in self.changes_of(gallery) if "scrolled" in change]
        height = next(node for node in state["nodes"] if node["token"] == pane)["bounds"]["height"]
        self.assertGreaterEqual(moved[-1], 2 * height - 2)
        self.assertIn("AXPageDown", find(state, "AXTextField", "Entry")["actions"])
        self.assertNotIn("AXPress", find(state, "AXTextField", "Entry")["actions"])

    def folder(self):
        return self.enterContext(tempfile.TemporaryDirectory(ignore_cleanup_errors=True))

    def state_with(self, text):
        def look():
            state = self.host.result("desktop_ax_get_state")
            return state if text in state["axText"] else None
        return until(look, text, 60)

    def on_node(self, role, name, **request):
        """As often as the tree changes in between."""
        def act():
            token = find(self.host.result("desktop_ax_get_state"), role, name)["token"]
            error = self.host.request("desktop_ax_action", token=token, **request).get("error")
            if error:
                self.assertEqual(error["code"], "COMPUTER_CONTROL_STALE_SNAPSHOT", error)
            return not error
        until(act, f"{request} of {role} {name}")

    def test_pages_hold_their_text_and_are_scrolled(self):
        for browser, expected in PAGES.items():
            if not shutil.which(browser):
                self.skipTest(f"{browser} is not installed")
            command = {"firefox": ["firefox", "--no-remote", "--profile", self.folder()],
                       "chromium": [*CHROMIUM, f"--user-data-dir={self.folder()}"]}[browser]
            with self.subTest(browser):
                program = Program(self, *command, "file://" + PAGE, has_window=False)
                state = self.state_with("Frame paragraph")
                for role, name, value in expected:
                    self.assertIn(value, value_of(state, role, name), f"{name}\n{state['axText']}")

                def is_seen(name):
                    return "bounds" in find(self.host.result("desktop_ax_get_state"), "AXHeading", name)
                for amount, is_at_top in ((2, False), (-1, False), (-10, True)):
                    self.on_node("AXWebArea", "Gallery", action="scroll", amount=amount)
                    until(lambda: is_seen("Heading text") == is_at_top, f"scrolled by {amount}")
                program.end()

    @unittest.skipUnless(shutil.which("soffice"), "libreoffice-calc is not installed")
    def test_spreadsheets_list_the_cells_that_are_showing(self):
        path = os.path.join(self.folder(), "sheet.fods")
        with open(path, "w") as file:
            file.write(SHEET)
        Program(self, "soffice", f"-env:UserInstallation=file://{self.folder()}", "--norestore",
                "--nologo", "--nofirststartwizard", "--calc", path, has_window=False)
        state = self.state_with("AXCell | A2")
        values = {node["name"]: node.get("value") for node in state["nodes"] if node["role"] == "AXCell"}
        self.assertEqual([values[name] for name in ("A1", "A2", "B1")], ["first", "12.5", None])
        rows = {name.lstrip("ABCDEFGHIJKLMNOPQRSTUVWXYZ") for name in values}
        self.assertTrue(10 < len(rows) < 100, sorted(rows))
        self.assertFalse(state["truncated"])
        self.assertTrue(find(state, "AXTable")["enabled"])

        def click():
            token = find(self.host.result("desktop_ax_get_state"), "AXCell", "B5")["token"]
            return "result" in self.host.request("desktop_click", element=token)
        until(click, "a click, which is the first, on a cell")
        self.state_with("AXTextField | B5")  # it tells which cell was reached

    def changes_of(self, gallery):
        changes = [gallery.changes.get(timeout=20)]
        while not gallery.changes.empty():
            changes.append(gallery.changes.get())
        return changes


if __name__ == "__main__":
    unittest.main()
