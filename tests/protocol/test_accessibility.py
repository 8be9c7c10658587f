"""Observing an element tree and acting on its elements by token."""
import unittest

from quil_host import Failure
from simulated import Simulated, application, desktop, example, window

STALE = "COMPUTER_CONTROL_STALE_SNAPSHOT"
UNSUPPORTED = "COMPUTER_CONTROL_UNSUPPORTED_OPERATION"
FAILED = "COMPUTER_CONTROL_COMMAND_FAILED"
CHANGED = {"code": STALE, "message": "the accessibility tree changed; observe again"}
UNKNOWN = {"code": STALE, "message": "unknown element token"}
OK_BUTTON = {"id": "ok", "role": "AXButton", "title": "OK", "enabled": True,
             "bounds": [10, 40, 80, 24], "actions": ["AXPress"]}


def button(name, **members):
    return {"id": name, "role": "AXButton", "title": name, "actions": ["AXPress"], **members}


class Observation(unittest.TestCase):
    maxDiff = None

    def test_a_window_with_a_button(self):
        main = window(OK_BUTTON, actions=["AXRaise"])
        with Simulated({"applications": [application(windows=[main])]}) as host:
            state = host.result("desktop_ax_get_state")
            target = host.result("desktop_target")["target"]
        self.assertEqual(state, {
            "revision": "f026afa6555dd04e", "axText": "AXWindow | Main\nAXButton | OK",
            "truncated": False, "target": target, "nodes": [
                {"token": "e0", "role": "AXWindow", "name": "Main", "actions": ["AXRaise"],
                 "bounds": {"x": 0, "y": 25, "width": 800, "height": 600}},
                {"token": "e0.0", "role": "AXButton", "name": "OK", "enabled": True,
                 "actions": ["AXPress"], "bounds": {"x": 10, "y": 40, "width": 80, "height": 24}}]})
        self.assertEqual(target, {"bundleIdentifier": "com.example.notes", "name": "Notes",
                                  "windowTitle": "Main", "pid": 100})

    def test_a_single_group(self):
        app = application(windows=[], role="AXGroup", title="5")
        with Simulated({"applications": [app]}) as host:
            state = host.result("desktop_ax_get_state")
        self.assertEqual(state["revision"], "a884ebc75fe980f")
        self.assertEqual(state["nodes"], [{"token": "e0", "role": "AXGroup", "name": "5"}])

    def test_what_a_node_says_of_an_element(self):
        cases = [
            ({"value": 42}, {"value": "42"}),
            ({"value": 0}, {"value": "0"}), ({"value": 2.5}, {"value": "2.5"}),
            ({"value": True}, {"value": "1"}), ({"value": False}, {"value": "0"}),
            ({"value": 0.1}, {"value": "0.1"}), ({"value": 1e5}, {"value": "100000"}),
            ({"value": 2**64}, {"value": "1.844674407370955e+19"}),
            ({"value": {"opaque": "AXValueCFRange"}}, {}), ({"value": {"point": [1, 2]}}, {}),
            ({"value": ["a"]}, {}), ({"value": ""}, {}), ({"value": {"element": "self"}}, {}),
            ({"title": "a\nb|c", "description": "\r"}, {"name": "a\nb|c", "description": "\r"}),
            ({"title": "👍🏽" * 501}, {"name": "👍🏽" * 500}),
            ({"identifier": "it", "enabled": False}, {"automationId": "it", "enabled": False}),
            ({"attributes": {"AXTitle": 7, "AXEnabled": 1, "AXDescription": ["x"]}}, {}),
            ({"attributes": {"AXChildren": "none"}}, {}),
            ({"attributes": {"AXChildren": [{"element": "self"}, 1]}}, {}),
            ({"attributes": {"AXRole": 3}}, {"role": "AXUnknown"}),
            ({"without": ["AXRole"]}, {"role": "AXUnknown"}),
            ({"attributes": {"AXRole": ""}}, {"role": ""}),
            ({"title": "x", "empty": ["AXTitle"]}, {}),
            ({"title": "x", "readResults": {"AXTitle": "cannotComplete"}}, {}),
            ({"bounds": [10.5, -3.5, 100.4, 20.6]},
             {"bounds": {"x": 11, "y": -4, "width": 100, "height": 21}}),
            ({"bounds": [-10.5, 0.49, 0.5, 1.5]},
             {"bounds": {"x": -11, "y": 0, "width": 1, "height": 2}}),
            ({"bounds": [0, 0, 1, 1], "without": ["AXSize"]}, {}),
            ({"bounds": [1e300, 0, 1, 1]}, {}), ({"bounds": [0, 0, 1, 9.3e18]}, {}),
            ({"attributes": {"AXPosition": {"size": [1, 2]}, "AXSize": {"size": [1, 2]}}}, {}),
            ({"actions": ["AXPress", "AXShowMenu"]}, {"actions": ["AXPress", "AXShowMenu"]}),
            ({"actions": ["AXPress"], "actionNames": ["AXPress", 1]}, {}),
            ({"actions": ["AXPress"], "actionNamesResult": "failure"}, {}),
        ]
        children = [{"role": "AXGroup", **members} for members, _ in cases]
        children[0]["id"] = "self"
        with Simulated(desktop(*children)) as host:
            state = host.result("desktop_ax_get_state")
        nodes, lines = state["nodes"], state["axText"].split("\n")
        self.assertEqual(len(nodes), len(cases) + 1)
        for line in ("AXGroup | a b|c | \r", "AXGroup | " + "👍🏽" * 500, "AXGroup | 42", "AXUnknown", ""):
            self.assertIn(line, lines)
        for index, (members, expected) in enumerate(cases):
            self.assertEqual(nodes[index + 1], {"token": f"e0.{index}", "role": "AXGroup", **expected},
                             members)

    def test_where_the_walk_begins(self):
        """At the focused window, or at the application when it has none."""
        for members, name in [({"focusedWindow": "second"}, "Second"), ({"focusedWindow": None}, "Notes"),
                              ({"attributes": {"AXFocusedWindow": "no element"}}, "Notes"),
                              ({"readResults": {"AXFocusedWindow": "cannotComplete"}}, "Notes")]:
            app = application(windows=[window(), window(id="second", title="Second")], **members)
            with Simulated({"applications": [app]}) as host:
                node = host.result("desktop_ax_get_state")["nodes"][0]
                self.assertEqual((node["role"], node["name"]),
                                 ("AXWindow" if name == "Second" else "AXApplication", name))

    def test_limits(self):
        nested = {"role": "AXGroup"}
        for _ in range(40):
            nested = {"role": "AXGroup", "children": [nested]}
        cases = [
            ([{"role": "AXRow"}] * 3999, 4000, False), ([{"role": "AXRow"}] * 4000, 4000, True),
            ([nested], 40, True), ([nested["children"][0]["children"][0]], 40, False),
            # The text's length: it ends within the last line, which alone leaves nothing out.
            ([{"role": "AXRow", "title": "é" * 500}] * 197, 198, False),
            ([{"role": "AXRow", "title": "é" * 500}] * 300, 198, True),
            ([{"role": "AXRow", "identifier": "é" * 500}] * 500, 398, True),  # the fields' length
        ]
        for children, count, truncated in cases:
            with Simulated(desktop(*children)) as host:
                state = host.result("desktop_ax_get_state")
                if count == 4000:
                    host.result("desktop_read_value", token="e0.3998")
                    self.assertEqual(host.error("desktop_read_value", token="e0.3999"), UNKNOWN)
                host.result("startFrontmostGlimpseCapture", requestId="A")
                text = host.result("nextGlimpseCaptureUpdate", requestId="A")["update"]["text"]
            if count != 398:
                self.assertEqual(text, state["axText"])
            self.assertEqual((len(state["nodes"]), state["truncated"]), (count, truncated))
            self.assertEqual(len(state["axText"].split("\n")), count)
            if count == 198:
                self.assertEqual(len(state["axText"]), 100_000)

    def test_a_part_of_the_tree(self):
        children = [{"role": "AXGroup", "title": str(i), "children": [button(f"b{i}")]}
                    for i in range(11)]
        with Simulated(desktop(*children)) as host:
            whole = host.result("desktop_ax_get_state")
            part = host.result("desktop_ax_get_state", element="e0.1")
            self.assertEqual([node["token"] for node in part["nodes"]], ["e0.1", "e0.1.0"])
            for key in ("revision", "axText", "truncated", "target"):
                self.assertEqual(part[key], whole[key])
            for everything in ("", "  \t\u3000", 7, None):
                self.assertEqual(host.result("desktop_ax_get_state", element=everything), whole)
            for nothing in ("e0.11", " e0.1", "e0.1.", "E0", "\n"):
                self.assertEqual(host.error("desktop_ax_get_state", element=nothing), UNKNOWN)

    def test_no_application_in_front(self):
        empty = {"revision": "", "nodes": [], "axText": "", "truncated": False}
        nobody = {"code": UNSUPPORTED, "message": "no frontmost application"}
        with Simulated(desktop(OK_BUTTON, frontmost=None, script=[
                {"request": 4, "do": {"frontmost": "notes"}},
                {"request": 5, "do": {"frontmost": None}}])
                | {"applications": [application(OK_BUTTON, id="notes")]}) as host:
            self.assertEqual(host.result("desktop_ax_get_state"), empty)
            self.assertEqual(host.result("desktop_target"), {"target": {}})
            # Nothing was observed yet, which is looked at first.
            self.assertEqual(host.error("desktop_read_value", token="e0")["message"],
                             "observe the accessibility tree first")
            host.result("desktop_ax_get_state")
            for method in ("desktop_read_value", "desktop_ax_action"):
                self.assertEqual(host.error(method, token="e0", action="invoke"), nobody)
        with Simulated(desktop(applications=[application(pid=0)])) as host:
            self.assertEqual(host.result("desktop_ax_get_state"), empty)


class Acting(unittest.TestCase):
    def test_the_form(self):
        with Simulated(example("form")) as host:
            act = lambda name, action, **more: host.result("desktop_ax_action",
                                                           token=host.token(name), action=action, **more)
            answer = act("Customer", "set_value", value="Åse\nLie")
            self.assertEqual(answer["element"], {"token": "e0.0", "role": "AXTextField",
                                                 "name": "Customer"})
            self.assertEqual(host.result("desktop_read_value", token=host.token("Customer"))["value"],
                             "Åse\nLie")
            act("Notes", "focus")
            act("Articles", "scroll", amount=2)
            self.assertEqual(act("Send", "invoke")["target"]["windowTitle"], "New Order")
            self.assertEqual(host.result("desktop_target")["target"]["windowTitle"], "Sent")
            act("Done", "invoke")
            self.assertEqual(host.result("desktop_target")["target"]["windowTitle"], "New Order")
            self.assertIn('setAttributeValue customer AXValue "Åse\nLie"', host.log())
            self.assertIn("setAttributeValue notes AXFocused true", host.log())

    def test_pages(self):
        cases = [(None, "Down", 1), (0, "Down", 1), (1, "Down", 1), (3, "Down", 3), (-2, "Up", 2),
                 (11, "Down", 10), (-2**63, "Up", 10), (2**63, "Down", 1), ("4", "Down", 1),
                 (2.0, "Down", 2), (2.5, "Down", 1), (True, "Down", 1)]
        area = {"id": "area", "role": "AXScrollArea",
                "actions": ["AXScrollUpByPage", "AXScrollDownByPage"]}
        with Simulated(desktop(area)) as host:
            host.result("desktop_ax_get_state")
            for amount, direction, pages in cases:
                before = len(host.log())
                host.result("desktop_ax_action", token="e0.0", action="scroll", amount=amount)
                self.assertEqual(host.log()[before:],
                                 [f"performAction area AXScroll{direction}ByPage"] * pages, amount)

    def test_refused_actions(self):
        """The platform's code is told; what was done before it stays done."""
        area = {"role": "AXScrollArea", "actions": [
            {"name": "AXScrollDownByPage", "result": "failure", "afterTimes": 2}]}
        with Simulated(desktop(button("ok", actions=[{"name": "AXPress", "result": -25204}]),
                               {"role": "AXGroup"}, area,
                               {"role": "AXTextField", "setResults": {"AXValue": "illegalArgument"}})
                       ) as host:
            host.result("desktop_ax_get_state")
            for token, action, code in [("e0.0", "invoke", -25204), ("e0.1", "invoke", -25206),
                                        ("e0.1", "focus", -25205), ("e0.2", "scroll", -25200),
                                        ("e0.3", "set_value", -25201)]:
                self.assertEqual(host.error("desktop_ax_action", token=token, action=action, value="",
                                            amount=5), {"code": FAILED, "message": f"AXError {code}"})
            self.assertEqual(sum("ByPage" in line for line in host.log()), 3)

    def test_parameters(self):
        both, token = "token and action are required", "token is required"
        unsupported = lambda message: {"code": UNSUPPORTED, "message": message}
        with Simulated(desktop(OK_BUTTON)) as host:
            for method, params, error in [
                    ("desktop_read_value", {}, {"message": token}),
                    ("desktop_read_value", {"token": 1}, {"message": token}),
                    ("desktop_ax_action", {"token": "e0"}, {"message": both}),
                    ("desktop_ax_action", {"action": "invoke"}, {"message": both}),
                    ("desktop_ax_action", {"token": "e0", "action": None}, {"message": both}),
                    # The token is looked at before the action.
                    ("desktop_ax_action", {"token": "e0", "action": "dance"},
                     {"code": STALE, "message": "observe the accessibility tree first"})]:
                self.assertEqual(host.error(method, **params), error)
            host.result("desktop_ax_get_state")
            for params, error in [
                    ({"token": "e7", "action": "dance"}, UNKNOWN),
                    ({"token": "", "action": "invoke"}, UNKNOWN),
                    ({"token": "e0.0", "action": "Invoke"}, unsupported("unknown ax action: Invoke")),
                    ({"token": "e0.0", "action": ""}, unsupported("unknown ax action: ")),
                    ({"token": "e0.0", "action": "set_value", "value": 5},
                     unsupported("value is required for set_value"))]:
                self.assertEqual(host.error("desktop_ax_action", **params), error)
            self.assertEqual(host.log(), [])

    def test_values_are_read_whole(self):
        with Simulated(desktop({"role": "AXTextArea", "value": "x" * 700}, {"role": "AXGroup"},
                               {"role": "AXCheckBox", "value": False})) as host:
            host.result("desktop_ax_get_state")
            for token, value in [("e0.0", "x" * 700), ("e0.1", None), ("e0.2", "0")]:
                self.assertEqual(host.result("desktop_read_value", token=token)["value"], value)


class StaleTokens(unittest.TestCase):
    def test_any_change_makes_tokens_stale_once(self):
        changes = [
            {"update": "ok", "title": "Okay"}, {"update": "ok", "enabled": False},
            {"update": "ok", "bounds": [11, 40, 80, 24]}, {"update": "ok", "value": 1},
            {"update": "ok", "actions": ["AXShowMenu"]}, {"update": "ok", "identifier": "x"},
            {"update": "ok", "description": "x"}, {"update": "ok", "role": "AXLink"},
            {"update": "ok", "children": [{"role": "AXImage"}]}, {"remove": "other"},
            {"update": "app", "focusedWindow": None}, {"frontmost": "second"}]
        for change in changes:
            scenario = {"applications": [application(OK_BUTTON, button("other"), id="app"),
                                         application(pid=101, id="second")],
                        "script": [{"request": 2, "do": change}]}
            with self.subTest(change), Simulated(scenario) as host:
                host.result("desktop_ax_get_state")
                self.assertEqual(host.error("desktop_read_value", token="e0"), CHANGED)
                # The refusal has observed the tree anew.
                self.assertIsNone(host.result("desktop_read_value", token="e0")["value"])

    def test_what_is_not_recorded_does_not_count(self):
        for change in [{"update": "ok", "subrole": "AXCloseButton"}, {"pasteboard": "x"},
                       {"update": "ok", "attributes": {"AXHelp": "x"}}]:
            with Simulated(desktop(OK_BUTTON, script=[{"request": 2, "do": change}])) as host:
                host.result("desktop_ax_get_state")
                host.result("desktop_read_value", token="e0.0")

    def test_an_action_that_ends_the_application(self):
        scenario = desktop(button("quit", actions=[{"name": "AXPress", "does": {"remove": "app"}}]))
        scenario["applications"][0]["id"] = "app"
        with Simulated(scenario) as host:
            host.result("desktop_ax_get_state")
            answer = host.result("desktop_ax_action", token="e0.0", action="invoke")
            self.assertEqual(answer["target"]["name"], "Notes")
            with self.assertRaisesRegex(Failure, "no frontmost application"):
                host.result("desktop_ax_action", token="e0.0", action="invoke")


class Permission(unittest.TestCase):
    def test_every_method_that_needs_it_says_so(self):
        required = {"code": "COMPUTER_CONTROL_PERMISSION_REQUIRED",
                    "message": "accessibility permission required"}
        methods = ["ax_get_state", "read_value", "ax_action", "click", "double_click", "move", "scroll",
                   "type", "paste", "keypress", "drag", "mouse_click", "mouse_drag", "ax_wait",
                   "window_activate"]
        with Simulated(desktop(permissions={"accessibility": False})) as host:
            for method in methods:
                self.assertEqual(host.error("desktop_" + method), required)
            self.assertEqual(host.result("desktop_target")["target"],
                             {"bundleIdentifier": "com.example.notes", "name": "Notes",
                              "pid": 100})
            self.assertEqual(host.result("desktop_clipboard_read"), {"text": None})
            self.assertEqual(len(host.result("desktop_displays_list")["displays"]), 1)
            self.assertEqual(host.log(), ["stringForType nothing"])

    def test_it_can_come_and_go(self):
        with Simulated(desktop(permissions={"screenRecording": False, "inputMonitoring": False}, script=[
                {"request": 2, "do": {"permissions": {"screenRecording": True}}},
                {"request": 3, "do": {"permissions": {"accessibility": False}}}])) as host:
            keys = ("permissionsGranted", "accessibility", "screenRecording", "inputMonitoring",
                    "semantic")
            for values in [(False, True, False, False, True), (True, True, True, False, True),
                           (False, False, True, False, True)]:
                self.assertEqual(host.result("ping"), dict(zip(keys, values)))


if __name__ == "__main__":
    unittest.main()
