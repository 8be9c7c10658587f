"""The runtime on the machine's own desktop, whatever there is of one: what any host asks first, in
answers whose form, which the schema has, does not depend on the system or on what it permits."""
import platform
import unittest

from quil_host import Host


class Machine(unittest.TestCase):
    def test_first_questions(self):
        with Host("quil") as host:
            permissions = host.result("ping")
            self.assertEqual(permissions["permissionsGranted"],
                             permissions["accessibility"] and permissions["screenRecording"])
            self.assertTrue(permissions["semantic"])
            host.result("desktop_target")
            for window in host.result("desktop_windows_list")["windows"]:
                self.assertGreater(window["id"], 0)
                self.assertEqual(set(window["bounds"]), {"X", "Y", "Width", "Height"})
            apps = {app["appId"]: app for app in host.result("desktop_apps_list")["apps"]}
            self.assertNotIn("", apps)
            if platform.system() == "Darwin":
                self.assertEqual(apps["com.apple.TextEdit"]["name"], "TextEdit")
                if "com.apple.finder" in apps:  # not in the folders: only when it runs
                    self.assertEqual(apps["com.apple.finder"]["signingIdentity"], "com.apple.finder")
            lines, status, _ = host.close()  # a framework may log what it likes
            self.assertEqual((lines, status), ([], 0))


if __name__ == "__main__":
    unittest.main()
