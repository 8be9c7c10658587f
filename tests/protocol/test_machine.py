"""The runtime on the machine's own desktop, whatever there is of one: what any host asks first, in
answers whose form does not depend on the system or on what it permits."""
import platform
import unittest

from quil_host import Host

TEXTS = ("bundleIdentifier", "name", "windowTitle", "executablePath", "signingIdentity")


class Machine(unittest.TestCase):
    def setUp(self):
        self.host = Host("quil")
        self.addCleanup(self.host.__exit__)

    def test_first_questions(self):
        permissions = self.host.result("ping")
        self.assertEqual(set(permissions), {"permissionsGranted", "accessibility",
                                            "screenRecording", "inputMonitoring", "semantic"})
        for value in permissions.values():
            self.assertIsInstance(value, bool)
        self.assertEqual(permissions["permissionsGranted"],
                         permissions["accessibility"] and permissions["screenRecording"])
        self.assertTrue(permissions["semantic"])

        target = self.host.result("desktop_target")["target"]
        self.assertLessEqual(set(target), {*TEXTS, "pid"})
        for key, value in target.items():
            self.assertIsInstance(value, int if key == "pid" else str, key)

        for window in self.host.result("desktop_windows_list")["windows"]:
            self.assertLessEqual({"id", "name", "owner", "pid"}, set(window))
            self.assertGreater(window["id"], 0)
            self.assertIsInstance(window["name"], str)
            for side in ("X", "Y", "Width", "Height"):
                self.assertIsInstance(window["bounds"][side], (int, float))

        self.assertEqual(self.host.error("desktop_no_such_thing"),
                         {"message": "unknown method: desktop_no_such_thing"})
        lines, status, _ = self.host.close()  # a framework may log what it likes
        self.assertEqual((lines, status), ([], 0))

    def test_applications(self):
        apps = self.host.result("desktop_apps_list")["apps"]
        self.assertEqual(len({app["appId"] for app in apps}), len(apps))
        for app in apps:
            self.assertTrue(app["appId"] and isinstance(app["name"], str), app)
            self.assertIsInstance(app["running"], bool)
        self.assertLessEqual(len(apps), 500)
        if platform.system() == "Darwin":
            by_id = {app["appId"]: app for app in apps}
            editor = by_id["com.apple.TextEdit"]
            self.assertEqual(editor["name"], "TextEdit")
            if not editor["running"]:
                self.assertEqual(editor["executablePath"], "/System/Applications/TextEdit.app")
            if "com.apple.finder" in by_id:  # not in the folders: only when it runs
                self.assertEqual(by_id["com.apple.finder"]["signingIdentity"], "com.apple.finder")


if __name__ == "__main__":
    unittest.main()
