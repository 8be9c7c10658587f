"""Elements of every toolkit: they are those that another client sees, hold what they show, and what is done to them happens."""
import json
import unittest
import unittest.mock

from ax_tools import bounds, find, gallery, missing_for, observe, request_on, walk, window_of
from desktop_tools import DesktopTest, geometry, output
from quil_host import Host

NATIVE = ("gtk3", "gtk4", "qt5", "qt6")

# Of each toolkit: (role, name, value) of elements, None for no value; a name of None is the first. Roles
# differ with GTK's version.
VALUES = {
    "gtk3": [("AXButton", "Push", None), ("AXPopUpButton", None, "Pear"),
             ("AXComboBox", None, "Pear"), ("AXIncrementor", None, "25"),
             ("AXProgressIndicator", None, "0.4"), ("AXRadioButton", "First", "1"),
             ("AXRadioButton", "Second", "0"), ("AXCheckBox", "More", "0"),
             ("AXCell", "cell0_0", None), ("AXStaticText", "in a frame", None)],
    "gtk4": [("AXCheckBox or AXRadioButton", "Two", "1"), ("AXIncrementor", None, "25"), ("AXLink", "Link", None),
             ("AXLevelIndicator", None, "0.6"), ("AXCheckBox", "", "0")],
    "qt5": [("AXButton", "Push", None), ("AXRadioButton", "First", "1"),
            ("AXRadioButton", "Second", "0"), ("AXComboBox", None, "Pear"),
            ("AXPopUpButton", None, "Pear"), ("AXStaticText", "", "read only text"), ("AXMenuItem", "Menu", None)],
    "qml5": [("AXComboBox", "Fruit", "Pear"), ("AXTextField", None, "entry text"),
             ("AXRadioButton", "First", "1"), ("AXCheckBox", "Check", "0")],
    "swing": [("AXButton", "Push", None), ("AXMenuItem", "Open", None),
              ("AXMenuBarItem", "Menu", None), ("AXPopUpButton", None, "Pear"),
              ("AXComboBox", "Editable", "Pear"), ("AXIncrementor", "Spin", "25"),
              ("AXTextField", "Entry", "entry text"), ("AXRadioButton", "Two", "1"),
              ("AXStaticText", "cell0_0", None)],
}
VALUES["qt6"], VALUES["qml6"] = VALUES["qt5"], VALUES["qml5"]

# (role, name, value to be set or None for a press, what the program then says of itself)
ACTIONS = {
    "gtk3": [("AXButton", "Push", None, {"push": True}),
             ("AXCheckBox", "Toggle", None, {"toggle": True}),
             ("AXCheckBox", "More", None, {"more": True}),
             ("AXTextArea", None, "one\ntwo", {"text": "one\ntwo"}),
             ("AXIncrementor", None, "60", {"spin": 60})],
    "gtk4": [("AXButton", "Push", None, {"push": True}),
             ("AXTextArea", None, "one\ntwo", {"text": "one\ntwo"}),
             ("AXCheckBox", "", None, {"switch": True})],
    "qt5": [("AXButton", "Push", None, {"push": True}),
            ("AXCheckBox", "Check", None, {"check": True}),
            ("AXRadioButton", "One", None, {"one": True}),
            ("AXRadioButton", "Second", None, {"tab": 1}),
            ("AXTextArea", None, "one\ntwo", {"text": "one\ntwo"}),
            ("AXIncrementor", None, "60", {"spin": 60}),
            ("AXMenuItem", "Menu", None, {"menu": True})],
    "qml5": [("AXCheckBox", "Check", None, {"check": True}),
             ("AXCheckBox", "Toggle", None, {"toggle": True}),
             ("AXCheckBox", "Switch", None, {"switch": True}),
             ("AXRadioButton", "One", None, {"one": True}),
             ("AXButton", "Push", None, {"push": True}),
             ("AXSlider", None, "60", {"slider": 60})],
    "swing": [("AXCheckBox", "Toggle", None, {"toggle": True}),
              ("AXSlider", "Slide", "30", {"slider": 30}),
              ("AXIncrementor", "Spin", "22", {"spin": 22}),
              ("AXPopUpButton", None, None, {"combo": True})],
}
ACTIONS["qt6"] = ACTIONS["qt5"]
# Buttons of Qt Quick 6.4 answer that they are pressed, and do nothing.
ACTIONS["qml6"] = [action for action in ACTIONS["qml5"] if action[0] != "AXButton"]


def is_within(inner, outer):
    return all(inner[i] >= outer[i] and inner[i] + inner[i + 2] <= outer[i] + outer[i + 2] for i in (0, 1))


class Galleries(DesktopTest):
    def setUp(self):
        super().setUp()
        self.host.result("desktop_ax_get_state")  # Qt 6 joins a bus that is in use

    def on_each(self, toolkits, check, *rows):
        for toolkit in toolkits:
            with self.subTest(toolkit):
                if (packages := missing_for(toolkit)):
                    self.skipTest(f"{toolkit} needs {packages}")
                program = gallery(self, toolkit, *rows)
                check(toolkit, program, observe(self.host, program, lambda state: "Push" in state["axText"]))
                program.end()

    def act(self, program, role, name=None, action="invoke", **more):
        request_on(self.host, program, "desktop_ax_action", role, name, action=action, **more)

    def compare(self, toolkit, program, state):
        theirs = list(walk(window_of(program)))
        if toolkit != "gtk4":
            roles = {node["token"]: node["role"] for node in state["nodes"]}
            self.assertEqual([(node["token"], node.get("name", ""), node.get("description", "")) for node in state["nodes"]],
                             [tuple(said) for *said, _ in theirs])
            for node, (token, *_, place) in zip(state["nodes"], theirs):
                ours = bounds(node) if "bounds" in node else None
                if ours != place:  # of what a list does not show, Qt says that it is showing
                    self.assertIn(roles[token.rpartition(".")[0]], ("AXList", "AXTable", "AXOutline"), node)
                    self.assertTrue(ours is None or is_within(ours, place), (node, place))
            return
        # GTK 4 tells other clients neither where its elements are nor that they show, lists no pages, and
        # gives them types for names.
        named = [[name for name in names if name and name != "Tab" and not name.startswith("Gtk")] for names in
                 ([node.get("name") for node in state["nodes"]], [name for _, name, *_ in theirs])]
        self.assertEqual(*named)
        x, y, width, height = geometry(program.window)
        for left, top, w, h in [bounds(node) for node in state["nodes"][1:] if "bounds" in node]:
            self.assertTrue(x <= left and y <= top and left + w <= x + width and top + h <= y + height)

    def test_elements_are_what_others_see_and_do_what_is_asked(self):
        def check(toolkit, program, state):
            for role, name, value in VALUES[toolkit]:
                values = [node.get("value") for node in state["nodes"]
                          if node["role"] in role.split(" or ") and name in (None, node.get("name", ""))]
                self.assertIn(value, values, f"{role} {name}\n{state['axText']}")
            self.assertNotIn("secret", json.dumps(state))
            if toolkit in NATIVE:
                self.compare(toolkit, program, state)
                with Host("quil") as host:  # for which the program was there before
                    self.assertEqual(host.result("desktop_ax_get_state")["axText"], state["axText"])
            for role, name, value, change in ACTIONS[toolkit]:
                given = {"action": "set_value", "value": value} if value else {}
                self.act(program, role, name, **given)
                program.until_told(**change)
            if toolkit in NATIVE:
                self.edit(toolkit, program, state)

        self.on_each(VALUES, check)

    def edit(self, toolkit, program, old):
        """Sets texts, is refused, reads one back."""
        def set_entry(state, value):
            entry = next(node for node in state["nodes"] if node.get("value") == "Grüße")
            return self.host.request("desktop_ax_action", token=entry["token"], action="set_value", value=value)

        self.assertEqual(set_entry(old, "late")["error"]["code"], "COMPUTER_CONTROL_STALE_SNAPSHOT")
        if toolkit.startswith("gtk"):
            refused = set_entry(observe(self.host, program), "refused")
            self.assertEqual(refused["error"]["code"], "COMPUTER_CONTROL_COMMAND_FAILED")
        self.assertIn("result", set_entry(observe(self.host, program), "neu: ünï 日本 👩‍💻"))
        program.until_told(entry="neu: ünï 日本 👩‍💻")
        area = find(observe(self.host, program), "AXTextArea")["token"]
        self.assertEqual(self.host.result("desktop_read_value", token=area)["value"], "one\ntwo")

    def test_pages_are_scrolled_and_the_focus_moves(self):
        def position(state, area):
            """What the area's vertical scroll bar says, whichever of its descendants has it."""
            values = [node["value"] for node in state["nodes"] if "value" in node
                      and node["token"].startswith(area + ".") and node["token"].count(".") <= 3 +
                      area.count(".") and node["role"] in ("AXScrollBar", "AXGroup")]
            return float(values[-1])

        def check(toolkit, program, state):
            role = "AXScrollArea"
            if toolkit.startswith("qt"):  # whose lists show no scroll bars to others
                role = "AXTextArea"
                self.act(program, role, action="set_value", value="line\n" * 500)
                state = observe(self.host, program, lambda state: "line line" in state["axText"])
            area = find(state, role)["token"]
            self.assertEqual(position(state, area), 0)
            positions = []
            for amount in (2, -1, -10):
                self.act(program, role, action="scroll", amount=amount)
                positions.append(position(observe(self.host, program), area))
            self.assertEqual(positions, [2 * positions[1], positions[1], 0])
            self.assertGreater(positions[1], 0)
            if toolkit != "gtk4":  # whose elements take no focus from outside
                self.act(program, "AXTextArea", action="focus")
                output("xdotool", "key", "x")
                program.until_told(text=unittest.mock.ANY)

        self.on_each(NATIVE, check, "100")

    def test_pages_of_swing_are_scrolled_by_the_wheel(self):
        def check(_, program, state):
            area = find(state, "AXTextArea", "Area")["token"]
            pane = area.rpartition(".")[0].rpartition(".")[0]
            height = next(node for node in state["nodes"] if node["token"] == pane)["bounds"]["height"]
            self.host.result("desktop_ax_action", token=pane, action="scroll", amount=2)
            while program.lines.get(timeout=20).get("scrolled", 0) < 2 * height - 2:
                pass
            actions = find(state, "AXTextField", "Entry")["actions"]
            self.assertTrue("AXPageDown" in actions and "AXPress" not in actions, actions)

        self.on_each(["swing"], check)

    def test_a_list_of_100_000_rows(self):
        def check(_, program, state):
            # Those that are showing are listed, and what comes after the list is, too.
            rows = [node for node in state["nodes"] if node.get("name", "").startswith("cell")]
            self.assertEqual([row["name"] for row in rows], [f"cell{i}_0" for i in range(len(rows))])
            # The last may lie below the edge.
            self.assertTrue(5 < len(rows) < 100 and all("bounds" in row for row in rows[:-1]), rows)
            after = state["nodes"][state["nodes"].index(rows[-1]) + 1:]
            self.assertIn("AXScrollBar", [node["role"] for node in after])
            self.assertFalse(state["truncated"])
            # Nor is the list gone through, page by page, for what scrolls it.
            self.act(program, "AXScrollArea", action="scroll", amount=10, seconds=12)

        self.on_each(["gtk3"], check, "100000")


if __name__ == "__main__":
    unittest.main()
