"""The Python client on real applications: README's first lines, and the tasks of examples/."""
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

from protocol_schema import ROOT
from quil_host import executable

import quil

RUNS = int(os.environ.get("QUIL_TEST_TASK_RUNS", "1"))


class ClientTest(unittest.TestCase):
    def test_the_lines_of_the_readme(self):
        with open(os.path.join(ROOT, "README.md"), encoding="utf-8") as file:
            lines = re.search(r"^```python\n(.*?)^```", file.read(), re.M | re.S)[1]
        self.run_on_desktop("-c", lines)

    def test_tasks(self):
        for _ in range(RUNS):
            for task in ("fill_form", "find_word"):
                with self.subTest(task):
                    self.run_on_desktop("-B", os.path.join(ROOT, "examples", "tasks", task + ".py"))

    def test_an_application_that_is_stopped_and_one_that_quits(self):
        with quil.Desktop(executable("quil")) as desktop:
            pid = desktop.launch("galculator.desktop").pid
            key = desktop.locator(name="6", exact=True)
            key.click()
            os.kill(pid, signal.SIGSTOP)
            begin = time.monotonic()
            with self.assertRaises((quil.NotInTime, quil.CommandFailed)):
                key.click(timeout=1)
            self.assertLess(time.monotonic() - begin, 20)
            os.kill(pid, signal.SIGCONT)
            key.click(timeout=20)
            desktop.get_by_role("menuitem", "Quit").click(timeout=20)
            with self.assertRaises(quil.ElementNotFound):
                key.wait_for("gone", timeout=20)
                key.click(timeout=0.2)

    @unittest.skipUnless("QUIL_TEST_TASK_RUNS" in os.environ, "takes 40 s: QUIL_TEST_TASK_RUNS is not set")
    @unittest.skipUnless(shutil.which("localc"), "libreoffice-calc is not installed")
    def test_the_spreadsheet_task(self):
        for _ in range(RUNS):
            self.run_on_desktop("-B", os.path.join(ROOT, "examples", "tasks", "sum_column.py"))

    def run_on_desktop(self, *arguments):
        with tempfile.TemporaryDirectory() as home:
            environment = {**os.environ, "HOME": home, "PATH": f"{os.path.dirname(executable('quil'))}:{os.environ['PATH']}"}
            done = subprocess.run([sys.executable, *arguments], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                                  timeout=200, env=environment)
        self.assertEqual(done.returncode, 0, done.stdout)


if __name__ == "__main__":
    unittest.main()
