"""Trees of real applications: what is observed equals what another client sees, and elements act."""
import json
import os
import signal
import time
import unittest

from ax_tools import Form, bounds, find, has_focused_field, observe, request_on, walk, window_of
from desktop_tools import geometry, until
from quil_host import Failure, Host

TOOLKITS = ("gtk3", "gtk4", "qt5", "qt6")
STALE = "COMPUTER_CONTROL_STALE_SNAPSHOT"


class Forms(unittest.TestCase):
    def setUp(self):
        self.host = self.enterContext(Host("quil"))

    def on_each_toolkit(self, check, *arguments):
        for toolkit in TOOLKITS:
            with self.subTest(toolkit):
                form = Form(self, toolkit, *arguments)
                check(toolkit, form)
                form.end()

    def act(self, state, role, name=None, action="invoke", **more):
        token = find(state, role, name)["token"]
        return self.host.result("desktop_ax_action", token=token, action=action, **more)

    def act_anew(self, form, role, name=None, action="invoke", **more):
        request_on(self.host, form, "desktop_ax_action", role, name, action=action, **more)

    def test_the_same_elements_as_another_client_sees(self):
        def check(toolkit, form):
            state = observe(self.host, form, lambda state: "Agree" in state["axText"])
            ours = {node["token"]: node for node in state["nodes"]}
            theirs = list(walk(window_of(form)))
            self.assertEqual(list(ours), [token for token, *_ in theirs])
            x, y, width, height = geometry(form.window)
            for token, name, description, extents in theirs:
                node = ours[token]
                self.assertEqual(node.get("name", ""), name)
                self.assertEqual(node.get("description", ""), description)
                if toolkit != "gtk4":
                    # GTK 4 tells other clients neither where its elements are nor that they show.
                    self.assertEqual("bounds" in node and bounds(node), extents or False)
                elif token != "e0":
                    left, top, w, h = bounds(node)
                    self.assertTrue(x <= left and y <= top and left + w <= x + width
                                    and top + h <= y + height, node)
            self.assertEqual(find(state, "AXButton", "Count")["enabled"], True)
            self.assertIn("AXPress", find(state, "AXButton", "Count")["actions"])
            self.assertEqual(find(state, "AXCheckBox", "Agree")["value"], "0")
            self.assertEqual(float(find(state, "AXSlider")["value"]), 25)

        self.on_each_toolkit(check)

    def test_elements_act_and_old_tokens_are_refused(self):
        def check(toolkit, form):
            state = observe(self.host, form, lambda state: "Agree" in state["axText"])
            self.act(state, "AXButton", "Count")
            form.until(clicks=1)
            with self.assertRaises(Failure) as refused:
                self.act(state, "AXButton", "Count")
            self.assertEqual(refused.exception.code, STALE)
            state = observe(self.host, form, lambda state: "Clicks: 1" in state["axText"])
            if toolkit != "gtk4":  # whose check boxes offer no action
                self.act(state, "AXCheckBox", "Agree")
                form.until(clicks=1, agreed=True)
                state = observe(self.host, form)
            if toolkit.startswith("gtk"):
                with self.assertRaises(Failure) as unchanged:
                    self.act(state, "AXTextField", action="set_value", value="refused")
                self.assertEqual(unchanged.exception.code, "COMPUTER_CONTROL_COMMAND_FAILED")
                state = observe(self.host, form)
            self.act(state, "AXTextField", action="set_value", value="neu: ünï 日本 👩‍💻")
            form.until(entry="neu: ünï 日本 👩‍💻")
            state = observe(self.host, form)
            self.act(state, "AXTextArea", action="set_value", value="one\ntwo")
            form.until(text="one\ntwo")
            state = observe(self.host, form)
            area = find(state, "AXTextArea")["token"]
            self.assertEqual(self.host.result("desktop_read_value", token=area)["value"],
                             "one\ntwo")
            self.act_anew(form, "AXSlider", action="set_value", value="60")
            form.until(level=60)

        self.on_each_toolkit(check)

    def test_pages_are_scrolled_and_the_focus_moves(self):
        def position(state, area):
            """What the area's vertical scroll bar says, whichever of its descendants has it."""
            values = [node["value"] for node in state["nodes"] if "value" in node
                      and node["token"].startswith(area + ".") and node["token"].count(".") <= 3 +
                      area.count(".") and node["role"] in ("AXScrollBar", "AXGroup")]
            return float(values[-1])

        def check(toolkit, form):
            state = observe(self.host, form, lambda state: "Agree" in state["axText"])
            if toolkit.startswith("qt"):  # whose lists show no scroll bars to others
                self.act(state, "AXTextArea", action="set_value", value="line\n" * 500)
                state = observe(self.host, form, lambda state: "line line" in state["axText"])
                role = "AXTextArea"
            else:
                role = "AXScrollArea"
            area = find(state, role)["token"]
            self.assertEqual(position(state, area), 0)
            positions = []
            for amount in (2, -1, -10):
                self.act_anew(form, role, action="scroll", amount=amount)
                positions.append(position(observe(self.host, form), area))
            self.assertEqual(positions, [2 * positions[1], positions[1], 0])
            self.assertGreater(positions[1], 0)
            if toolkit != "gtk4":  # whose elements take no focus from outside
                self.act_anew(form, "AXTextField", action="focus")
                until(lambda: has_focused_field(window_of(form)), "the focus")

        self.on_each_toolkit(check, "100")

    def test_a_password_stays_one(self):
        def check(_, form):
            state = observe(self.host, form, lambda state: "Agree" in state["axText"])
            self.assertNotIn("secret", json.dumps(state))

        self.on_each_toolkit(check)

    def test_a_list_of_100_000_rows(self):
        form = Form(self, "gtk3", "100000")
        state = observe(self.host, form, lambda state: "Row 1" in state["axText"])
        # Those that are showing are listed, and what comes after the list is, too.
        rows = [node for node in state["nodes"] if node.get("name", "").startswith("Row ")]
        self.assertEqual([row["name"] for row in rows], [f"Row {i}" for i in range(len(rows))])
        self.assertTrue(5 < len(rows) < 100 and all("bounds" in row for row in rows), rows)
        self.assertEqual((state["nodes"][-1]["role"], state["truncated"]), ("AXScrollBar", False))
        # Nor is the list gone through, page by page, for what scrolls it.
        self.act_anew(form, "AXScrollArea", action="scroll", amount=10, seconds=12)

    def test_a_program_that_hangs(self):
        form = Form(self, "gtk3")
        state = observe(self.host, form)
        self.addCleanup(os.kill, form.pid, signal.SIGCONT)
        os.kill(form.pid, signal.SIGSTOP)
        for method, parameters in (("desktop_ax_get_state", {}), ("desktop_target", {}),
                                   ("desktop_ax_action", {"token": "e0", "action": "invoke"})):
            with self.subTest(method):
                began = time.monotonic()
                self.host.request(method, **parameters)
                self.assertLess(time.monotonic() - began, 2.5)
        other = Form(self, "qt5")
        observe(self.host, other)
        other.end()
        os.kill(form.pid, signal.SIGCONT)
        again = observe(self.host, form)
        self.assertEqual(again["axText"], state["axText"])

    def test_a_program_that_dies_and_its_successor(self):
        for _ in range(2):
            form = Form(self, "gtk3")
            state = observe(self.host, form)
            form.end()
            answer = self.host.request("desktop_ax_action", action="invoke",
                                       token=find(state, "AXButton")["token"])
            self.assertIn("error", answer)

    def test_programs_that_were_there_before(self):
        def check(toolkit, form):
            with Host("quil") as host:
                state = host.result("desktop_ax_get_state")
                self.assertEqual(state["target"]["pid"], form.pid)
                self.assertIn("Agree", state["axText"])
                self.assertEqual(state["target"]["windowTitle"], "Form")

        self.on_each_toolkit(check)


if __name__ == "__main__":
    unittest.main()
