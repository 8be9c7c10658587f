"""The runtime on the machine's own desktop, whatever there is of one: what any host asks first, in
answers whose form, which the schema has, does not depend on the system or on what it permits."""
import platform
import unittest

from quil_host import Host


class Machine(unittest.TestCase):
    def setUp(self):
        self.host = Host("quil")
        self.addCleanup(self.host.__exit__)

    def test_first_questions(self):
        permissions = self.host.result("ping")
        self.assertEqual(permissions["permissionsGranted"],
                         permissions["accessibility"] and permissions["screenRecording"])
        self.assertTrue(permissions["semantic"])
        self.host.result("desktop_target")
        for window in self.host.result("desktop_windows_list")["windows"]:
            self.assertGreater(window["id"], 0)
            self.assertEqual(set(window["bounds"]), {"X", "Y", "Width", "Height"})
        self.assertEqual(self.host.error("desktop_no_such_thing"),
                         {"message": "unknown method: desktop_no_such_thing"})
        lines, status, _ = self.host.close()  # a framework may log what it likes
        self.assertEqual((lines, status), ([], 0))

    def test_applications(self):
        apps = self.host.result("desktop_apps_list")["apps"]
        by_id = {app["appId"]: app for app in apps}
        self.assertEqual(len(by_id), len(apps))
        self.assertNotIn("", by_id)
        self.assertLessEqual(len(apps), 500)
        if platform.system() == "Darwin":
            editor = by_id["com.apple.TextEdit"]
            self.assertEqual(editor["name"], "TextEdit")
            if not editor["running"]:
                self.assertEqual(editor["executablePath"], "/System/Applications/TextEdit.app")
            if "com.apple.finder" in by_id:  # not in the folders: only when it runs
                self.assertEqual(by_id["com.apple.finder"]["signingIdentity"], "com.apple.finder")


if __name__ == "__main__":
    unittest.main()
