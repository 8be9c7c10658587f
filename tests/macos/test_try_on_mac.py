"""The driver of scripts/try-on-mac, on the substitutes, as far as it goes: the simulated programs do
not end by cmd+q."""
import json
import os
import subprocess
import sys
import tempfile
import unittest

from mac_tools import FAKE
from simulated import application, example

DRIVER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "try_on_mac.py")


def scenario(**members):
    calculator = example("calculator")["applications"][0]
    editor = application(
        {"id": "area", "role": "AXTextArea", "title": "text", "bounds": [0, 30, 800, 500]},
        id="editor", pid=600, name="TextEdit", bundleIdentifier="com.apple.TextEdit")
    bundles = [{"path": f"/System/Applications/{app['name']}.app", "name": app["name"],
                "identifier": app["bundleIdentifier"], "whenLaunched": [{"applications": [app]},
                                                                        {"frontmost": app["id"]}]}
               for app in (calculator, editor)]
    return {"bundles": bundles, **members}


class TryOnMac(unittest.TestCase):
    def report(self, **members):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "scenario.json")
            with open(path, "w", encoding="utf-8") as file:
                json.dump(scenario(**members), file)
            done = subprocess.run([sys.executable, "-B", DRIVER, FAKE, path], cwd=folder,
                                  capture_output=True, text=True, timeout=120)
            self.assertIn(done.returncode, (1, 2), done.stderr)
            with open(os.path.join(folder, "mac-report.txt"), encoding="utf-8") as file:
                return done.returncode, file.read()

    def test_every_step_but_the_ends(self):
        status, report = self.report()
        failed = [line.split("  ")[-1].split(":")[0] for line in report.splitlines()
                  if line.startswith("FAILED")]
        self.assertEqual(failed, ["Calculator has ended", "a recording of our own click and key",
                                  "TextEdit has ended"], report)
        self.assertEqual(status, 1)

    def test_permissions_are_asked_for_first(self):
        status, report = self.report(permissions={"screenRecording": False})
        self.assertEqual(status, 2)
        self.assertIn("missing: Screen & System Audio Recording", report)
        self.assertNotIn("launch", report)


if __name__ == "__main__":
    unittest.main()
