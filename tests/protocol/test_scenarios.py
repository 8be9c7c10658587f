"""What quil-sim makes of scenarios: refuses bad ones with the place, plays the script of good ones."""
import json
import os
import random
import subprocess
import sys
import tempfile
import unittest

from quil_host import executable
from simulated import EXAMPLES, Simulated, desktop, example, run


def refusal(text):
    """The message for a scenario that must be refused, without the program and the file."""
    text = text if isinstance(text, bytes) else text.encode()
    answers, status, errors = run(text, b'{"id":1,"method":"ping"}\n')
    assert (answers, status) == ([], 2), (text[:200], answers, status, errors)
    prefix, message = errors.decode().split(".json: ", 1)
    assert prefix.startswith("quil-sim: ") and message.endswith("\n") and message.count("\n") == 1, errors
    return message.strip()


class Refusals(unittest.TestCase):
    def test_text_that_is_not_json(self):
        for text, place in [("", "1:1: "), ("{\n  \"about\": x}", "2:12: "), ("{}\n{}", "2:1: "),
                            (b'{\n"about": "\xff"}', "2:11: "), ('{"about": 1e999}', "1:15: "),
                            ("[" * 100_000, "nested more than 1000 levels"),
                            ('{"a":' * 100_000, "nested more than 1000 levels"), ("\x00", "1:1: "),
                            ("{}\n\x00", "2:1: "), ('{"a\\nb\\u001b": 1}', "a?b?: no such member")]:
            self.assertTrue(refusal(text).startswith(place), (text[:50], refusal(text)))

    def test_what_is_wrong_and_where(self):
        app = lambda **members: {"applications": [{"pid": 1, "name": "A", **members}]}
        within = lambda *children: app(windows=[{"bounds": [0, 0, 9, 9], "children": list(children)}])
        element = "applications[0].windows[0].children[0]"
        for scenario, message in [
                ([], "the scenario: must be an object"), ({"abuot": ""}, "abuot: no such member"),
                ({"permissions": {"accessibility": 1}}, "permissions.accessibility: must be true or false"),
                ({"displays": {}}, "displays: must be a list"),
                ({"displays": [{"id": 1, "bounds": [0, 0, 9]}]}, "displays[0].bounds: must be [x, y, w"),
                ({"displays": [{"id": -1, "bounds": [0, 0, 9, 9]}]}, "displays[0].id: must be an integer"),
                ({"displays": [{"id": 1, "bounds": [0, 0, 9, 9]}] * 2}, "displays[1].id: given twice"),
                ({"applications": [{"name": "A"}]}, 'applications[0]: "pid" is missing'),
                ({"applications": [{"pid": 2**31, "name": "A"}]}, "applications[0].pid: must be an integer"),
                ({"applications": app()["applications"] * 2}, "applications[1].pid: given twice"),
                (app(windows=[{}]), 'applications[0].windows[0]: "bounds" is missing'),
                (app(layer=1), "applications[0].layer: no such member"),
                (app(policy="loud"), "applications[0].policy: must be"),
                (app(bundleIdentifier=5), "applications[0].bundleIdentifier: must be a string"),
                (app(focusedWindow="w"), 'applications[0].focusedWindow: nothing has the id "w"'),
                (app(id=""), "applications[0].id: an id cannot be empty"),
                (app(windows=[{"bounds": [0, 0, 1, 1], "colour": "red"}]),
                 "applications[0].windows[0].colour: must be a colour"),
                (within({}), element + ': "role" is missing'),
                (within({"role": "AXRow", "actions": [{"name": "x", "does": {}}]}),
                 element + ".actions[0].does: changes"),
                (within({"role": "AXRow", "actions": [{"name": "x", "afterTimes": 1}]}),
                 element + ".actions[0].afterTimes: says when"),
                (within({"role": "AXRow", "value": {"point": [1]}}), element + ".value.point: must be [x, y]"),
                (within({"role": "AXRow", "value": None}), element + ".value: must be a string"),
                (within({"role": "AXRow", "value": {"element": "x"}}), element + ".value.element: nothing"),
                (within({"role": "AXRow", "readResults": {"AXTitle": "oops"}}),
                 element + ".readResults.AXTitle: no result code"),
                (within({"role": "AXRow", "id": "a"}, {"role": "AXRow", "id": "a"}),
                 'applications[0].windows[0].children[1].id: the id "a" is given twice'),
                (app(id="a") | {"stacking": "a"}, 'stacking: must be the id of a window, "a" is an appl'),
                (app(id="a") | {"script": [{"at": 1, "do": {"update": "a", "layer": 1}}]},
                 'script[0].do.update: must be the id of a window to have "layer"'),
                ({"script": [{"do": {"frontmost": None}}]}, 'script[0]: needs "at" or "request"'),
                ({"script": [{"at": -1, "do": {"frontmost": None}}]}, "script[0].at: must be a number of sec"),
                ({"rules": [{"call": "fly", "fails": True}]}, "rules[0].call: no call of the platform"),
                ({"rules": [{"call": "post"}]}, 'rules[0]: needs "fails", "takes" or "does"'),
                ({"rules": [{"call": "post", "nth": 1, "from": 2, "fails": True}]}, "rules[0].from: cannot"),
                ({"rules": [{"call": "post", "nth": 0, "fails": True}]}, "rules[0].nth: must be an integer"),
                ({"rules": [{"call": "screens", "about": "x", "fails": True}]}, "rules[0].about: all calls"),
                ({"rules": [{"call": "post", "about": "keydown", "fails": True}]}, "rules[0].about: no event"),
                ({"rules": [{"call": "copyActionNames", "about": ["x"], "fails": True}]},
                 'rules[0].about[0]: nothing has the id "x"'),
                ({"user": {"click": [1, 2], "type": "x"}}, "user: must have exactly one"),
                ({"user": [{"key": {"code": 1, "flags": ["hyper"]}}]}, "user[0].key.flags[0]: must be"),
                ({"bundles": [{"path": "A.app"}]}, "bundles[0].path: must begin with a slash"),
                ({"log": "/nonexistent/log"}, "log: /nonexistent/log: ")]:
            self.assertTrue(refusal(json.dumps(scenario)).startswith(message),
                            (message, refusal(json.dumps(scenario))))
        self.assertEqual(refusal('{"applications": [{"pid": 1, "name": "A", "pid": 1}]}'),
                         "applications[0].pid: given twice")

    def test_broken_examples_never_crash(self):
        """Takes, doubles, swaps and replaces pieces of good scenarios."""
        source = random.Random(7)
        texts = [json.dumps(example(name)) for name in ("calculator", "form", "failing")]
        pieces = ["{", "}", "[", "]", ",", ":", '"', "null", "-1", "1e9", "true", "\\", "{}", "[]", "é"]
        statuses = {0: 0, 2: 0}
        with tempfile.NamedTemporaryFile(suffix=".json") as file:
            for _ in range(150):
                text = source.choice(texts)
                for _ in range(source.choice((1, 1, 2, 9))):
                    start = source.randrange(len(text))
                    end = min(len(text), start + source.choice((0, 1, 4, 30)))
                    text = text[:start] + source.choice(pieces) + text[end:]
                file.seek(0)
                file.truncate()
                file.write(text.encode())
                file.flush()
                done = subprocess.run([executable("quil-sim"), file.name], timeout=30, capture_output=True,
                                      input=b'{"id":1,"method":"desktop_ax_get_state"}\n')
                self.assertIn(done.returncode, statuses, (text, done.stderr))
                self.assertEqual(bool(done.stderr), done.returncode == 2, text)
                statuses[done.returncode] += 1
        self.assertGreater(statuses[2], 50)


class Scripts(unittest.TestCase):
    def test_documented_scenarios(self):
        with open(os.path.join(EXAMPLES, "..", "..", "docs", "simulated-desktop.md"), encoding="utf-8") as file:
            blocks = [json.loads(text.split("```")[0]) for text in file.read().split("```json")[1:]]
        scenarios = [{"bundles": [block]} if "path" in block else block for block in blocks
                     if "line" not in block]
        self.assertEqual(len(scenarios), 4)
        for scenario in scenarios + [example(name) for name in ("calculator", "form", "failing")]:
            with Simulated(scenario) as host:
                self.assertTrue(host.result("ping")["accessibility"])

    def test_changes_with_requests_times_and_calls(self):
        button = {"id": "ok", "role": "AXButton", "title": "OK", "actions": [
            {"name": "AXPress", "does": {"update": "ok", "description": "pressed"}}]}
        scenario = desktop(
            button, {"role": "AXGroup"},
            script=[{"request": 2, "do": {"update": "ok", "title": "by request"}},
                    {"at": 0.05, "do": {"update": "ok", "title": "by time"}}],
            rules=[{"call": "performAction", "about": ["AXPress", "ok"], "nth": 2,
                    "does": {"update": "ok", "title": "by call"}},
                   {"call": "copyAttributeValue", "about": ["AXTitle", "ok"], "from": 7, "fails": "noValue"}])
        with Simulated(scenario) as host:
            ok = lambda: host.result("desktop_ax_get_state")["nodes"][1]
            press = lambda: host.result("desktop_ax_action", token="e0.0", action="invoke")
            self.assertEqual(ok()["name"], "OK")
            self.assertEqual(ok()["name"], "by request")
            host.result("desktop_drag", **{"from": {"x": 0, "y": 0}, "to": {"x": 0, "y": 0}})
            self.assertEqual(ok()["name"], "by time")
            press()
            self.assertEqual(ok()["description"], "pressed")
            press()
            self.assertNotIn("name", ok())
            self.assertEqual([(e["request"], e["line"]) for e in host.entries() if e["call"] != "post"][-2:],
                             [(5, "performAction ok AXPress"), (7, "performAction ok AXPress")])

    def test_a_tree_that_changes_during_an_observation(self):
        """The host is told at its next use of a token."""
        scenario = desktop(*({"id": f"row{i}", "role": "AXRow", "title": str(i)} for i in range(5)), rules=[
            {"call": "copyAttributeValue", "about": ["AXTitle", "row2"], "nth": 1,
             "does": [{"remove": "row4"}, {"update": "row0", "title": "late"}]}])
        with Simulated(scenario) as host:
            nodes = host.result("desktop_ax_get_state")["nodes"]
            self.assertEqual([node.get("name", "") for node in nodes], ["Main", "0", "1", "2", "3", ""])
            self.assertEqual(host.error("desktop_read_value", token="e0")["message"],
                             "the accessibility tree changed; observe again")

    def test_a_slow_service(self):
        for real, scenario in [(False, {}), (True, {"clock": {"real": True}})]:
            with Simulated(desktop({"role": "AXGroup"}, **scenario, rules=[
                    {"call": "copyActionNames", "nth": 1, "takes": 0.3}])) as host:
                host.result("desktop_ax_get_state")
                host.result("desktop_move", point={"x": 0, "y": 0})
                self.assertGreaterEqual(host.entries()[0]["time"], 0.3)

    def test_the_log(self):
        with Simulated(desktop({"id": "field", "role": "AXTextField"}, clock={"wallClock": 5})) as host:
            host.result("desktop_ax_get_state")
            host.result("desktop_ax_action", token="e0.0", action="set_value", value="é")
            host.result("desktop_keypress", combo="cmd+c")
            host.result("desktop_scroll", point={"x": 0, "y": 0}, amount=2)
            self.assertEqual([{**entry, "line": None} for entry in host.entries()], [
                {"time": 0, "request": 2, "line": None, "call": "setAttributeValue", "element": "field",
                 "attribute": "AXValue", "value": "é", "result": 0},
                *({"time": 0, "request": 3, "line": None, "call": "post", "type": type, "keyCode": 8,
                   "flags": 0x100000, "text": None, "tap": 0, "source": 1} for type in ("keyDown", "keyUp")),
                {"time": 0, "request": 4, "line": None, "call": "post", "type": "mouseMoved",
                 "point": [0, 0], "button": 0, "click": None, "flags": None, "tap": 0, "source": None},
                {"time": 0, "request": 4, "line": None, "call": "post", "type": "scrollWheel",
                 "point": [0, 0], "wheels": [2, 0, 0], "wheelCount": 2, "units": 1, "tap": 0,
                 "source": None}])

    def test_recorded_input(self):
        event = {"type": "leftMouseDown", "location": [1, 2], "timestamp": 999_750_000_000}
        scroll = lambda lines: {"scroll": {"at": [1680, 360], "lines": lines}}
        user = [{"type": "Hi"}, {"click": [840, 360]}, *map(scroll, (250, -3, 0, -101)),
                {"drag": {"from": [1, 2], "to": [300, 400]}},
                {"secureInput": True}, {"type": "secret"}, {"secureInput": False},
                {"disableTaps": "timeout"}, {"type": "x"}, {"disableTaps": "userInput"}, {"type": "y"},
                {"event": event}]
        with Simulated({"script": [{"request": 3, "do": {"user": user}}],
                        "displays": [{"id": 1, "bounds": [0, 0, 1440, 900], "name": "Main"},
                                     {"id": 2, "bounds": [1440, -180, 1920, 1080], "name": "Side"}],
                        "permissions": {"accessibility": False, "screenRecording": False},
                        "rules": [{"call": "screens", "from": 2, "fails": True}]}) as host:
            for _ in range(3):  # starting again changes nothing
                self.assertEqual(host.result("startInputRecording"), {})
            events = host.result("stopInputRecording")["events"]
            self.assertEqual([(event["action"], *event["params"].values()) for event in events], [
                ("type", "H"), ("type", "i"), ("click",), ("scroll", 100), ("scroll", -3), ("scroll", 0),
                ("scroll", -100), ("click",), ("type", "x"), ("type", "y"), ("click",)])
            self.assertEqual([event["at"] - 1_700_000_000_000 for event in events], [0] * 10 + [-250])
            self.assertEqual([(event["target"]["display"]["name"], event["target"]["point"])
                              for event in events[2:4]],
                             [("Main", {"x": 0.25, "y": 0.5}), ("Side", {"x": 0.5, "y": 0.5})])
            self.assertEqual(len({event["id"] for event in events}), len(events))
            self.assertRegex(events[0]["id"], "^input-[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$")

    def test_the_buffer_keeps_the_oldest(self):
        click = lambda x: {"click": [x, 0]}
        script = [{"request": 2, "do": {"user": [click(0)] + [click(1)] * 10_000}},
                  {"request": 3, "do": {"user": [click(720), click(2)]}}]
        with Simulated({"script": script}) as host:
            host.result("startInputRecording")
            self.assertEqual(host.result("nextInputEvent")["event"]["target"]["point"]["x"], 0)
            host.send("stopInputRecording")
            events = json.loads(host.read_line())["result"]["events"]
            self.assertEqual(len(events), 10_000)
            self.assertEqual(events[-1]["target"]["point"]["x"], 0.5)

    def test_recorded_keys(self):
        """Text, or else combinations."""
        keys = [(0, "a", "", "a"), (0, "A", "shift capsLock", "A"), (33, "ẞ한", "", "ẞ한"),
                (0, "a", "command shift", "cmd+shift+keycode-0"), (8, "ç", "option", "alt+keycode-8"),
                (9, "v", "capsLock shift option control command", "cmd+ctrl+alt+shift+keycode-9"),
                (36, "\r", "shift", "shift+keycode-36"), (51, "\x7f", "", "keycode-51"),
                (4, "x\x85", "", "keycode-4"), (5, "x\u200d", "", "keycode-5"), (6, "", "", "keycode-6"),
                (65535, None, "", "keycode-65535")]
        user = [{"key": {"code": code, "flags": flags.split()} |
                 ({} if characters is None else {"characters": characters})}
                for code, characters, flags, _ in keys]
        with Simulated({"script": [{"request": 2, "do": {"user": user}}]}) as host:
            host.result("startInputRecording")
            events = host.result("stopInputRecording")["events"]
            self.assertEqual([params for event in events for params in event["params"].values()],
                             [record for *_, record in keys])
            host.result("startInputRecording")
            self.assertEqual(host.close()[1:], (0, b""), "ends while it records")

    def test_waiting_for_input(self):
        script = [{"at": 0.12, "do": {"user": {"type": "x"}}}, {"at": 0.4, "do": {"user": {"type": "y"}}}]
        with Simulated({"script": script}) as host:
            next = lambda **params: host.result("nextInputEvent", **params)["event"]
            host.result("startInputRecording")
            for timeout in (0, -1, 0.0, -2**63):
                self.assertIsNone(next(timeoutMs=timeout))
            self.assertEqual(next(timeoutMs="0")["params"], {"text": "x"})
            self.assertIsNone(next(timeoutMs=200))
            self.assertEqual(next()["params"], {"text": "y"})
            self.assertEqual(host.result("stopInputRecording"), {"events": []})
            self.assertEqual(host.result("stopInputRecording"), {"events": []})
            self.assertIsNone(next())  # a second unless told
            host.result("desktop_keypress", combo="a")
            self.assertAlmostEqual(host.entries()[-1]["time"], 1.4)

    def test_times_that_no_double_holds(self):
        """Each change comes at its own time; a long wait goes straight to the next."""
        times = (1 / 3, 2 / 60, 0.1 + 0.2, 1.4e-9, 7200 + 1 / 7)
        scenario = {"script": [{"at": time, "do": {"user": {"type": "x"}}} for time in times]}
        with Simulated(scenario) as host:
            host.result("startInputRecording")
            for time in sorted(times):
                event = host.result("nextInputEvent", timeoutMs=2**62)["event"]
                self.assertEqual(event["at"], 1_700_000_000_000 + int(time * 1000))
            self.assertIsNone(host.result("nextInputEvent", timeoutMs=10**9)["event"])
            sleeps = [entry["microseconds"] for entry in host.entries()]
            self.assertEqual(sleeps, [50_000, 250_000, 50_000, 7_199_800_000, 10**12])

    @unittest.skipUnless(sys.platform == "linux", "reads /proc")
    def test_recordings_leave_nothing_behind(self):
        def address_space():
            with open(f"/proc/{host.process.pid}/status", encoding="ascii") as file:
                return next(int(line.split()[1]) for line in file if line.startswith("VmSize:"))

        with Simulated({"rules": [{"call": "startThread", "about": "quil.input-tap", "nth": 3,
                                   "fails": True}],
                        "script": [{"request": 7, "do": {"user": {"type": "x"}}}]}) as host:
            for _ in range(2):
                host.result("startInputRecording")
                host.result("stopInputRecording")
            self.assertEqual(host.error("startInputRecording"), {
                "code": "RECORDING_CAPTURE_UNAVAILABLE", "message": "input event tap unavailable"})
            before = address_space()
            for turn in range(100):  # a thread's stack takes 8 MB
                self.assertEqual(host.result("startInputRecording"), {})
                events = host.result("stopInputRecording")["events"]
                self.assertEqual(len(events), 1 if turn == 0 else 0)
            self.assertLess(address_space() - before, 400_000)

    def test_recordings_that_cannot_start(self):
        permission, unavailable = "RECORDING_PERMISSION_REQUIRED", "RECORDING_CAPTURE_UNAVAILABLE"
        scenario = {"permissions": {"inputMonitoring": False, "grantsInputMonitoring": True},
                    "script": [{"request": 3, "do": {"permissions": {"accessibility": False}}}],
                    # The last time the permission goes while the recording starts.
                    "rules": [{"call": "createTap", "fails": True},
                              {"call": "preflightListenEventAccess", "nth": 8, "fails": True}]}
        with Simulated(scenario) as host:
            for code, message in [(permission, "input monitoring permission required"),
                                  (unavailable, "input event tap unavailable"),
                                  (permission, "accessibility permission required"),
                                  (permission, "input monitoring permission required")]:
                self.assertEqual(host.error("startInputRecording"), {"code": code, "message": message})
            self.assertEqual(host.log(), ["requestListenEventAccess granted"])  # asked once


if __name__ == "__main__":
    unittest.main()
