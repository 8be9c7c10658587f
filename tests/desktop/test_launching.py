"""The catalogue of installed applications, and launching them."""
import os
import re
import shutil
import signal
import tempfile
import time
import unittest

from desktop_entries import FOLDER, EntriesTest
from desktop_tools import PYTHON, SUPPORT, Program, output, until, window_app
from quil_host import Failure, Host


def children(pid):
    """The child processes of a process, those that ended and were not waited for included."""
    return output("ps", "--no-headers", "-o", "pid", "--ppid", str(pid), check=False).split()


class LaunchingTest(EntriesTest):
    def apps(self, *identifiers):
        """The records of those applications, as far as the catalogue has them."""
        return [app for app in self.host.result("desktop_apps_list")["apps"]
                if app["appId"] in identifiers]

    def window_of_calculator(self):
        """Waits for it: a program runs before its window shows."""
        return until(lambda: next((w for w in self.host.result("desktop_windows_list")["windows"]
                                   if w.get("bundleIdentifier") == "galculator.desktop"), None),
                     "its window")

    def test_a_packaged_application_from_start_to_end(self):
        path = "/usr/share/applications/galculator.desktop"
        installed = {"appId": "galculator.desktop", "name": "Galculator", "running": False,
                     "bundleIdentifier": "galculator.desktop", "executablePath": path}
        running = installed | {"running": True, "executablePath": "/usr/bin/galculator"}
        self.assertEqual(self.apps("galculator.desktop"), [installed])
        for app in ("galculator.desktop", path):
            self.assertTrue(self.host.result("desktop_launch_app", appId=app)["ok"])
            until(lambda: self.apps("galculator.desktop") == [running], "running")
            window = self.window_of_calculator()
            pid = window["pid"]
            self.assertEqual(children(self.host.process.pid), [])
            self.assertNotEqual(os.getsid(pid), os.getsid(self.host.process.pid))
            ours = {os.fstat(stream.fileno()).st_ino for stream in
                    (self.host.process.stdin, self.host.process.stdout, self.host.process.stderr)}
            theirs = {os.stat(f"/proc/{pid}/fd/{number}").st_ino
                      for number in os.listdir(f"/proc/{pid}/fd")}
            self.assertEqual(ours & theirs, set())
            output("wmctrl", "-i", "-c", hex(window["id"]))
            until(lambda: self.apps("galculator.desktop") == [installed], "closed")
            self.assertEqual(children(self.host.process.pid), [])

    def test_an_application_outlives_the_host(self):
        self.host.result("desktop_launch_app", appId="galculator.desktop")
        pid = self.window_of_calculator()["pid"]
        self.addCleanup(os.kill, pid, signal.SIGTERM)
        self.host.process.kill()
        self.host.process.wait(10)
        with Host() as self.host:
            self.assertTrue(self.apps("galculator.desktop")[0]["running"])

    def test_nothing_of_how_the_host_was_launched_sticks(self):
        with Host(env=os.environ | {"DESKTOP_STARTUP_ID": "host_TIME1", "XDG_ACTIVATION_TOKEN": "1",
                                    "GIO_LAUNCHED_DESKTOP_FILE": "/host.desktop"}) as host:
            for name, lines in (("plain", ""), ("activatable", "DBusActivatable=true\n"),
                                ("elsewhere", "Path=/usr\n")):
                path = self.install(name + ".desktop", "Name=n\nExec=xterm -e sleep 99\n" + lines)
                host.result("desktop_launch_app", appId=path)
                pid = until(lambda: host.result("desktop_windows_list")["windows"], name)[0]["pid"]
                with open(f"/proc/{pid}/environ") as file:
                    variables = dict(line.split("=", 1) for line in file.read().split("\0")[:-1])
                self.assertEqual(os.readlink(f"/proc/{pid}/cwd"),
                                 "/usr" if name == "elsewhere" else os.environ["HOME"])
                self.assertEqual(variables["GIO_LAUNCHED_DESKTOP_FILE"], path)
                self.assertFalse({"DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN"} & set(variables))
                os.kill(pid, signal.SIGTERM)
                until(lambda: not host.result("desktop_windows_list")["windows"], "ended")

    def test_what_is_listed(self):
        true = "Exec=true\n"
        self.install("zebra.desktop", "Name=Apfel\nName[de]=äpfel\n" + true)
        self.install("b.desktop", "Name=Birne\n" + true)
        self.install("c.desktop", "Name=anker\n" + true)
        for name, line in (("nodisplay", "NoDisplay=true"), ("hidden", "Hidden=true"),
                           ("elsewhere", "OnlyShowIn=KDE;"), ("missing", "TryExec=/nowhere/program")):
            self.install(name + ".desktop", f"Name={name}\n{line}\n" + true)
        self.install("gone.desktop", "Name=gone\nExec=/nowhere/program\n")
        self.install("folder/inside.desktop", "Name=inside\n" + true)
        self.install("upper.DESKTOP", "Name=upper\n" + true)
        self.install("nameless.desktop", true)
        self.install("\udcff.desktop", "Name=of no text\n" + true)
        os.mkfifo(os.path.join(FOLDER, "pipe.desktop"))
        # One that replaces a packaged entry, and one that takes it away.
        self.install("galculator.desktop", "Name=Mine\n" + true)
        self.install("xterm.desktop", "Hidden=true\nName=XTerm\n" + true)
        names = [app["name"] for app in self.host.result("desktop_apps_list")["apps"]
                 if app["executablePath"].startswith(FOLDER) or app["appId"] == "xterm.desktop"]
        self.assertEqual(names, ["anker", "Birne", "Mine", "nameless", "äpfel"])
        # All of them are looked through for the application of a window, too.
        window_app(self, "qt5", "any")
        self.assertEqual(len(self.host.result("desktop_windows_list")["windows"]), 1)

    def script(self, name, first_line):
        """An executable that begins with this line."""
        path = os.path.join(FOLDER, name)
        with open(path, "w") as file:
            file.write(first_line + "\ntouch %s\n" % os.path.join(FOLDER, "started"))
        os.chmod(path, 0o755)
        return path

    def test_what_its_program_needs_is_there(self):
        marker = os.path.join(FOLDER, "started")
        plain = self.script("plain", "#!/bin/sh")
        foreign = os.path.join(FOLDER, "foreign")
        with open("/bin/true", "rb") as file:
            binary = file.read()
        with open(foreign, "wb") as file:
            file.write(re.sub(rb"/lib64/ld-linux", rb"/lib99/ld-linux",
                              re.sub(rb"/lib/ld-linux", rb"/l99/ld-linux", binary)))
        os.chmod(foreign, 0o755)
        service = "DBusActivatable=true\n"
        cases = (
            ("an interpreter", f"Exec={plain}\n", True),
            ("no interpreter", f"Exec={self.script('a', '#!/nowhere/sh')}\n", False),
            ("an interpreter without one", f"Exec={self.script('b', '#!' + FOLDER + '/a')}\n", False),
            ("what env finds", f"Exec={self.script('c', '#!/usr/bin/env -S A=1 sh -e')}\n", True),
            ("what env does not find", f"Exec={self.script('d', '#!/usr/bin/env nosh')}\n", False),
            ("a program of env", f"Exec=env -u A B=2 {plain}\n", True),
            ("no program of env", "Exec=env -u A B=2 /nowhere/program\n", False),
            ("no loader", f"Exec={foreign}\n", False),
            ("no file that can be run", f"Exec={FOLDER}\n", False),
            ("neither program nor service", "", False),
            ("no service of that name", service, False),
            ("a program instead of the service", f"Exec={plain}\n{service}", True),
        )
        for number, (case, lines, is_there) in enumerate(cases):
            with self.subTest(case):
                name = f"org.example.Case{number}.desktop"
                self.install(name, f"Name={case}\n{lines}")
                answer = self.host.request("desktop_launch_app", appId=name)
                if is_there:
                    self.assertTrue(answer.get("result", {}).get("ok"), answer)
                    until(lambda: os.path.exists(marker), "started")
                    os.remove(marker)
                else:
                    self.assertEqual(answer.get("error", {}).get("message"),
                                     f"launch failed: {name}")
        self.assertFalse(os.path.exists(marker))

    def test_an_application_that_is_a_service(self):
        """It has no program of its own; the bus starts it, and it is told what for."""
        services = os.path.join(os.environ["XDG_DATA_HOME"], "dbus-1", "services")
        os.makedirs(services, exist_ok=True)
        title = "a service"
        with open(os.path.join(services, "org.example.Service.service"), "w") as file:
            file.write("[D-BUS Service]\nName=org.example.Service\n"
                       f"Exec={PYTHON} -B {SUPPORT}/window_app.py gtk4 Service 300 200 "
                       "id=org.example.Service service\n")
        self.addCleanup(os.remove, file.name)
        output("dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/",
               "org.freedesktop.DBus.ReloadConfig")
        self.install("org.example.Service.desktop", f"Name={title}\nDBusActivatable=true\n")
        self.host.result("desktop_launch_app", appId="org.example.Service.desktop")
        window = until(lambda: self.host.result("desktop_windows_list")["windows"], "its window")[0]
        self.assertEqual((window["name"], window["bundleIdentifier"]),
                         ("Service", "org.example.Service.desktop"))
        os.kill(window["pid"], signal.SIGKILL)

    def test_the_startup_id_is_of_now(self):
        """It goes to those who take it out of their environment again."""
        note = os.path.join(FOLDER, "id")
        script = os.path.join(FOLDER, "notes")
        with open(script, "w") as file:
            file.write(f"#!/bin/sh\necho \"$DESKTOP_STARTUP_ID\" > {note}.new\nmv {note}.new {note}\n")
        os.chmod(script, 0o755)
        ids = []
        for name, line in (("a", "StartupNotify=true\n"), ("b", "StartupNotify=true\n"),
                           ("c", "StartupNotify=false\n"), ("d", "")):
            self.host.result("desktop_launch_app", appId=self.install(
                name + ".desktop", f"Name=n\nExec={script}\n{line}"))
            until(lambda: os.path.exists(note), "noted")
            with open(note) as file:
                ids.append(file.read().strip())
            os.remove(note)
        self.assertEqual(ids[2:], ["", ""])
        self.assertNotEqual(ids[0], ids[1])
        now = int(time.monotonic() * 1000)  # as the X server counts, too
        for text in ids[:2]:
            self.assertLess((now - int(text.rpartition("_TIME")[2])) % 2**32, 60_000)

    def test_what_was_launched_comes_to_the_front(self):
        """Also when its program leaves its window behind; not after the user has gone elsewhere."""
        gate = os.path.join(FOLDER, "gate")
        os.mkfifo(gate)
        app = f"{PYTHON} -B {SUPPORT}/window_app.py gtk3 Behind 300 200 behind"
        entry = self.install("behind.desktop", f"Name=Behind\nExec=sh -c 'read x < {gate}; {app}'\n")
        one, two = window_app(self, "qt5", "one"), window_app(self, "qt5", "two")
        title = lambda: output("xdotool", "getactivewindow", "getwindowname").strip()
        listed = lambda: [w for w in self.host.result("desktop_windows_list")["windows"]
                          if w["name"] == "Behind"]
        for elsewhere, expected in ((one, "Behind"), (two, "two")):
            output("xdotool", "windowactivate", "--sync", str(one.window))
            self.host.result("desktop_launch_app", appId=entry)
            output("xdotool", "windowactivate", "--sync", str(elsewhere.window))
            self.host.result("desktop_target")
            with open(gate, "w") as file:
                file.write("go\n")
            window = until(listed, "its window")[0]
            self.assertEqual(window["bundleIdentifier"], "behind.desktop")
            until(lambda: self.host.result("desktop_target") and title() == expected, expected)
            for _ in range(5):
                self.host.result("desktop_target")
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
                "touch.desktop", f"Name=n\nExec=touch {file}\n"))
            os.kill(bus.pid, signal.SIGSTOP)
            self.assertIn("launch failed", launch(files[0])["error"]["message"])
            os.kill(bus.pid, signal.SIGCONT)
            for file in files[1:]:
                self.assertTrue(launch(file)["result"]["ok"])
                until(lambda: os.path.exists(file), "started")
        self.assertFalse(os.path.exists(files[0]))

    def test_what_cannot_be_launched(self):
        marker = os.path.join(FOLDER, "started")
        gone = self.install("gone.desktop", "Name=gone\nExec=/nowhere/program\n")
        self.install("try.desktop", f"Name=try\nTryExec=/nowhere\nExec=touch {marker}\n")
        removed = self.install("removed.desktop", f"Hidden=true\nName=r\nExec=touch {marker}\n")
        broken = self.install("broken.desktop", "nothing")
        missing = os.path.join(FOLDER, "missing.desktop")
        for app, message in (
                ("gone.desktop", "launch failed: gone.desktop"), (gone, f"launch failed: {gone}"),
                ("try.desktop", "launch failed: try.desktop"),
                ("removed.desktop", "application not found: removed.desktop"),
                (removed, f"launch failed: {removed}"), (broken, f"launch failed: {broken}"),
                (missing, f"launch failed: {missing}"),
                ("/opt/Notes.app", "launch failed: /opt/Notes.app"),
                ("Galculator", "application not found: Galculator"),
                *((f"{dashes}.desktop", f"application not found: {dashes}.desktop")
                  for dashes in ("-" * 200, "-" * 100_000)),
                ("../galculator.desktop", "application not found: ../galculator.desktop"),
                ("/usr/bin/true", "launch_app only accepts .app bundles")):
            with self.subTest(app):
                with self.assertRaises(Failure) as raised:
                    self.host.result("desktop_launch_app", appId=app)
                self.assertEqual(raised.exception.message, message)
        self.assertEqual(children(self.host.process.pid), [])
        self.assertFalse(os.path.exists(marker))
        self.host.result("desktop_launch_app", appId=self.install(
            "folder/works.desktop", f"Name=w\nNoDisplay=true\nExec=touch {marker}\n"))
        until(lambda: os.path.exists(marker), "started")
        os.remove(marker)
        self.host.result("desktop_launch_app", appId="folder-works.desktop")
        until(lambda: os.path.exists(marker), "started by its id")
        until(lambda: children(self.host.process.pid) == [], "no zombies")


if __name__ == "__main__":
    unittest.main()
