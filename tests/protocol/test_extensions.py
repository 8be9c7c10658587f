"""The extension methods on the simulated desktop."""
import unittest

from simulated import Simulated, application, desktop, picture_size

MIDDLE = {"x": 0.5, "y": 0.5}
BUTTON = {"id": "ok", "role": "AXButton", "title": "OK", "bounds": [10, 40, 25, 24],
          "actions": ["AXPress", {"name": "AXShowMenu", "does": {"update": "ok", "title": "Menu"}}]}
TWO_DISPLAYS = [{"id": 7, "bounds": [0, 0, 1440, 900], "name": "Main"},
                {"id": 9, "bounds": [1440, -180, 1920, 1080]}]
NOT_COME = {"code": "COMPUTER_CONTROL_COMMAND_FAILED", "message": "window did not come to the front"}


class Extensions(unittest.TestCase):
    def test_displays(self):
        with Simulated(desktop(displays=TWO_DISPLAYS)) as host:
            self.assertEqual(host.result("desktop_displays_list"), {
                "displays": [
                    {"id": 7, "name": "Main",
                     "bounds": {"x": 0, "y": 0, "width": 1440, "height": 900}},
                    {"id": 9, "name": "Display 9",
                     "bounds": {"x": 1440, "y": -180, "width": 1920, "height": 1080}}],
                "virtualScreen": {"x": 0, "y": -180, "width": 3360, "height": 1080}})

    def test_captures(self):
        with Simulated(desktop(BUTTON, displays=TWO_DISPLAYS)) as host:
            window = host.result("desktop_windows_list")["windows"][0]
            for params, bounds, size in [
                    ({}, [0, 0, 1440, 900], [1440, 900]),
                    ({"display": 9, "scale": 0.5}, [1440, -180, 1920, 1080], [960, 540]),
                    ({"display": "9", "scale": "2"}, [0, 0, 1440, 900], [1440, 900]),
                    ({"window": window["id"], "scale": 2}, None, None),
                    ({"window": window["id"], "display": 9, "scale": 0.001}, None, [1, 1])]:
                result = host.result("desktop_capture", **params)
                if bounds:
                    self.assertEqual(list(map(result["bounds"].get, ("x", "y", "width", "height"))),
                                     bounds)
                else:
                    expected = {key.lower(): value for key, value in window["bounds"].items()}
                    self.assertEqual(result["bounds"], expected)
                    size = size or [2 * expected["width"], 2 * expected["height"]]
                self.assertEqual(list(picture_size(result["screenshotDataURL"])), size, params)
            for params, error in [
                    ({"display": 8}, "display not found"),
                    ({"display": 2**32 + 7}, "display not found"), ({"window": 99}, "window not found")]:
                self.assertEqual(host.error("desktop_capture", **params), {
                    "code": "COMPUTER_CONTROL_UNSUPPORTED_OPERATION", "message": error})
            for scale in (0, -1, 2.1, 1e300):
                self.assertEqual(host.error("desktop_capture", scale=scale, window=99),
                                 {"message": "scale must be above 0 and at most 2"})
        for call in ("captureDisplayImage", "getShareableContent", "pngRepresentation"):
            with Simulated(desktop(rules=[{"call": call, "fails": True}])) as host:
                self.assertEqual(host.result("desktop_capture")["screenshotDataURL"], "", call)

    def test_clicks(self):
        with Simulated(desktop(BUTTON)) as host:
            for params, posted in [
                    ({}, ["leftMouseDown 720,450 click 1", "leftMouseUp 720,450 click 1"]),
                    ({"button": "middle"},
                     ["otherMouseDown 720,450 click 1", "otherMouseUp 720,450 click 1"]),
                    ({"button": 3, "count": 2.0},
                     [f"leftMouse{step} 720,450 click {n}" for n in (1, 2)
                      for step in ("Down", "Up")]),
                    ({"button": "right", "modifiers": "Shift++ctrl"},
                     ["keyDown 59 flags 0x40000", "keyDown 56 flags 0x60000",
                      "rightMouseDown 720,450 click 1 flags 0x60000",
                      "rightMouseUp 720,450 click 1 flags 0x60000",
                      "keyUp 56 flags 0x40000", "keyUp 59 flags 0x0"])]:
                before = len(host.log("post"))
                result = host.result("desktop_mouse_click", point=MIDDLE, **params)
                self.assertEqual(sorted(result), ["ok", "target"])
                self.assertEqual(host.log("post")[before:], posted, params)
            for count in (2.5, True, "3", 2**63):  # counts as absent
                before = len(host.log("post"))
                host.result("desktop_mouse_click", point=MIDDLE, count=count, modifiers="+")
                self.assertEqual(len(host.log("post")) - before, 2, count)
            for params, message in [
                    ({}, "point or element is required"),
                    ({"point": MIDDLE, "modifiers": " shift"}, "unknown modifier"),
                    ({"point": MIDDLE, "count": -2**63}, "count must be 1 to 3"),
                    ({"point": {"x": 2, "y": 0}, "count": 9}, "point or element is required"),
                    ({"point": MIDDLE, "button": "Left", "count": 9}, "unknown button"),
                    ({"point": MIDDLE, "count": 0, "modifiers": "x"}, "count must be 1 to 3"),
                    ({"point": MIDDLE, "count": 4}, "count must be 1 to 3"),
                    ({"point": MIDDLE, "modifiers": "ctrl+x"}, "unknown modifier")]:
                self.assertEqual(host.error("desktop_mouse_click", **params), {"message": message})
            token = host.token("OK")
            host.result("desktop_mouse_click", element=token, button="right")
            self.assertEqual(host.error("desktop_mouse_click", element=token)["code"],
                             "COMPUTER_CONTROL_STALE_SNAPSHOT")

    def test_drags(self):
        with Simulated(desktop(displays=[{"id": 1, "bounds": [0, 0, 100, 100]}])) as host:
            path = [{"x": 0, "y": 0}, {"x": 1, "y": 0}, {"x": 1, "y": 1}]
            self.assertEqual(host.result("desktop_mouse_drag", path=path, durationMs=32,
                                         button="right", modifiers="cmd"), {"ok": True})
            self.assertEqual(host.log("post"), [
                "keyDown 55 flags 0x100000",
                "rightMouseDown 0,0 click 1 flags 0x100000",
                *(f"rightMouseDragged {place} click 1 flags 0x100000"
                  for place in ("50,0", "100,0", "100,50", "100,100")),
                "rightMouseUp 100,100 click 1 flags 0x100000", "keyUp 55 flags 0x0"])
            self.assertEqual(sum(entry["microseconds"] for entry in host.entries()
                                 if entry["call"] == "sleep"), 132000)
            before = len(host.log("post"))
            host.result("desktop_mouse_drag", path=path[:2] * 500, durationMs=0)
            self.assertEqual(len(host.log("post")) - before, 1001)
            for params, message in [
                    ({}, "path of 2 to 1000 points is required"),
                    ({"path": path[:1]}, "path of 2 to 1000 points is required"),
                    ({"path": path[:2] + [{"x": 2, "y": 0}]}, "path of 2 to 1000 points is required"),
                    ({"path": path + [1]}, "path of 2 to 1000 points is required"),
                    ({"path": path[:2] * 501}, "path of 2 to 1000 points is required"),
                    ({"path": path, "button": "x"}, "unknown button"),
                    ({"path": path, "modifiers": "x"}, "unknown modifier"),
                    ({"path": path, "durationMs": -1}, "durationMs must be 0 to 60000"),
                    ({"path": path, "durationMs": 60001}, "durationMs must be 0 to 60000")]:
                self.assertEqual(host.error("desktop_mouse_drag", **params), {"message": message})

    def test_clipboard(self):
        with Simulated(desktop(pasteboard="old")) as host:
            self.assertEqual(host.result("desktop_clipboard_read"), {"text": "old"})
            self.assertEqual(host.error("desktop_clipboard_write"), {"message": "text is required"})
            for text in ("", "naïve 😀\n\x00"):
                self.assertEqual(host.result("desktop_clipboard_write", text=text), {"ok": True})
                self.assertEqual(host.result("desktop_clipboard_read"), {"text": text})
        with Simulated(desktop(rules=[{"call": "setString", "fails": True}])) as host:
            self.assertEqual(host.error("desktop_clipboard_write", text="x")["code"],
                             "COMPUTER_CONTROL_COMMAND_FAILED")

    def test_waiting_for_changes(self):
        change = lambda time, title: {"at": time, "do": {"update": "ok", "title": title}}
        script = [change(2.0, "A"), change(2.1, "B"), change(2.2, "C"), change(90.0, "D")]
        with Simulated(desktop(BUTTON, script=script)) as host:
            first = host.result("desktop_ax_get_state")["revision"]
            self.assertEqual(host.error("desktop_ax_wait"), {"message": "revision is required"})
            self.assertEqual(host.result("desktop_ax_wait", revision=first),
                             {"changed": False, "revision": first})
            self.assertEqual(host.result("desktop_ax_wait", revision="", timeoutMs=0),
                             {"changed": True, "revision": first})
            # The last snapshot is left alone.
            host.result("desktop_read_value", token="e0.0")
            changed = host.result("desktop_ax_wait", revision=first, timeoutMs=60000)
            self.assertTrue(changed["changed"])
            quiet = host.result("desktop_ax_wait", revision=first, timeoutMs=5000, quietMs=500)
            self.assertTrue(quiet["changed"])
            self.assertNotEqual(quiet["revision"], changed["revision"])
            self.assertEqual(host.result("desktop_ax_get_state")["revision"], quiet["revision"])

    def test_waiting_without_notices_or_application(self):
        blind = desktop(BUTTON, rules=[{"call": "watchChanges", "fails": True}], script=[
            {"at": 1.0, "do": {"update": "ok", "title": "A"}}])
        with Simulated(blind) as host:
            first = host.result("desktop_ax_get_state")["revision"]
            self.assertTrue(host.result("desktop_ax_wait", revision=first, timeoutMs=9000)["changed"])
        with Simulated({"applications": []}) as host:
            self.assertEqual(host.result("desktop_ax_wait", revision="", timeoutMs=50),
                             {"changed": False, "revision": ""})

    def test_activating_windows(self):
        other = {"pid": 2, "name": "Other", "windows": [
            {"title": "Hidden", "bounds": [0, 0, 9, 9], "onScreen": False},
            {"title": "Behind", "bounds": [0, 0, 9, 9]}]}
        scenario = {"applications": [application(BUTTON), other],
                    "windows": [{"title": "Nobody's", "bounds": [0, 0, 9, 9]}]}
        with Simulated(scenario) as host:
            ids = {window["name"]: window["id"]
                   for window in host.result("desktop_windows_list")["windows"]}
            self.assertNotIn("Hidden", ids)
            for name in ("Behind", "Main", "Hidden"):
                window = ids.get(name, ids["Behind"] - 1)
                result = host.result("desktop_window_activate", window=window)
                self.assertEqual(result["target"]["windowTitle"], name)
                self.assertEqual(host.result("desktop_windows_list")["windows"][0]["name"], name)
            self.assertEqual(host.error("desktop_window_activate", window=ids["Nobody's"]), NOT_COME)
            for params in ({}, {"window": "1"}, {"window": 1.5}):
                self.assertEqual(host.error("desktop_window_activate", **params),
                                 {"message": "window is required"})
            for window in (99, -1, 2**63 - 1):
                self.assertEqual(host.error("desktop_window_activate", window=window), {
                    "code": "COMPUTER_CONTROL_UNSUPPORTED_OPERATION", "message": "window not found"})

    def test_a_window_that_does_not_come(self):
        with Simulated(desktop(rules=[{"call": "activeWindow", "fails": True}])) as host:
            self.assertEqual(host.error("desktop_window_activate", window=1), NOT_COME)


if __name__ == "__main__":
    unittest.main()
