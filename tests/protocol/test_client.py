"""The Python client: the vectors that all clients share, and what is its own."""
import gc
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import textwrap
import threading
import time
import unittest
import unittest.mock

import protocol_schema
from quil_host import executable
from simulated import example

import quil
from quil.expect import expect
from quil.matching import Criteria, Filter, Nth, Selector, one_of
from quil.observation import Observation

VECTORS = os.path.join(protocol_schema.ROOT, "clients", "vectors")
SILENT_RUNTIME = ["sleep", "60"]


def vectors(name):
    with open(os.path.join(VECTORS, name + ".json"), encoding="utf-8") as file:
        return json.load(file)


def tree(name):
    return vectors(os.path.join("trees", name))


def plain(value):
    """A value of a vector: regular expressions are objects there."""
    if isinstance(value, dict) and "regex" in value:
        return re.compile(value["regex"], re.IGNORECASE if value.get("flags") == "i" else 0)
    return value


def selector(steps):
    made = Selector()
    for step in steps:
        step = {name: plain(value) for name, value in step.items()}
        made = made.then(Filter(step["has_text"]) if "has_text" in step else Nth(step["nth"]) if "nth" in step
                         else Criteria(**step))
    return made


def pause(condition):
    deadline = time.monotonic() + 20
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError("not within 20 s")
        time.sleep(0.01)


def is_running(pid):
    try:
        with open(f"/proc/{pid}/stat", encoding="utf-8") as file:
            return file.read().rpartition(")")[2].split()[0] != "Z"
    except OSError:
        return False


class Simulated(quil.Desktop):
    def __init__(self, scenario, **options):
        self.folder = tempfile.TemporaryDirectory()
        self.log_path = os.path.join(self.folder.name, "log")
        path = os.path.join(self.folder.name, "scenario.json")
        with open(path, "w", encoding="utf-8") as file:
            json.dump({**scenario, "log": self.log_path}, file)
        super().__init__([executable("quil-sim"), path], **options)

    def close(self):
        super().close()
        self.folder.cleanup()

    def log(self):
        with open(self.log_path, encoding="utf-8") as file:
            return [json.loads(line)["line"] for line in file]


class Vectors(unittest.TestCase):
    def test_locators(self):
        for case in vectors("locators"):
            with self.subTest(case["locator"]):
                found = selector(case["locator"]).select(Observation(tree(case["tree"])).elements)
                self.assertEqual([element.token for element in found], case["tokens"])
                self.assertEqual([element.token for element in one_of(found)], case.get("one", case["tokens"]))

    def test_outlines(self):
        for case in vectors("outlines"):
            with self.subTest(case["tree"], **case["options"]):
                lines = Observation(tree(case["tree"])).outline(**case["options"]).split("\n")
                self.assertEqual(lines, case["lines"])

    def test_the_widget_factory_in_5_kB_with_all_that_can_be_operated(self):
        observation = Observation(tree("widget-factory"))
        outline = observation.outline()
        self.assertLessEqual(len(outline.encode()), 5000)
        shown = {int(line.split()[0]) for line in outline.splitlines()}
        self.assertEqual([one for one in observation.elements if one.is_interactive and one.ref not in shown], [])

    def test_diffs(self):
        for case in vectors("diffs"):
            with self.subTest(case["about"]):
                before, after = tree(case["before"]), case["after"]
                known = {node["token"]: node for node in before["nodes"]}
                after["nodes"] = [known[node] if isinstance(node, str) else node for node in after["nodes"]]
                diff = Observation(after).diff(Observation(before))
                self.assertEqual(diff.split("\n") if diff else [], case["lines"])
                self.assertEqual(Observation(after).diff(Observation(after)), "")

    def test_conversations(self):
        for case in vectors("conversations"):
            scenario = case["scenario"]
            with self.subTest(case["about"]), Simulated(
                    example(scenario) if isinstance(scenario, str) else scenario, timeout=case.get("timeout", 5)) as desktop:
                for step in case["steps"]:
                    with self.subTest(step):
                        self.take(desktop, step)
                # What only accompanies what was asked for is left out, to keep the vectors short.
                log = [line for line in desktop.log() if not re.match("leftMouseUp|mouseMoved|keyUp|sleep", line)]
                self.assertEqual([line.split(" flags")[0] for line in log], case["log"])

    def take(self, desktop, step):
        def call():
            on = desktop
            if "on" in step:
                on = quil.Locator(desktop, selector(step["on"]))
            if "expect" in step:
                on = expect(on)
            given = step.get("with", [])
            method = getattr(on, step.get("expect") or step["do"])
            return method(**given) if isinstance(given, dict) else method(*map(plain, given))
        if "fails" in step:
            with self.assertRaises(getattr(quil, step["fails"]["error"])) as caught:
                call()
            for part in step["fails"]["contains"]:
                self.assertIn(part, str(caught.exception))
            return
        result = call()
        if "gives" in step:
            if "member" in step:
                result = ([getattr(one, step["member"]) for one in result] if isinstance(result, list)
                          else getattr(result, step["member"]))
            self.assertEqual(list(result) if isinstance(result, tuple) else result, step["gives"])


class Methods(unittest.TestCase):
    def test_one_for_each_of_the_protocol_with_its_parameters(self):
        for name, method in {**protocol_schema.methods("methods"), **protocol_schema.methods("extensions")}.items():
            function = getattr(quil.Runtime, re.sub("([A-Z])", lambda found: "_" + found[1].lower(), name))
            parameters = {one.rstrip("_") for one in function.__code__.co_varnames[1:function.__code__.co_argcount]}
            shape = method["properties"]["params"]
            shape = protocol_schema.definition(shape["$ref"]) if "$ref" in shape else shape
            self.assertEqual(parameters, set(shape.get("properties", {})), name)

    def test_roles_are_those_of_the_table(self):
        with open(os.path.join(protocol_schema.ROOT, "protocol", "roles.json"), encoding="utf-8") as file:
            table = json.load(file)
        for name in {*table["names"], *table["shown"].values()}:
            self.assertIn(name, table["names"], "what is shown can be asked for")
        for native, name in table["shown"].items():
            self.assertIn(native, [entry.rpartition(" > ")[2] for entry in table["names"][name]])

    def test_glimpse_picture_and_apps(self):
        with Simulated(example("calculator")) as desktop:
            text, picture = desktop.glimpse()
            self.assertIn("Calculator", text.text)
            self.assertEqual(picture.picture.size, (400, 560))
            self.assertEqual(desktop.screenshot()[:8], b"\x89PNG\r\n\x1a\n")
            self.assertEqual([app.app_id for app in desktop.apps()], ["com.example.calculator"])
            self.assertIn("calculator", repr(desktop.get_by_role("window").element()).lower())

    def test_record_and_replay(self):
        user = {"script": [{"at": 0.1, "do": {"user": [{"click": [720, 450]}, {"type": "Hi"}]}}]}
        with Simulated(user) as desktop, desktop.record() as recording:
            actions = list(zip(range(2), recording))
            self.assertEqual(len(actions + recording.stop()), 3)
            path = os.path.join(desktop.folder.name, "recording")
            recording.save(path)
            with Simulated({}) as other:
                self.assertEqual(other.replay(path, float("inf")), 3)


class Faults(unittest.TestCase):
    def test_no_runtime(self):
        with self.assertRaisesRegex(quil.RuntimeNotFound, "'/no/quil' is not there"):
            quil.Desktop("/no/quil")
        path = os.environ["PATH"]
        self.addCleanup(os.environ.__setitem__, "PATH", path)
        os.environ["PATH"] = "/nowhere"
        with self.assertRaisesRegex(quil.RuntimeNotFound, r"bin/quil is not there, and no `quil` is on PATH \(/nowhere\)"):
            quil.Desktop()

    def test_a_runtime_that_ends_or_does_not_answer(self):
        broken = self.enterContext(tempfile.NamedTemporaryFile("w", suffix=".json"))
        broken.write("{]")
        broken.flush()
        kill = lambda desktop: os.kill(desktop.runtime.pid, signal.SIGKILL)
        nothing = lambda desktop: None
        write = lambda desktop: desktop.clipboard.write("x" * 1_000_000)
        for runtime, seconds, soon, act, reason in (
                ([executable("quil-sim"), broken.name], 30, nothing, quil.Desktop.target,
                 "ended with status 2; it said: quil-sim: .*syntax error"),
                (SILENT_RUNTIME, 30, kill, quil.Desktop.permissions, "ping: .* was ended by SIGKILL"),
                (SILENT_RUNTIME, 30, quil.Desktop.close, quil.Desktop.target, "it was closed"),
                (SILENT_RUNTIME, 0.3, nothing, quil.Desktop.target, "desktop_target: .* gave no answer within 0.3 s"),
                (SILENT_RUNTIME, 0.3, nothing, write, "took no input")):
            with self.subTest(reason), quil.Desktop(runtime, answer_seconds=seconds) as desktop:
                begin = time.monotonic()
                threading.Timer(0.2, soon, [desktop]).start()
                for _ in range(2):  # and says so again
                    with self.assertRaisesRegex(quil.RuntimeGone, reason):
                        act(desktop)
                pause(lambda: not is_running(desktop.runtime.pid))
                self.assertFalse(desktop.runtime.is_running)
                self.assertLess(time.monotonic() - begin, 20)

    def test_several_threads(self):
        with Simulated(example("calculator")) as desktop:
            names = []
            threads = [threading.Thread(target=lambda: names.append(desktop.target().name)) for _ in range(20)]
            for thread in threads:
                thread.start()
            for thread in threads:
                thread.join()
            self.assertEqual(names, ["Calculator"] * 20)

    def test_no_runtime_outlives_its_desktop(self):
        desktop = Simulated({})
        pid = desktop.runtime.pid
        desktop.get_by_role("button").count()
        gc.disable()
        self.addCleanup(gc.enable)
        del desktop
        self.assertFalse(is_running(pid))

    def test_no_runtime_outlives_its_host(self):
        """A host that is killed, that ends without closing, whose fork lives on, and that Ctrl-C interrupts."""
        host = textwrap.dedent("""
            import os, sys, time, quil
            desktop = quil.Desktop([sys.argv[1], sys.argv[2]])
            desktop.permissions()
            if sys.argv[3] == "fork" and os.fork() == 0:
                sys.stdout.close()
                os.close(1)
                time.sleep(60)
            print(desktop.runtime.pid, os.getpid(), flush=True)
            try:
                desktop.runtime.next_input_event(0 if sys.argv[3] == "end" else 1_500)
            except KeyboardInterrupt:
                print(desktop.target(), flush=True)
            time.sleep(0 if sys.argv[3] in ("end", "interrupt") else 60)
        """)
        scenario = self.enterContext(tempfile.NamedTemporaryFile("w"))
        scenario.write('{"clock": {"real": true}}')
        scenario.flush()
        for how, number in [("end", 0), ("kill", signal.SIGKILL), ("terminate", signal.SIGTERM), ("fork", signal.SIGKILL),
                            ("interrupt", signal.SIGINT)]:
            with self.subTest(how), subprocess.Popen(
                    [sys.executable, "-c", host, executable("quil-sim"), scenario.name, how], stdout=subprocess.PIPE,
                    text=True, start_new_session=True) as process:
                runtime, pid = map(int, process.stdout.readline().split())
                if how == "interrupt":
                    time.sleep(0.5)  # not before it waits
                # Ctrl-C reaches all of the host's own session.
                (os.killpg if how == "interrupt" else os.kill)(pid, number)
                if how == "interrupt":
                    self.assertIn("Target(", process.stdout.readline(), "the next request gets its own answer")
                process.wait(25)
                pause(lambda: not is_running(runtime))
                if how == "fork":
                    os.killpg(process.pid, signal.SIGKILL)

    def test_what_the_runtime_lacks(self):
        with Simulated(example("calculator")) as desktop:
            desktop.runtime.request = unittest.mock.Mock(
                side_effect=quil.UnknownMethod("desktop_clipboard_read", "unknown method: desktop_clipboard_read"))
            with self.assertRaisesRegex(quil.UnsupportedOperation, "cannot do the clipboard: it lacks desktop_clipboard_read"):
                desktop.clipboard.read()


class Types(unittest.TestCase):
    def test_mypy(self):
        try:
            import mypy.api
        except ImportError:
            self.skipTest("mypy is not installed")
        with tempfile.TemporaryDirectory() as cache:
            output, errors, status = mypy.api.run(["--strict", "--python-version", "3.9", "--cache-dir", cache,
                                                   os.path.dirname(quil.__file__)])
        self.assertEqual((status, errors), (0, ""), output)


if __name__ == "__main__":
    unittest.main()
