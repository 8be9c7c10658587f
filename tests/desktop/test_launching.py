"""The catalogue of installed applications, and launching them."""
import os
import re
import shutil
import signal
import tempfile
import time
import unittest

from desktop_entries import FOLDER, WINDOW_APP, EntriesTest
from desktop_tools import Program, output, until, window_app
from quil_host import Host


def children(pid):
    """The child processes of a process, those that ended and were not waited for included."""
    return output("ps", "--no-headers", "-o", "pid", "--ppid", str(pid), check=False).split()


class LaunchingTest(EntriesTest):
    def test_a_packaged_application_from_start_to_end(self):
        path = "/usr/share/applications/galculator.desktop"
        installed = {"appId": "galculator.desktop", "name": "Galculator", "running": False,
                     "bundleIdentifier": "galculator.desktop", "executablePath": path}
        running = installed | {"running": True, "executablePath": "/usr/bin/galculator"}
        listed = lambda: [app for app in self.apps() if app["appId"] == "galculator.desktop"]
        self.assertEqual(listed(), [installed])
        for app in ("galculator.desktop", path):
            self.launch(app)
            until(lambda: listed() == [running], "running")
            window = self.windows()[0]
            pid = window["pid"]
            self.assertEqual(children(self.host.process.pid), [])
            self.assertNotEqual(os.getsid(pid), os.getsid(self.host.process.pid))
            ours = {os.fstat(stream.fileno()).st_ino for stream in
                    (self.host.process.stdin, self.host.process.stdout, self.host.process.stderr)}
            theirs = {os.stat(f"/proc/{pid}/fd/{number}").st_ino
                      for number in os.listdir(f"/proc/{pid}/fd")}
            self.assertEqual(ours & theirs, set())
            # It outlives the host.
            self.host.process.kill()
            self.host.process.wait()
            self.host = self.enterContext(Host())
            self.assertEqual(listed(), [running])
            output("wmctrl", "-i", "-c", hex(window["id"]))
            until(lambda: listed() == [installed], "closed")

    def test_what_a_program_is_started_with(self):
        """Nothing of how the host was launched; a startup id only for those who take it out of their
        environment again."""
        note = os.path.join(FOLDER, "note")
        script = self.script("notes", "#!/bin/sh", f"(pwd; tr '\\0' '\\n' </proc/$$/environ) >{note}.new",
                             f"mv {note}.new {note}")
        ids = []
        with Host(env=os.environ | {"DESKTOP_STARTUP_ID": "host_TIME1", "XDG_ACTIVATION_TOKEN": "1",
                                    "GIO_LAUNCHED_DESKTOP_FILE": "/host.desktop"}) as host:
            for name, keys in (("plain", {}), ("activatable", {"DBusActivatable": "true"}),
                               ("elsewhere", {"Path": "/usr"}),
                               ("silent", {"StartupNotify": "false"}),
                               ("a", {"StartupNotify": "true"}), ("b", {"StartupNotify": "true"})):
                with self.subTest(name):
                    path = self.install(f"{name}.desktop", Name=name, Exec=script, **keys)
                    host.result("desktop_launch_app", appId=path)
                    until(lambda: os.path.exists(note), "its note")
                    with open(note) as file:
                        folder, *lines = file.read().splitlines()
                    os.remove(note)
                    variables = dict(line.split("=", 1) for line in lines if "=" in line)
                    self.assertEqual(folder, keys.get("Path", os.environ["HOME"]))
                    self.assertEqual(variables["GIO_LAUNCHED_DESKTOP_FILE"], path)
                    self.assertNotIn("XDG_ACTIVATION_TOKEN", variables)
                    self.assertEqual("DESKTOP_STARTUP_ID" in variables, len(name) == 1)
                    ids.append(variables.get("DESKTOP_STARTUP_ID"))
        self.assertNotEqual(*ids[-2:])
        now = int(time.monotonic() * 1000)  # as the X server counts, too
        for text in ids[-2:]:
            self.assertLess((now - int(text.rpartition("_TIME")[2])) % 2**32, 60_000)

    def test_what_is_listed(self):
        for name, keys in (
                ("zebra", {"Name": "Apfel", "Name[de]": "äpfel"}), ("b", {"Name": "Birne"}),
                ("c", {"Name": "anker"}), ("nameless", {}),
                ("nodisplay", {"Name": "nodisplay", "NoDisplay": "true"}),
                ("hidden", {"Name": "hidden", "Hidden": "true"}),
                ("elsewhere", {"Name": "elsewhere", "OnlyShowIn": "KDE;"}),
                ("missing", {"Name": "missing", "TryExec": "/nowhere/program"}),
                ("gone", {"Name": "gone", "Exec": "/nowhere/program"}),
                ("folder/inside", {"Name": "inside"}), ("\udcff", {"Name": "of no text"}),
                # One that replaces a packaged entry, and one that takes it away.
                ("galculator", {"Name": "Mine"}), ("debian-uxterm", {"Name": "UXTerm", "Hidden": "true"})):
            self.install(f"{name}.desktop", **{"Exec": "true", **keys})
        self.install("upper.DESKTOP", Name="upper", Exec="true")
        os.mkfifo(os.path.join(FOLDER, "pipe.desktop"))
        names = [app["name"] for app in self.apps()
                 if app["executablePath"].startswith(FOLDER)
                 or app["appId"] in ("galculator.desktop", "debian-uxterm.desktop")]
        self.assertEqual(names, ["anker", "Birne", "Mine", "nameless", "äpfel"])
        # All of them are looked through for the application of a window, too.
        window_app(self, "qt5", "any")
        self.assertEqual(len(self.windows()), 1)

    def test_what_can_be_launched_and_what_not(self):
        marker = os.path.join(FOLDER, "started")
        script = lambda name, first: self.script(name, first, f"touch {marker}")
        plain, touch = script("plain", "#!/bin/sh"), f"touch {marker}"
        foreign = os.path.join(FOLDER, "foreign")
        with open("/bin/true", "rb") as file, open(foreign, "wb") as copy:
            copy.write(re.sub(rb"/lib(64)?/ld-linux", lambda m: m[0].replace(b"lib", b"l!b"),
                              file.read()))
        os.chmod(foreign, 0o755)
        service = {"DBusActivatable": "true"}
        entries = (
            ("an interpreter", {"Exec": plain}, True),
            ("no interpreter", {"Exec": script("a", "#!/nowhere/sh")}, False),
            ("an interpreter without one", {"Exec": script("b", f"#!{FOLDER}/a")}, False),
            ("what env finds", {"Exec": script("c", "#!/usr/bin/env -S A=1 sh -e")}, True),
            ("what env does not find", {"Exec": script("d", "#!/usr/bin/env nosh")}, False),
            ("a program of env", {"Exec": f"env -u A B=2 {plain}"}, True),
            ("no program of env", {"Exec": "env -u A B=2 /nowhere/program"}, False),
            ("no program", {"Exec": "/nowhere/program"}, False),
            ("no program to try", {"Exec": touch, "TryExec": "/nowhere"}, False),
            ("no loader", {"Exec": foreign}, False),
            ("no file that can be run", {"Exec": FOLDER}, False),
            ("neither program nor service", {}, False),
            ("no service of that name", service, False),
            ("a program instead of the service", {"Exec": plain, **service}, True),
            ("nothing that menus show", {"Exec": touch, "NoDisplay": "true"}, True),
        )
        cases = []
        for number, (case, keys, is_there) in enumerate(entries):
            # By its id, which is that of a file in a folder, and by its path.
            name = f"org.example/Case{number}.desktop"
            path = self.install(name, Name=case, **keys)
            cases += [(app, None if is_there else f"launch failed: {app}")
                      for app in (path, name.replace("/", "-"))]
        removed = self.install("removed.desktop", Name="r", Exec=touch, Hidden="true")
        self.install("broken.desktop")
        failing = (removed, f"{FOLDER}/broken.desktop", f"{FOLDER}/missing.desktop", "/opt/Notes.app")
        unknown = ("removed.desktop", "Galculator", "../galculator.desktop",
                   "-" * 200 + ".desktop", "-" * 100_000 + ".desktop")
        cases += [(app, f"launch failed: {app}") for app in failing]
        cases += [(app, f"application not found: {app}") for app in unknown]
        cases.append(("/usr/bin/true", "launch_app only accepts .app bundles"))
        for app, message in cases:
            with self.subTest(app[:80]):
                if message:
                    self.assertEqual(self.host.error("desktop_launch_app", appId=app)["message"],
                                     message)
                    continue
                self.launch(app)
                until(lambda: os.path.exists(marker), "started")
                os.remove(marker)
        until(lambda: children(self.host.process.pid) == [], "no zombies")
        self.assertFalse(os.path.exists(marker))

    def test_an_application_that_is_a_service(self):
        """It has no program of its own; the bus starts it, and it is told what for."""
        services = os.path.join(os.environ["XDG_DATA_HOME"], "dbus-1", "services")
        os.makedirs(services, exist_ok=True)
        with open(os.path.join(services, "org.example.Service.service"), "w") as file:
            file.write("[D-BUS Service]\nName=org.example.Service\n"
                       f"Exec={WINDOW_APP} gtk4 Service 300 200 id=org.example.Service service\n")
        self.addCleanup(os.remove, file.name)
        output("dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/",
               "org.freedesktop.DBus.ReloadConfig")
        self.install("org.example.Service.desktop", Name="a service", DBusActivatable="true")
        self.launch("org.example.Service.desktop")
        window = until(self.windows, "its window")[0]
        self.assertEqual((window["name"], window["bundleIdentifier"]),
                         ("Service", "org.example.Service.desktop"))
        self.end_everything()

    def test_what_was_launched_comes_to_the_front(self):
        """Also when its program leaves its window behind; not after the user has gone elsewhere."""
        gate = os.path.join(FOLDER, "gate")
        os.mkfifo(gate)
        program = self.script("behind", "#!/bin/sh", f"read x < {gate}",
                              f"exec {WINDOW_APP} gtk3 Behind 300 200 behind")
        entry = self.install("behind.desktop", Name="Behind", Exec=program)
        one, two = window_app(self, "qt5", "one"), window_app(self, "qt5", "two")
        title = lambda: output("xdotool", "getactivewindow", "getwindowname").strip()
        listed = lambda: [window for window in self.windows() if window["name"] == "Behind"]
        for elsewhere, expected in ((one, "Behind"), (two, "two")):
            output("xdotool", "windowactivate", "--sync", str(one.window))
            self.launch(entry)
            output("xdotool", "windowactivate", "--sync", str(elsewhere.window))
            self.target()
            with open(gate, "w") as file:
                file.write("go\n")
            window = until(listed, "its window")[0]
            self.assertEqual(window["bundleIdentifier"], "behind.desktop")
            until(lambda: self.target() and title() == expected, expected)
            for _ in range(5):
                self.target()
            self.assertEqual(title(), expected)
            os.kill(window["pid"], signal.SIGKILL)
            until(lambda: not listed(), "ended")

    def test_a_refused_launch_does_not_happen_later(self):
        """The library tells the session bus of every launch, and waits for a bus that is stopped."""
        folder = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, folder)
        address = f"unix:path={folder}/bus"
        bus = Program(self, "dbus-daemon", "--session", "--nofork", f"--address={address}",
                      has_window=False)
        until(lambda: os.path.exists(f"{folder}/bus"), "the bus")
        files = [os.path.join(FOLDER, str(number)) for number in range(3)]
        with Host(env=os.environ | {"DBUS_SESSION_BUS_ADDRESS": address}) as host:
            launch = lambda file: host.request("desktop_launch_app", appId=self.install(
                "touch.desktop", Name="n", Exec=f"touch {file}"))
            os.kill(bus.pid, signal.SIGSTOP)
            self.assertIn("launch failed", launch(files[0])["error"]["message"])
            os.kill(bus.pid, signal.SIGCONT)
            for file in files[1:]:
                self.assertTrue(launch(file)["result"]["ok"])
                until(lambda: os.path.exists(file), "started")
        self.assertFalse(os.path.exists(files[0]))


if __name__ == "__main__":
    unittest.main()
