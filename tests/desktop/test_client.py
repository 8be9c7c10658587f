"""The clients on real applications: README's first lines, and the tasks of examples/."""
import os
import shutil
import tempfile
import unittest

from client_programs import LANGUAGES, command, readme_lines, run
from desktop_tools import output
from protocol_schema import ROOT
from quil_host import executable

import quil

RUNS = int(os.environ.get("QUIL_TEST_TASK_RUNS", "1"))


class ClientTest(unittest.TestCase):
    def test_the_lines_of_the_readme(self):
        for language in LANGUAGES:
            with self.subTest(language):
                self.run_on_desktop(language, readme_lines(language))
                with quil.Desktop(executable("quil")) as desktop:  # the next one is to begin with a calculator of its own
                    desktop.get_by_role("menuitem", "Quit").click(timeout=20)
                    desktop.get_by_role("menuitem", "Quit").wait_for("gone", timeout=20)

    def test_tasks(self):
        for _ in range(RUNS):
            for task in ("fill_form.py", "fill_form.ts", "find_word.py"):
                with self.subTest(task):
                    self.run_task(task)

    @unittest.skipUnless("QUIL_TEST_TASK_RUNS" in os.environ, "takes 40 s: QUIL_TEST_TASK_RUNS is not set")
    @unittest.skipUnless(shutil.which("localc"), "libreoffice-calc is not installed")
    def test_the_spreadsheet_task(self):
        for _ in range(RUNS):
            self.run_task("sum_column.py")

    def run_task(self, name):
        if name.startswith("fill_form") and not output("zenity", "--version").startswith("3."):
            self.skipTest("the items of GTK 4's drop-down lists have no names: zenity is newer than 3")
        language = {".py": "python", ".ts": "ts"}[os.path.splitext(name)[1]]
        if language in LANGUAGES:
            with open(os.path.join(ROOT, "examples", "tasks", name), encoding="utf-8") as file:
                self.run_on_desktop(language, file.read())

    def run_on_desktop(self, language, text):
        with tempfile.TemporaryDirectory() as home:
            environment = {**os.environ, "HOME": home, "PATH": f"{os.path.dirname(executable('quil'))}:{os.environ['PATH']}"}
            done = run(*command(language, text, home), env=environment)
        self.assertEqual(done.returncode, 0, done.stdout)


if __name__ == "__main__":
    unittest.main()
