"""examples/replay, which records what the user does and plays it."""
import json
import os
import shlex
import subprocess
import sys
import tempfile
import unittest

from quil_host import executable

REPLAY = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "examples", "replay",
                      "replay.py")
USER = [{"click": [720, 450]}, {"type": "Hé"}, {"key": {"code": 36, "characters": "\r"}},
          {"scroll": {"at": [0, 0], "lines": -3}}, {"scroll": {"at": [0, 0], "lines": 0}},
          {"type": "x"}, {"key": {"code": 8, "characters": "c", "flags": ["command", "shift"]}}]


class ReplayTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.file = self.path("recording")

    def path(self, name):
        return os.path.join(self.folder, name)

    def replay(self, command, scenario, *options):
        """Runs the example on a scenario; its exit status and what it says."""
        with open(self.path("scenario"), "w", encoding="utf-8") as file:
            json.dump({**scenario, "log": self.path("log")}, file)
        runtime = shlex.join([executable("quil-sim"), self.path("scenario")])
        done = subprocess.run([sys.executable, REPLAY, command, runtime, self.file, *options],
                              capture_output=True, text=True, timeout=60)
        return done.returncode, done.stderr.splitlines()[-1]

    def posted(self):
        """What was posted, but for releases and moves."""
        with open(self.path("log"), encoding="utf-8") as file:
            lines = [json.loads(line)["line"] for line in file]
        return [line for line in lines if line.startswith(("keyDown", "leftMouseDown", "scroll"))]

    def test_plays_what_it_recorded(self):
        user = {"script": [{"at": 0.2, "do": {"user": USER}}]}
        self.assertEqual(self.replay("record", user, "--seconds", "0.5"),
                         (0, f"8 records in {self.file}"))
        self.assertEqual(self.replay("play", {}, "--pauses", "0"), (0, "7 steps done"))
        self.assertEqual(self.posted(), [
            "leftMouseDown 720,450", 'keyDown 0 text "Hé"', "keyDown 36 flags 0x0",
            "scrollWheel 0,0 wheels -3,0", 'keyDown 0 text "x"', "keyDown 8 flags 0x120000"])
        self.assertEqual(self.replay("play", {}), (0, "7 steps done"))
        self.assertEqual(len(self.posted()), 7, "letter by letter")

    def test_says_what_is_wrong(self):
        self.assertEqual(
            self.replay("record", {"permissions": {"inputMonitoring": False}}),
            (1, "replay: startInputRecording: input monitoring permission required"))
        self.assertFalse(os.path.exists(self.file))
        status, message = self.replay("play", {})
        self.assertEqual((status, "No such file" in message), (2, True))
        for line in ('{"action": "dance", "params": {}, "at": 1}', "click", "[]",
                     '{"action": "type", "params": {"text": 5}, "at": 1}',
                     '{"action": "type", "params": {"text": "\udcff"}, "at": 1}',
                     '{"action": "keypress", "params": {"combo": "a"}, "at": 1e999}',
                     '{"action": "click", "params": {}, "at": 1, "target": {"point": {"x": NaN}}}'):
            with open(self.file, "w", encoding="utf-8", errors="surrogateescape") as file:
                file.write("\n" + line + "\n")
            status, message = self.replay("play", {})
            self.assertEqual(status, 2)
            self.assertIn(f"replay: {self.file}, line 2: not a recorded action", message)
        with open(self.file, "w", encoding="utf-8") as file:
            file.write('{"action": "type", "params": {"text": "x"}, "at": 1}')
        self.assertEqual(self.replay("play", {"permissions": {"accessibility": False}}),
                         (1, "replay: desktop_type: accessibility permission required "
                             f"({self.file}, line 1)"))


if __name__ == "__main__":
    unittest.main()
