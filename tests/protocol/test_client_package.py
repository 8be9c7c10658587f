"""The Python client as a package: a wheel that carries the runtime, the pytest plugin, and README's first lines."""
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest
import venv

from protocol_schema import ROOT
from quil_host import executable
from simulated import example

WITHOUT_REPOSITORY = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}


def run(*command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=120, **options)


def readme_lines():
    with open(os.path.join(ROOT, "README.md"), encoding="utf-8") as file:
        return re.search(r"^```python\n(.*?)^```", file.read(), re.M | re.S)[1]


class PackageTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)
        return self.path(name)

    def test_a_wheel_with_the_runtime_in_an_empty_environment(self):
        built = run(os.path.join(ROOT, "scripts", "package"), self.path("wheels"), os.environ["QUIL_BUILD_DIR"])
        self.assertEqual(built.returncode, 0, built.stdout)
        wheel = self.path("wheels", built.stdout.split()[-1])
        venv.create(self.path("venv"), with_pip=True)
        python = self.path("venv", "bin", "python")
        for what in (wheel, os.path.join(ROOT, "clients", "python"), wheel):  # from the tree, too; without a network
            done = run(python, "-m", "pip", "install", "--no-index", "--no-cache-dir", "--force-reinstall", what,
                       env=WITHOUT_REPOSITORY, cwd=self.folder)
            self.assertEqual(done.returncode, 0, done.stdout)
        done = run(python, "-c", "import quil\nwith quil.Desktop() as desktop:\n"
                   "    print(quil.find_runtime()[0], desktop.permissions()['semantic'])",
                   env={**WITHOUT_REPOSITORY, "PATH": "/nowhere"}, cwd=self.folder)
        runtime, answer = done.stdout.split()
        self.assertTrue(os.path.samefile(os.path.dirname(runtime).partition("/lib/")[0], self.path("venv")))
        self.assertEqual(answer, "True")

    def test_the_lines_of_the_readme_on_a_simulated_desktop(self):
        scenario = example("calculator")
        scenario["applications"][0]["bundleIdentifier"] = "galculator.desktop"
        window = scenario["applications"][0]["windows"][0]
        window["children"][0].update(role="AXTextArea")
        window["children"][1]["children"][2]["title"] = "*"
        scenario["bundles"] = [{"path": "/Applications/galculator.app", "identifier": "galculator.desktop"}]
        shim = self.write("quil", f'#!/bin/sh\nexec {executable("quil-sim")} {self.write("scenario.json", json.dumps(scenario))}\n')
        os.chmod(shim, 0o755)
        done = run(sys.executable, "-c", readme_lines(), env={**os.environ, "PATH": f"{self.folder}:/usr/bin:/bin"})
        self.assertEqual((done.returncode, done.stdout), (0, ""))

    def test_the_pytest_plugin(self):
        test = self.write("test_it.py", "def test_good(desktop):\n    desktop.get_by_role('button', '6').click()\n"
                          "def test_bad(desktop):\n    desktop.get_by_role('button', '8').element(timeout=0.1)\n")
        scenario = self.write("scenario.json", json.dumps(example("calculator")))
        done = run(sys.executable, "-m", "pytest", "-p", "quil.pytest_plugin", "-p", "no:cacheprovider", test,
                   "--quil-runtime", f"{executable('quil-sim')} {scenario}", "--quil-failures", self.path("failures"), cwd=self.folder)
        self.assertIn("1 failed, 1 passed", done.stdout)
        self.assertIn("quil: what was there", done.stdout)
        kept = self.path("failures", "test_it.py_test_bad")
        self.assertEqual(sorted(os.listdir(kept)), ["outline.txt", "picture.png"])
        with open(os.path.join(kept, "outline.txt"), encoding="utf-8") as file:
            self.assertIn('button "6"', file.read())


if __name__ == "__main__":
    unittest.main()
