"""Pointer, keys and text, as the posted events tell."""
import unittest

from simulated import Simulated, application, desktop, example

TWO_DISPLAYS = [{"id": 1, "bounds": [0, 0, 1440, 900]}, {"id": 2, "bounds": [1440, -180, 1920, 1080]}]
MIDDLE = {"x": 0.5, "y": 0.5}
BUTTON = {"id": "ok", "role": "AXButton", "title": "OK", "bounds": [10, 40, 25, 24],
          "actions": ["AXPress"]}
FIELD = {"id": "field", "role": "AXTextField", "title": "Name", "bounds": [10, 100, 200, 24]}
CLICK = ["leftMouseDown", "leftMouseUp"]


def clicks(place, count=1):
    return [f"{event} {place}" for event in CLICK] * count


class Pointer(unittest.TestCase):
    def test_clicks_and_moves(self):
        with Simulated(desktop(BUTTON, FIELD)) as host:
            host.result("desktop_ax_get_state")
            for method, params, posted in [
                    ("click", {"point": MIDDLE}, clicks("720,450")),
                    ("click", {"point": {"x": 1, "y": 0, "z": 7}}, clicks("1440,0")),
                    ("double_click", {"point": {"x": 0.1, "y": 0.25}}, clicks("144,225", 2)),
                    ("click", {"element": "e0.0"}, clicks("22.5,52")),
                    ("click", {"element": "e0.0", "point": MIDDLE}, clicks("22.5,52")),
                    ("click", {"element": 5, "point": MIDDLE}, clicks("720,450")),
                    ("double_click", {"element": "e0.0", "point": 5}, clicks("22.5,52", 2)),
                    ("move", {"point": MIDDLE}, ["mouseMoved 720,450"]),
                    ("move", {"point": MIDDLE, "element": "e0.0"}, ["mouseMoved 720,450"])]:
                before = len(host.log("post"))
                result = host.result("desktop_" + method, **params)
                self.assertEqual(host.log("post")[before:], posted, params)
                self.assertEqual(sorted(result), ["ok"] if method == "move" else ["ok", "target"])
                self.assertIs(result["ok"], True)

    def test_displays_are_asked_each_time(self):
        displays = [TWO_DISPLAYS, [{"id": 3, "bounds": [10, 20, 3, 1]}], [],
                    [{"id": 1, "bounds": [0, 0, 0, 9]}]]
        failing = {"rules": [{"call": "getActiveDisplayList", "nth": 1, "fails": 1001}],
                   "sleepingMainDisplay": {"id": 1, "bounds": [0, 0, 100, 100]},
                   "script": [{"request": 4 + i, "do": {"displays": list}}
                              for i, list in enumerate(displays)]}
        with Simulated(desktop(displays=TWO_DISPLAYS, **failing)) as host:
            for point in (MIDDLE, {"x": 0, "y": 0}, {"x": 1.0, "y": 1.0}, MIDDLE, MIDDLE, MIDDLE):
                host.result("desktop_move", point=point)
            self.assertEqual(host.error("desktop_move", point=MIDDLE), {"message": "point is required"})
            # The first list failed: the main display alone is known.
            self.assertEqual(host.log(), ["mouseMoved " + place for place in (
                "720,450", "0,-180", "3360,900", "1680,360", "11.5,20.5", "50,50")])

    def test_scrolling(self):
        with Simulated(desktop(BUTTON)) as host:
            host.result("desktop_ax_get_state")
            for params, place, wheels in [
                    ({"amount": -3, "point": MIDDLE}, "720,450", "-3,0"),
                    ({"amount": 5.0, "point": MIDDLE, "axis": "horizontal"}, "720,450", "0,5"),
                    ({"amount": 0, "element": "e0.0", "axis": "Horizontal"}, "22.5,52", "0,0"),
                    ({"amount": 1, "element": "e0.0", "point": MIDDLE, "axis": 1}, "22.5,52", "1,0"),
                    ({"amount": 2**40, "point": MIDDLE}, "720,450", "2147483647,0"),
                    ({"amount": -2**63, "point": MIDDLE}, "720,450", "-2147483648,0")]:
                before = len(host.log())
                self.assertEqual(host.result("desktop_scroll", **params), {"ok": True})
                self.assertEqual(host.log()[before:], [f"mouseMoved {place}",
                                                       f"scrollWheel {place} wheels {wheels}"])

    def test_dragging(self):
        with Simulated(desktop(displays=[{"id": 1, "bounds": [0, 0, 240, 480]}])) as host:
            self.assertEqual(host.result("desktop_drag", **{"from": {"x": 0, "y": 0}, "to": MIDDLE}),
                             {"ok": True})
            expected = ["leftMouseDown 0,0"]
            for i in range(1, 13):
                expected += [f"leftMouseDragged {10 * i},{20 * i}", "sleep 8000"]
            self.assertEqual(host.log(), expected + ["leftMouseUp 120,240"])
            self.assertAlmostEqual(host.entries()[-1]["time"], 0.096)

    def test_refused_parameters(self):
        """Nothing is posted, and the first thing that is wrong is named."""
        point, place, ends = "point is required", "point or element is required", "from and to are required"
        bad_points = [None, 5, [], {}, {"x": 0.5}, {"x": "0.5", "y": 0.5}, {"x": 1.0001, "y": 0.5},
                      {"x": 0.5, "y": -0.1}, {"X": 0.5, "Y": 0.5}, {"x": True, "y": 0},
                      {"x": 1e300, "y": 0}]
        with Simulated(desktop(BUTTON)) as host:
            for bad in bad_points:
                for method, params, message in [
                        ("click", {"point": bad}, point), ("double_click", {"point": bad}, point),
                        ("move", {"point": bad}, point),
                        ("scroll", {"point": bad, "amount": 1}, place),
                        ("drag", {"from": bad, "to": MIDDLE}, ends),
                        ("drag", {"from": MIDDLE, "to": bad}, ends)]:
                    self.assertEqual(host.error("desktop_" + method, **params), {"message": message}, bad)
            for params, message in [({}, "amount is required"), ({"amount": 1}, place),
                                    ({"amount": 1.5, "point": MIDDLE}, "amount is required"),
                                    ({"amount": "1", "point": MIDDLE}, "amount is required"),
                                    ({"amount": True, "point": MIDDLE}, "amount is required")]:
                self.assertEqual(host.error("desktop_scroll", **params), {"message": message})
            self.assertEqual(host.error("desktop_move", element="e0.0"), {"message": point})
            self.assertEqual(host.log(), [])

    def test_elements_that_cannot_be_pointed_at(self):
        with Simulated(example("failing")) as host:
            methods = [("click", {}), ("double_click", {}), ("scroll", {"amount": 1}),
                       ("type", {"text": "x"}), ("paste", {"text": "x"})]
            for method, params in methods:
                self.assertEqual(host.error("desktop_" + method, element="e0.0", **params)["message"],
                                 "observe the accessibility tree first")
            host.result("desktop_ax_get_state")  # the sixth request: the tree changes after it
            for method, params in methods:
                self.assertEqual(host.error("desktop_" + method, element="e9", **params)["message"],
                                 "unknown element token")
            for method, params in methods[:3]:
                self.assertEqual(host.error("desktop_" + method, element="e0.0", **params),
                                 {"code": "COMPUTER_CONTROL_UNSUPPORTED_OPERATION",
                                  "message": "element has no bounds"})
            self.assertEqual(host.error("desktop_type", text="x", element="e0.4")["message"],
                             "AXError -25200")
            self.assertEqual(host.log("post"), [])


# The keys that have names: of the codes from 0 on and from 96 on, "_" where there is none.
LOW_KEYS = "a s d f h g z x c v _ b q w e r y t 1 2 3 4 6 5 = 9 7 - 8 0 ] o u [ i p return l j ' k ; \\ , / n " \
    "m . tab space ` delete _ escape"
HIGH_KEYS = "f5 f6 f7 f3 f8 f9 _ f11 _ _ _ _ _ f10 _ f12 _ _ _ home pageup _ f4 end f2 pagedown f1 left right " \
    "down up"


class Keys(unittest.TestCase):
    def test_names(self):
        with Simulated(desktop()) as host:
            codes = [(name, first + place) for first, names in ((0, LOW_KEYS), (96, HIGH_KEYS))
                     for place, name in enumerate(names.split()) if name != "_"]
            self.assertEqual(len(codes), 72)
            for combo in [name for name, _ in codes] + ["enter", "esc", "backspace", "f13", "_"]:
                host.result("desktop_keypress", combo=combo)
            self.assertEqual(host.log()[::2], [f"keyDown {code} flags 0x0" for _, code in codes])

    def test_combinations(self):
        with Simulated(desktop()) as host:
            for combo, posted in [
                    ("cmd+shift+t", "17 flags 0x120000"), ("Ctrl+A", "0 flags 0x40000"),
                    ("a+b", "11 flags 0x0"), ("meta+alt+command+option+F12", "111 flags 0x180000"),
                    ("cmd++c", "8 flags 0x100000"), ("+cmd+c+", "8 flags 0x100000"),
                    ("c+cmd", "8 flags 0x100000"), ("keycode-117", "117 flags 0x0"),
                    ("control+KEYCODE-65535", "65535 flags 0x40000"), ("keycode-007", "7 flags 0x0"),
                    ("`", "50 flags 0x0"), ("\\", "42 flags 0x0"), ("delete", "51 flags 0x0"),
                    ("shift", None), ("", None), ("+", None), ("enter", None), ("cmd + c", None),
                    ("keycode-", None), ("keycode-65536", None), ("keycode--1", None),
                    ("keycode-1 ", None), ("é", None), ("İ", None),
                    ("keycode-99999999999999999999", None), ("K", "40 flags 0x0")]:
                before = len(host.log())
                self.assertEqual(host.result("desktop_keypress", combo=combo), {"ok": True})
                self.assertEqual(host.log()[before:],
                                 [f"keyDown {posted}", f"keyUp {posted}"] if posted else [], combo)
            self.assertEqual(host.error("desktop_keypress", combo=7), {"message": "combo is required"})

    def test_typing(self):
        """At most 20 UTF-16 units at a time, never half a character."""
        for text, chunks in [
                ("", []), ("x" * 45, ["x" * 20, "x" * 20, "x" * 5]), ("a\r\n\tb", ["a\r\n\tb"]),
                ("x" * 19 + "🎈", ["x" * 19, "🎈"]), ("x" * 18 + "🎈!", ["x" * 18 + "🎈", "!"]),
                ("🎈" * 11, ["🎈" * 10, "🎈"])]:
            with Simulated(desktop()) as host:
                result = host.result("desktop_type", text=text)
                self.assertEqual(result["target"]["name"], "Notes")
                self.assertEqual(host.log(), [f'{event} 0 text "{chunk}"' for chunk in chunks
                                              for event in ("keyDown", "keyUp")])

    def test_where_text_goes(self):
        with Simulated(desktop()) as host:  # half a character, as a host's cut may leave it
            host.result("desktop_type", text="\ud83c!\udf88")
            self.assertEqual(host.log()[0], 'keyDown 0 text "\ufffd!\ufffd"')
        with Simulated(desktop(BUTTON, FIELD)) as host:
            host.result("desktop_ax_get_state")
            host.result("desktop_type", text="a", element="e0.1", point=MIDDLE)
            host.result("desktop_type", text="b", point={"x": 2, "y": 2})  # no place: no click
            host.result("desktop_type", text="c", point={"x": 15 / 1440, "y": 0.125})
            keys = lambda text: [f'keyDown 0 text "{text}"', f'keyUp 0 text "{text}"']
            self.assertEqual(host.log(), ["setAttributeValue field AXFocused true", *keys("a"), *keys("b"),
                                          *clicks("15,112.5"), *keys("c")])
            token = host.token("Name")
            self.assertEqual(host.result("desktop_read_value", token=token)["value"], "abc")
            for method in ("desktop_type", "desktop_paste"):
                for text in ({}, {"text": 5}, {"text": None, "element": "e7"}):
                    self.assertEqual(host.error(method, **text), {"message": "text is required"})

    def test_pasting(self):
        cases = [({"pasteboard": "old"}, '"old"', ['setString "old"']),
                 ({"pasteboard": ""}, '""', ['setString ""']), ({}, "nothing", []),
                 ({"pasteboard": {"public.png": "image"}}, "nothing", [])]
        for members, before, restored in cases:
            with Simulated(desktop(FIELD, **members)) as host:
                host.result("desktop_ax_get_state")
                host.result("desktop_paste", text="néw\n", element="e0.0")
                self.assertEqual(host.log()[1:], [
                    f"stringForType {before}", "clearContents", 'setString "néw\n"',
                    "keyDown 9 flags 0x100000", "keyUp 9 flags 0x100000", "sleep 250000",
                    "clearContents", *restored])
                self.assertEqual(host.result("desktop_read_value", token=host.token("Name"))["value"],
                                 "néw\n")

    def test_failing_services(self):
        """What cannot be made is left out, the rest is still done."""
        rules = lambda *calls: {"rules": [{"call": call, "about": about, "nth": nth, "fails": True}
                                          for call, about, nth in calls]}
        for failures, method, params, posted in [
                (rules(("createMouseEvent", "leftMouseDown", 2)), "double_click", {"point": MIDDLE},
                 clicks("720,450") + ["leftMouseUp 720,450"]),
                (rules(("createKeyboardEvent", "keyDown", 1)), "keypress", {"combo": "a"},
                 ["keyUp 0 flags 0x0"]),
                (rules(("createKeyboardEvent", "keyUp", 1)), "type", {"text": "a"}, ['keyDown 0 text "a"']),
                ({"rules": [{"call": "createSource", "fails": True}]}, "keypress", {"combo": "a"},
                 ["keyDown 0 flags 0x0 no source", "keyUp 0 flags 0x0 no source"]),
                ({"rules": [{"call": "createScrollWheelEvent", "fails": True}]}, "scroll",
                 {"amount": 1, "point": MIDDLE}, ["mouseMoved 720,450"]),
                ({"rules": [{"call": "setString", "fails": True}]}, "paste", {"text": "x"},
                 ["keyDown 9 flags 0x100000", "keyUp 9 flags 0x100000"])]:
            with Simulated(desktop(**failures)) as host:
                self.assertTrue(host.result("desktop_" + method, **params)["ok"])
                self.assertEqual(host.log("post"), posted)


class Effects(unittest.TestCase):
    def test_clicks_press_buttons_and_bring_windows_forward(self):
        other = application(BUTTON | {"id": "send", "title": "Send"}, pid=101, name="Mail")
        other["windows"][0]["bounds"] = [900, 0, 300, 300]
        other["windows"][0]["children"][0] |= {"bounds": [910, 10, 20, 20],
                                                "actions": [{"name": "AXPress", "does": {"remove": "send"}}]}
        scenario = {"applications": [application(BUTTON), other]}
        with Simulated(scenario) as host:
            result = host.result("desktop_click", point={"x": 920 / 1440, "y": 20 / 900})
            self.assertEqual(result["target"]["name"], "Mail")
            self.assertEqual(len(host.result("desktop_ax_get_state")["nodes"]), 1)
            self.assertEqual([w["owner"] for w in host.result("desktop_windows_list")["windows"]],
                             ["Mail", "Notes"])
        with Simulated({**scenario, "postedInputActs": False}) as host:
            result = host.result("desktop_click", point={"x": 920 / 1440, "y": 20 / 900})
            self.assertEqual(result["target"]["name"], "Notes")


if __name__ == "__main__":
    unittest.main()
