"""Windows, screenshots, captures, the catalogue of applications and launching."""
import unittest

from simulated import Simulated, application, desktop, example, picture_size, window


def sized(width, height, **members):
    return {"title": "w", "bounds": [0, 0, width, height], **members}


class Targets(unittest.TestCase):
    def test_what_a_target_says(self):
        titled = lambda **members: {"windows": [window(**members)]}
        for members, says in [
                ({"localizedName": None}, {}), (titled(), {"name": "A", "windowTitle": "Main"}),
                ({"bundleIdentifier": "b", "executablePath": "/e"},
                 {"name": "A", "bundleIdentifier": "b", "executablePath": "/e"}),
                (titled(title=""), {"name": "A", "windowTitle": ""}),
                (titled(attributes={"AXTitle": 5}), {"name": "A"}),
                (titled() | {"focusedWindow": None}, {"name": "A"}),
                (titled() | {"attributes": {"AXFocusedWindow": "no element"}}, {"name": "A"}),
                ({"signing": {"team": "T", "identifier": "i"}}, {"name": "A", "signingIdentity": "T"}),
                ({"signing": {"team": "", "identifier": "i"}}, {"name": "A", "signingIdentity": "i"}),
                ({"signing": {"identifier": ""}}, {"name": "A", "signingIdentity": ""}),
                ({"signing": {}}, {"name": "A"}), ({"signingInformation": "x"}, {"name": "A"})]:
            with Simulated({"applications": [{"pid": 7, "name": "A", **members}]}) as host:
                self.assertEqual(host.result("desktop_target"), {"target": {"pid": 7, **says}}, members)

    def test_signing_services_that_fail(self):
        for call in ("copyGuestWithAttributes", "copyStaticCode", "copySigningInformation"):
            with Simulated({"applications": [{"pid": 7, "name": "A", "signing": {"team": "T"}}], "rules": [
                    {"call": call, "nth": 1, "fails": True},
                    {"call": call, "nth": 2, "fails": 0}]}) as host:  # succeeds and gives nothing
                self.assertEqual([host.result("desktop_target")["target"].get("signingIdentity")
                                  for _ in range(3)], [None, None, "T"], call)


class Windows(unittest.TestCase):
    maxDiff = None

    def test_what_is_listed(self):
        app = application(executablePath="/opt/notes", windows=[
            window(id="a"), window(layer=3), window(onScreen=False), window(desktopElement=True),
            window(title="", info={"kCGWindowName": None, "kCGWindowOwnerName": 5,
                                   "kCGWindowLayer": "0", "kCGWindowBounds": [1], "kCGWindowNumber": 2.5}),
            window(info={"kCGWindowOwnerPID": 1e15, "kCGWindowLayer": None})])
        nobody = window(id="nobody", title="Panel")
        with Simulated({"applications": [app], "windows": [nobody], "stacking": ["nobody", "a"],
                        "permissions": {"accessibility": False, "screenRecording": False},
                        "rules": [{"call": "copyWindowInfo", "nth": 2, "fails": True}],
                        "script": [{"request": 3, "do": {"windowList": "broken"}},
                                   {"request": 4, "do": {"windowList": [1, "x"]}},
                                   {"request": 5, "do": {"windowList": [{"dictionary": {}}]}}]}) as host:
            bounds = {"X": 0, "Y": 25, "Width": 800, "Height": 600}
            notes = {"name": "Main", "owner": "Notes", "pid": 100, "bounds": bounds,
                     "bundleIdentifier": "com.example.notes", "executablePath": "/opt/notes"}
            anonymous = {"id": 0, "name": "", "owner": "", "pid": 100,
                         "bundleIdentifier": "com.example.notes", "executablePath": "/opt/notes"}
            ghost = {"id": 6, "name": "Main", "owner": "Notes", "pid": 10**15, "bounds": bounds}
            panel = {"id": 7, "name": "Panel", "owner": "", "pid": 0, "bounds": bounds}
            self.assertEqual(host.result("desktop_windows_list"),
                             {"windows": [panel, {"id": 1, **notes}, anonymous, ghost]})
            for _ in range(3):
                self.assertEqual(host.result("desktop_windows_list"), {"windows": []})
            self.assertEqual(host.result("desktop_windows_list"),
                             {"windows": [{"id": 0, "name": "", "owner": "", "pid": 0}]})


class Screenshots(unittest.TestCase):
    def test_which_window_is_taken(self):
        first, second = sized(100, 50), sized(60, 40)
        front = application(windows=[sized(10, 10, layer=8), sized(11, 11, onScreen=False), first, second])
        back = application(pid=101, windows=[sized(20, 20)])
        nobodys = sized(30, 30, id="nobodys")
        for scenario, size in [
                ({"applications": [front, back]}, (200, 100)),
                ({"applications": [application(windows=[sized(800.75, 600.25)])]}, (1601, 1200)),
                ({"applications": [application(windows=[]), back]}, (40, 40)),
                ({"applications": [back], "windows": [nobodys], "frontmost": None}, (60, 60)),
                ({"applications": [back], "frontmost": None}, (40, 40)),
                ({"applications": [application(windows=[])], "windows": [nobodys, sized(31, 31)],
                  "stacking": "nobodys"}, (60, 60)),
                ({"applications": [front], "windows": [nobodys], "stacking": "nobodys"}, (200, 100)),
                # Who is in front is asked once the windows are known.
                ({"applications": [front, back | {"id": "back"}], "rules": [
                    {"call": "getShareableContent", "does": {"frontmost": "back"}}]}, (40, 40)),
                ({"applications": [application(windows=[])]}, None),
                *(({"applications": [application(windows=[sized(width, 5)])]}, None)
                  for width in (0, 0.4, -5, 1e300))]:
            with Simulated(scenario) as host:
                result = host.result("desktop_screenshot")
                self.assertEqual(picture_size(result["screenshotDataURL"]), size, scenario)
                self.assertEqual(result["target"], host.result("desktop_target")["target"])

    def test_failures(self):
        required = {"code": "COMPUTER_CONTROL_PERMISSION_REQUIRED",
                    "message": "screen recording permission required"}
        with Simulated(example("failing")) as host:
            for method in ("desktop_screenshot", "desktop_capture"):
                self.assertEqual(host.error(method), required)
            self.assertEqual(host.result("desktop_screenshot")["screenshotDataURL"], "")
            self.assertEqual(picture_size(host.result("desktop_screenshot")["screenshotDataURL"]),
                             (800, 600))
        for call in ("getShareableContent", "pngRepresentation"):
            with Simulated(desktop(rules=[{"call": call, "fails": True}])) as host:
                self.assertEqual(host.result("desktop_screenshot")["screenshotDataURL"], "")


class Captures(unittest.TestCase):
    def next(self, host, name):
        return host.result("nextGlimpseCaptureUpdate", requestId=name)["update"]

    def test_a_capture_step_by_step(self):
        scenario = {"applications": [
            application({"role": "AXButton", "title": "O\nK", "subrole": "AXCloseButton"},
                        {"role": "AXTextField", "title": "x" * 800, "value": "é"},
                        {"role": "AXSlider", "value": 5}, id="notes"),
            application(pid=101, name="Mail", id="mail", windows=[])],
            "permissions": {"accessibility": True, "screenRecording": False},
            "script": [{"request": 3, "do": {"frontmost": "mail"}},
                       {"request": 6, "do": {"frontmost": None}}]}
        with Simulated(scenario) as host:
            target = host.result("startFrontmostGlimpseCapture", requestId="A")["target"]
            self.assertEqual((target["name"], target["windowTitle"]), ("Notes", "Main"))
            self.assertEqual(self.next(host, "A"), {"type": "axText", "text": "\n".join([
                "AXWindow | Main", "AXButton | O K | (AXCloseButton)", f"AXTextField | {'x' * 800} | é",
                "AXSlider"])})
            # Another application is in front by now; the capture keeps its target.
            self.assertEqual(host.result("startFrontmostGlimpseCapture", requestId="")["target"]["name"],
                             "Mail")
            self.assertEqual(self.next(host, "A"), {"type": "screenshot", "screenshotDataURL": "",
                                                    "target": target})
            self.assertEqual(self.next(host, "A"), {"type": "completed"})
            self.assertEqual(self.next(host, ""), {"type": "axText", "text": ""})
            self.assertEqual(self.next(host, "A"), {"type": "completed"})
            # Starting again begins anew.
            self.assertEqual(host.result("startFrontmostGlimpseCapture", requestId="A"), {"target": {}})
            self.assertEqual(self.next(host, "A")["type"], "axText")

    def test_unknown_and_cancelled_captures(self):
        unknown = {"type": "failed", "error": "unknown request"}
        with Simulated(desktop(permissions={"accessibility": False})) as host:
            self.assertEqual(self.next(host, "A"), unknown)
            host.result("startFrontmostGlimpseCapture", requestId="A")
            self.assertEqual(self.next(host, "A")["text"], "AXUnknown")
            self.assertEqual(picture_size(self.next(host, "A")["screenshotDataURL"]), (1600, 1200))
            for params in ({"requestId": "B"}, {}, {"requestId": 5}, {"requestId": "A"}):
                self.assertEqual(host.result("cancelGlimpseCapture", **params), {})
            self.assertEqual(self.next(host, "A"), unknown)
            for method in ("startFrontmostGlimpseCapture", "nextGlimpseCaptureUpdate"):
                for params in ({}, {"requestId": 1}, {"requestId": None}):
                    self.assertEqual(host.error(method, **params), {"message": "requestId is required"})

    def test_the_one_started_longest_ago_goes(self):
        with Simulated(desktop()) as host:
            start = lambda name: host.result("startFrontmostGlimpseCapture", requestId=name)
            for i in range(1000):
                start(str(i))
            self.next(host, "1")  # what has progressed does not stay longer
            start("0")  # but what has begun again does
            start("one more")
            self.assertEqual(self.next(host, "1")["type"], "failed")
            host.result("cancelGlimpseCapture", requestId="500")
            start("in its place")
            for name in ("0", "2", "one more"):
                self.assertEqual(self.next(host, name)["type"], "axText")


class Applications(unittest.TestCase):
    def test_the_catalogue(self):
        scenario = {
            "permissions": {"accessibility": False},
            "applications": [
                application(windows=[], executablePath="/opt/notes",
                            signing={"team": "TEAM", "identifier": "id"}),
                {"pid": 2, "name": "tool", "executablePath": "/opt/tool",
                 "signing": {"team": "", "identifier": "tool.id"}},
                {"pid": 3, "name": "agent", "bundleIdentifier": "com.example.agent", "policy": "accessory"},
                {"pid": 4, "name": "nameless", "localizedName": None, "bundleIdentifier": "com.x"},
                {"pid": 5, "name": "nothing identifies it", "signingInformation": [1]},
                {"pid": 6, "name": "nor this", "bundleIdentifier": "", "executablePath": "/opt/x"},
                {"pid": 8, "name": "twice, first", "bundleIdentifier": "com.twice"},
                {"pid": 9, "name": "twice, later", "bundleIdentifier": "com.twice"},
            ],
            "unlistableFolders": ["/Applications/Utilities"],
            "bundles": [
                {"path": "/Applications/Notes.app", "identifier": "com.example.notes"},
                {"path": "/Applications/beta.app", "displayName": "beta", "name": "no"},
                {"path": "/Applications/Alpha.app", "identifier": "a", "name": "Alpha",
                 "information": {"CFBundleDisplayName": 5}},
                {"path": "/System/Applications/Alpha2.app", "identifier": "a"},
                {"path": "/Applications/x.app.app"},
                {"path": "/Applications/Broken.app", "isBundle": False, "identifier": "hidden"},
                {"path": "/Applications/Upper.APP"}, {"path": "/Applications/Read Me"},
                {"path": "/Applications/Utilities/Unseen.app"}, {"path": "/Applications/Sub/Deep.app"}]}
        with Simulated(scenario) as host:
            apps = host.result("desktop_apps_list")["apps"]
        installed = lambda path, name, **more: {"appId": path, "name": name, "executablePath": path,
                                                "running": False, **more}
        self.assertEqual(apps, [
            installed("/Applications/Alpha.app", "Alpha") | {"appId": "a", "bundleIdentifier": "a"},
            installed("/Applications/beta.app", "beta"),
            installed("/Applications/Broken.app", "Broken"),
            {"appId": "com.x", "name": "com.x", "running": True, "bundleIdentifier": "com.x"},
            {"appId": "com.example.notes", "name": "Notes", "running": True, "signingIdentity": "TEAM",
             "bundleIdentifier": "com.example.notes", "executablePath": "/opt/notes"},
            {"appId": "/opt/tool", "name": "tool", "running": True, "executablePath": "/opt/tool",
             "signingIdentity": "tool.id"},
            {"appId": "com.twice", "name": "twice, later", "running": True, "bundleIdentifier": "com.twice"},
            installed("/Applications/x.app.app", "x")])

    def test_other_bundles_than_the_macs(self):
        bundles = [{"path": "/apps/edit.desktop"}, {"path": "/apps/Old.app", "identifier": "old"}]
        for suffix, names in [(".desktop", ["edit"]), ("", ["edit.desktop", "Old.app"])]:
            with Simulated({"bundleSuffix": suffix, "applicationFolders": ["/apps"], "bundles": bundles,
                            "rules": [{"call": "openUrl", "about": "/apps/Old.app", "nth": 2,
                                       "fails": True}]}) as host:
                self.assertEqual([app["name"] for app in host.result("desktop_apps_list")["apps"]], names)
                for app in ("/apps/edit.desktop", "/apps/Old.app"):
                    self.assertEqual(host.result("desktop_launch_app", appId=app), {"ok": True, "target": {}})
                self.assertEqual(host.error("desktop_launch_app", appId="old")["message"],
                                 "launch failed: old")

    def test_at_most_500(self):
        with Simulated({"bundles": [{"path": f"/Applications/{i:04}.app"} for i in range(600)][::-1]}) as host:
            names = [app["name"] for app in host.result("desktop_apps_list")["apps"]]
            self.assertEqual(names, [f"{i:04}" for i in range(500)])

    def test_launching(self):
        with Simulated({**example("form"), "permissions": {"accessibility": False}}) as host:
            target = lambda app: host.result("desktop_launch_app", appId=app)["target"]["name"]
            self.assertEqual([target("com.example.mail"), target("/Applications/Orders.app"),
                              target("com.example.clock")], ["Mail", "Orders", "Clock"])
            unsupported, failed = "COMPUTER_CONTROL_UNSUPPORTED_OPERATION", "COMPUTER_CONTROL_COMMAND_FAILED"
            only_bundles = "launch_app only accepts .app bundles"
            for app, code, message in [
                    ("/usr/bin/true", unsupported, only_bundles), ("/Applications/A.app/", unsupported,
                                                                   only_bundles),
                    ("/Applications/A.APP", unsupported, only_bundles),
                    ("/Applications/A.desktop", unsupported, only_bundles),
                    ("missing.bundle.id", unsupported, "application not found: missing.bundle.id"),
                    ("", unsupported, "application not found: "),
                    ("Mail.app", unsupported, "application not found: Mail.app"),
                    ("/Applications/Missing.app", failed, "launch failed: /Applications/Missing.app")]:
                self.assertEqual(host.error("desktop_launch_app", appId=app),
                                 {"code": code, "message": message})
            self.assertEqual(host.error("desktop_launch_app", appId=1), {"message": "appId is required"})
            self.assertEqual(host.log()[2:], ["openUrl /Applications/Utilities/Clock.app",
                                              "openUrl /Applications/Missing.app refused"])


if __name__ == "__main__":
    unittest.main()
