"""A running input_app.py and conversations with it."""
import json
import os
import subprocess

from desktop_tools import PYTHON, SUPPORT, Program, output, until


class InputProgram(Program):
    """A window with the focus, whose program is asked by `ask`."""

    def __init__(self, test, toolkit, *options):
        self.process = subprocess.Popen(
            [PYTHON, "-B", os.path.join(SUPPORT, "input_app.py"), toolkit, *options],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.pid = self.process.pid
        test.addCleanup(self.end)
        self.window = self.find_window()
        output("xdotool", "windowfocus", "--sync", str(self.window))
        until(lambda: output("xdotool", "getwindowfocus", "getwindowpid").strip() == str(self.pid),
              "the focus")
        self.ask("text")

    def ask(self, what):
        """The answer, given once the events that have arrived are processed."""
        self.process.stdin.write(what + "\n")
        self.process.stdin.flush()
        return json.loads(self.process.stdout.readline())

    def end(self):
        super().end()
        self.process.stdin.close()
        self.process.stdout.close()
