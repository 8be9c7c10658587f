"""Conversations with quil-sim on a scenario that is given as a dictionary.

    with Simulated({"applications": [...]}) as host:
        host.result("desktop_click", point={"x": 0.5, "y": 0.5})
        print(host.log())
"""
import base64
import json
import os
import struct
import subprocess
import tempfile

from quil_host import ANSWER_SECONDS, Host, executable

EXAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "examples",
                        "scenarios")


def example(name):
    """The scenario of examples/scenarios/NAME.json."""
    with open(os.path.join(EXAMPLES, name + ".json"), encoding="utf-8") as file:
        return json.load(file)


class Simulated(Host):
    def __init__(self, scenario):
        self.folder = tempfile.TemporaryDirectory()
        self.log_path = os.path.join(self.folder.name, "log")
        path = os.path.join(self.folder.name, "scenario.json")
        with open(path, "w", encoding="utf-8") as file:
            json.dump({**scenario, "log": self.log_path}, file)
        super().__init__("quil-sim", path)

    def __exit__(self, *details):
        super().__exit__(*details)
        self.folder.cleanup()

    def entries(self):
        """What was done to the desktop so far, as the log has it."""
        if not os.path.exists(self.log_path):  # still starting
            return []
        with open(self.log_path, encoding="utf-8") as file:
            return [json.loads(line) for line in file]

    def log(self, *calls):
        """The described entries; with names of calls, of those only."""
        return [entry["line"] for entry in self.entries() if not calls or entry["call"] in calls]

    def token(self, name):
        """The token of the element with that name, from a new observation."""
        nodes = self.result("desktop_ax_get_state")["nodes"]
        return next(node["token"] for node in nodes if node.get("name") == name)


def run(scenario, data):
    """Starts quil-sim with the bytes of a scenario and an input; its answers, exit status and
    error output."""
    with tempfile.NamedTemporaryFile(suffix=".json") as file:
        file.write(scenario)
        file.flush()
        done = subprocess.run([executable("quil-sim"), file.name], input=data, capture_output=True,
                              timeout=ANSWER_SECONDS)
    return [json.loads(line) for line in done.stdout.splitlines()], done.returncode, done.stderr


def picture_size(data_url):
    """Width and height of the PNG; None for an empty text."""
    if not data_url:
        return None
    png = base64.b64decode(data_url.removeprefix("data:image/png;base64,"), validate=True)
    assert png.startswith(b"\x89PNG\r\n\x1a\n") and png.endswith(b"IEND\xaeB`\x82")
    return struct.unpack(">II", png[16:24])


def window(*children, **members):
    return {"title": "Main", "bounds": [0, 25, 800, 600], "children": list(children), **members}


def application(*children, **members):
    """An application with one window that holds these children."""
    return {"pid": 100, "name": "Notes", "bundleIdentifier": "com.example.notes",
            "windows": [window(*children)], **members}


def desktop(*children, **members):
    """A scenario with one application."""
    return {"applications": [application(*children)], **members}
