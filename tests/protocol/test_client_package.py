"""The clients as packages: a wheel and a tarball that carry the runtime, and the pytest plugin."""
import json
import os
import shlex
import sys
import tempfile
import unittest
import venv

from client_programs import HAS_NODE, WITH_NODE, command, run
from protocol_schema import ROOT
from quil_host import executable
from simulated import example

WITHOUT_REPOSITORY = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}


class PackageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        built = run(os.path.join(ROOT, "scripts", "package"), folder.name, os.environ["QUIL_BUILD_DIR"])
        assert built.returncode == 0, built.stdout
        names = os.listdir(folder.name)
        # The server and the command have packages of their own, without the runtime.
        own = [name for name in names if name.startswith(("quil-mcp-", "quil-cli-"))]
        assert len(own) in (0, 2), names
        cls.packages = {os.path.splitext(name)[1]: os.path.join(folder.name, name) for name in names if name not in own}

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
        wheel = self.packages[".whl"]
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

    @unittest.skipUnless(HAS_NODE, "the packages of clients/ are not installed")
    def test_a_tarball_with_the_runtime_in_an_empty_folder(self):
        tarball = self.packages[".tgz"]
        self.write("package.json", "{}")
        for what in (os.path.join(ROOT, "clients", "typescript"), tarball):  # from the tree, too; without a network
            done = run(WITH_NODE, "npm", "install", "--offline", "--silent", what, cwd=self.folder)
            self.assertEqual(done.returncode, 0, done.stdout)
        done = run(*command("ts", """
            import { Desktop, findRuntime } from "quil";
            await using desktop = new Desktop();
            console.log(findRuntime()[0], (await desktop.permissions()).semantic);
        """, self.folder), env=os.environ)
        runtime, answer = done.stdout.split()
        self.assertTrue(os.path.samefile(runtime, self.path("node_modules", "quil", "bin", "quil")))
        self.assertEqual(answer, "true")

    def test_the_pytest_plugin(self):
        test = self.write("test_it.py", "def test_good(desktop):\n    desktop.get_by_role('button', '6').click()\n"
                          "def test_bad(desktop):\n    desktop.get_by_role('button', '8').element(timeout=0.1)\n")
        scenario = self.write("scenario.json", json.dumps(example("calculator")))
        done = run(sys.executable, "-m", "pytest", "-p", "quil.pytest_plugin", "-p", "no:cacheprovider", test,
                   "--quil-runtime", shlex.join([executable("quil-sim"), scenario]), "--quil-failures", self.path("failures"), cwd=self.folder)
        self.assertIn("1 failed, 1 passed", done.stdout)
        self.assertIn("quil: what was there", done.stdout)
        kept = self.path("failures", "test_it.py_test_bad")
        self.assertEqual(sorted(os.listdir(kept)), ["outline.txt", "picture.png"])
        with open(os.path.join(kept, "outline.txt"), encoding="utf-8") as file:
            self.assertIn('button "6"', file.read())


if __name__ == "__main__":
    unittest.main()
