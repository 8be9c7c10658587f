"""The Mac backend where a Mac is in question: threads, what other processes owe an answer, what is left
behind, and any call that fails. QUIL_MAC_LONG=1 makes the long runs of it, by hand."""
import concurrent.futures
import os
import time
import unittest

import mac_tools  # noqa: F401  (first: it chooses the executable)
from simulated import Simulated, application, desktop

LONG = bool(os.environ.get("QUIL_MAC_LONG"))
MIDDLE = {"x": 0.5, "y": 0.5}
# A desktop on which every call has something to give.
DISPLAYS = [{"id": 1, "bounds": [0, 0, 1440, 900], "name": "Built-in"},
            {"id": 2, "bounds": [1440, -180, 1920, 1080], "name": "Désk 🎈"}]
NOTES = application(
    {"id": "ok", "role": "AXButton", "title": "OK", "enabled": True, "actions": ["AXPress"]},
    {"id": "name", "role": "AXTextField", "title": "Name"},
    {"role": "AXScrollArea", "actions": ["AXScrollDownByPage"],
     "children": [{"role": "AXStaticText", "value": 0.7}]},
    signing={"team": "ABCDE12345", "identifier": "com.example.notes"},
    executablePath="/Applications/Notes.app/Contents/MacOS/Notes")
NOTES["windows"][0]["bounds"] = [0, 25, 12, 9]
RICH = {"displays": DISPLAYS, "pasteboard": "old", "applications": [NOTES], "bundles": [
    {"path": "/Applications/Notes.app", "identifier": "com.example.notes", "name": "Notes"},
    {"path": "/Applications/Other.app", "displayName": "Other"}]}
# Every method, the tokens as they are on that desktop.
REQUESTS = [
    ("ping", {}), ("desktop_target", {}), ("desktop_screenshot", {}), ("desktop_windows_list", {}),
    ("desktop_ax_get_state", {}), ("desktop_read_value", {"token": "e0.1"}),
    ("desktop_ax_action", {"token": "e0.0", "action": "invoke"}),
    ("desktop_ax_action", {"token": "e0.1", "action": "set_value", "value": "né😀"}),
    ("desktop_ax_get_state", {}),
    ("desktop_ax_action", {"token": "e0.1", "action": "focus"}),
    ("desktop_ax_action", {"token": "e0.2", "action": "scroll"}),
    ("desktop_click", {"point": MIDDLE}), ("desktop_double_click", {"point": MIDDLE}),
    ("desktop_move", {"point": MIDDLE}), ("desktop_scroll", {"point": MIDDLE, "amount": -3}),
    ("desktop_type", {"text": "hé😀"}), ("desktop_paste", {"text": "new"}),
    ("desktop_keypress", {"combo": "cmd+shift+t"}),
    ("desktop_drag", {"from": MIDDLE, "to": {"x": 0.6, "y": 0.5}}),
    ("desktop_apps_list", {}), ("desktop_launch_app", {"appId": "com.example.notes"}),
    ("startFrontmostGlimpseCapture", {"requestId": "g"}),
    *[("nextGlimpseCaptureUpdate", {"requestId": "g"})] * 3,
    ("cancelGlimpseCapture", {"requestId": "g"}),
    ("startInputRecording", {}), ("nextInputEvent", {"timeoutMs": 0}), ("stopInputRecording", {}),
]
# Every call of the platform that can fail, by what it fails with.
FAILURES = {
    **dict.fromkeys([
        "isProcessTrusted", "preflightScreenCaptureAccess", "preflightListenEventAccess",
        "requestListenEventAccess", "displayBounds", "screens", "copyWindowInfo",
        "frontmostApplication", "runningApplicationWithProcessIdentifier", "runningApplications",
        "urlForApplicationWithBundleIdentifier", "openUrl", "contentsOfDirectory", "openBundle",
        "getShareableContent", "captureImage", "pngRepresentation", "createSource",
        "createScrollWheelEvent", "createMouseEvent", "createKeyboardEvent", "post",
        "stringForType", "setString", "clearContents", "createTap", "createRunLoopSource"], [True]),
    **dict.fromkeys(["getActiveDisplayList", "copyGuestWithAttributes", "copyStaticCode",
                     "copySigningInformation"], [1000, 0]),
    **dict.fromkeys(["copyAttributeValue", "copyActionNames", "performAction",
                     "setAttributeValue"],
                    ["failure", "invalidElement", "cannotComplete", "noValue", "apiDisabled",
                     "notImplemented", 0]),
}


def mac(scenario, **habits):
    return Simulated({**scenario, "mac": habits})


def ask_everything(host):
    return [host.request(method, 60, **params) for method, params in REQUESTS]


def memory(host):
    """Resident memory in kilobytes."""
    with open(f"/proc/{host.process.pid}/status", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("VmRSS"))


class Everything(unittest.TestCase):
    def test_all_methods_and_nothing_is_left(self):
        with mac(RICH) as host:
            for _ in range(2):
                for (method, _), answer in zip(REQUESTS, ask_everything(host)):
                    self.assertNotIn("error", answer, method)
            self.assertEqual(len({method for method, _ in REQUESTS}), 23)

    def test_any_call_fails(self):
        for call, results in FAILURES.items():
            for result in results:
                for rule in ({"call": call, "fails": result},
                             {"call": call, "fails": result, "nth": 2}):
                    with self.subTest(rule), mac({**RICH, "rules": [rule]},
                                                 silentErrors="nth" in rule) as host:
                        self.assertEqual(len(ask_everything(host)), len(REQUESTS))

    def test_nothing_grows(self):
        rounds = 100_000 // len(REQUESTS) if LONG else 150
        with mac(RICH) as host:
            for _ in range(rounds // 3):
                ask_everything(host)
            before = memory(host)
            for _ in range(rounds):
                ask_everything(host)
            # Sanitizers keep a note of every thread that has been: some 1.5 kB a round.
            self.assertLess(memory(host) - before, 2_000 + 2 * rounds,
                            f"kB more after {rounds} rounds")

    def test_recordings_come_and_go(self):
        count = 10_000 if LONG else 300
        user = [{"click": [720, 450]}, {"disableTaps": "timeout"}, {"type": "a"},
                  {"key": {"code": 36, "characters": "\r"}}, {"disableTaps": "userInput"},
                  {"scroll": {"at": [5, 6], "lines": -3}}]
        # Every third recording sees all of it, the others end before their thread runs.
        scenario = {**RICH, "script": [{"request": 5 * i + 2, "do": {"user": user}}
                                       for i in range(count)]}
        with mac(scenario) as host:
            for _ in range(count):
                requests = [host.send(method) for method in (
                    "startInputRecording", "ping", "stopInputRecording", "startInputRecording",
                    "stopInputRecording")]
                answers = [host.answer(request)["result"] for request in requests]
                self.assertEqual([event["action"] for event in answers[2]["events"]],
                                 ["click", "type", "keypress", "scroll"])
                self.assertEqual(answers[4]["events"], [])


class OtherProcesses(unittest.TestCase):
    def waits(self, host):
        """How often a program has been waited for, 6 s each, so far."""
        host.result("desktop_move", point=MIDDLE)
        return round(host.entries()[-1]["time"] / 6)

    def test_one_element_answers_otherwise(self):
        for answer, name in [({"fails": "cannotComplete"}, None),
                             ({"fails": "notImplemented", "nth": 1}, "ill")]:  # then it is read singly
            scenario = desktop({"role": "AXButton", "title": "before"},
                               {"id": "ill", "role": "AXButton", "title": "ill"},
                               {"role": "AXGroup", "title": "after", "children": [
                                   {"role": "AXButton", "title": "inside"}]},
                               rules=[{"call": "copyAttributeValue", "about": "ill", **answer}])
            with self.subTest(answer), mac(scenario) as host:
                names = [node.get("name") for node in host.result("desktop_ax_get_state")["nodes"]]
                self.assertEqual(names, ["Main", "before", name, "after", "inside"])

    def test_round_trips(self):
        """One for all attributes of an element, and one for its actions."""
        with mac(desktop(*[{"role": "AXButton"}] * 90), roundTrip=1_000_000) as host:
            host.result("desktop_ax_get_state")
            host.result("desktop_move", point=MIDDLE)
            # Beside those of the walk: the titles of the target, and the window to begin with.
            self.assertAlmostEqual(host.entries()[-1]["time"], 2 * 91, delta=9)

    def test_a_hung_process_among_healthy_ones(self):
        web = {"role": "AXGroup", "attributes": {"Process": 300}}
        slow = {"call": "copyAttributeValue", "fails": "cannotComplete", "takes": 6}
        scenario = desktop({**web, "id": "web1", "title": "one"}, {**web, "id": "web2", "title": "two"},
                           {"role": "AXButton", "title": "after"},
                           rules=[{**slow, "about": "web1"}, {**slow, "about": "web2"}])
        with mac(scenario) as host:
            names = [node.get("name") for node in host.result("desktop_ax_get_state")["nodes"]]
            self.assertEqual(names, ["Main", None, None, "after"])
            self.assertEqual(self.waits(host), 1)

    def test_a_hung_application(self):
        # For the title of the target, for the window to begin with, and for the walk.
        with mac({**RICH, "rules": [{"call": "copyAttributeValue", "fails": "cannotComplete",
                                     "takes": 6}]}) as host:
            state = host.result("desktop_ax_get_state")
            self.assertEqual([node["role"] for node in state["nodes"]], ["AXUnknown"])
            self.assertEqual(self.waits(host), 3)

    def test_numbers_and_other_objects(self):
        values = ["float 0.7", "unsigned 18446744073709551615", "range", "null", 42, True, 1e300]
        children = [{"role": "AXSlider", "attributes": {
            "AXValue": value if not isinstance(value, str) else
            {"dictionary": {"substitute": value}}}} for value in values]
        with mac(desktop(*children)) as host:
            nodes = host.result("desktop_ax_get_state")["nodes"][1:]
            self.assertEqual([node.get("value") for node in nodes],
                             ["0.7", "18446744073709551615", None, None, "42", "1", "1e+300"])

    def test_displays_come_and_go(self):
        click = {"user": {"click": [1500, 0]}}
        scenario = {**RICH, "script": [
            {"request": 2, "do": [click, {"displays": DISPLAYS[:1]}]}, {"request": 3, "do": click},
            {"request": 4, "do": [{"displays": DISPLAYS}, click]}]}
        with mac(scenario) as host:
            host.result("startInputRecording")
            names = []
            for _ in range(3):
                event = host.result("nextInputEvent")["event"]
                names.append(event["target"].get("display", {}).get("name"))
            self.assertEqual(names, ["Built-in", "Built-in", "Désk 🎈"])

    def test_paste_with_a_slow_owner(self):
        with mac(RICH, delays={"stringForType": 0.6}) as host:
            host.result("desktop_paste", text="new")
            self.assertEqual([line for line in host.log() if "tring" in line],
                             ['stringForType "old"', 'setString "new"', 'setString "old"'])

    def test_system_before_screenshots(self):
        with mac(RICH, version=13) as host:
            self.assertEqual(host.result("desktop_screenshot")["screenshotDataURL"], "")
        with mac(RICH, version=14) as host:
            self.assertTrue(host.result("desktop_screenshot")["screenshotDataURL"])

    def test_the_main_thread_is_busy(self):
        scenario = {**RICH, "script": [{"request": 2, "do": {"user": {"type": "a"}}}]}
        with mac(scenario, delays={"mainRunLoop": 0.7}) as host:
            host.result("startInputRecording")
            host.result("ping")
            event, = host.result("stopInputRecording")["events"]
            self.assertEqual(event["action"], "keypress")


class SilentProcesses(unittest.TestCase):
    def test_answers_that_never_come(self):
        picture = "desktop_screenshot"
        cases = [  # what never or hardly comes, the request, its bound in seconds
            ({"getShareableContent": -1}, picture, 10), ({"captureImage": -1}, picture, 10),
            ({"getShareableContent": 10.5}, picture, 10), ({"captureImage": 10.5}, picture, 10),
            ({"stringForType": -1}, "desktop_paste", 5), ({"stringForType": 5.5}, "desktop_paste", 5),
            ({"openURL": -1}, "desktop_launch_app", 20)]

        def check(delays, method, bound):
            with mac(RICH, delays=delays) as host:
                params = {"desktop_paste": {"text": "new"},
                          "desktop_launch_app": {"appId": "com.example.notes"}}.get(method, {})
                begun = time.monotonic()
                answer = host.request(method, 60, **params)
                self.assertGreater(time.monotonic() - begun, bound - 0.5)
                self.assertLess(time.monotonic() - begun, bound + 20)
                if method == picture:
                    self.assertEqual(answer["result"]["screenshotDataURL"], "")
                elif method == "desktop_launch_app":
                    self.assertIn("launch failed", answer["error"]["message"])
                else:  # nothing was written while the read was under way
                    self.assertEqual([line for line in host.log() if "ontents" in line], [])
                self.assertIn("result", host.request("ping"))

        with concurrent.futures.ThreadPoolExecutor(len(cases)) as pool:
            for done in [pool.submit(check, *case) for case in cases]:
                done.result()


if __name__ == "__main__":
    unittest.main()
