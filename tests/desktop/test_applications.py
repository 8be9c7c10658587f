"""Which desktop entry a running application comes from, and its name."""
import os
import shutil
import signal
import unittest

from desktop_entries import FOLDER, EntriesTest
from desktop_tools import PYTHON, SUPPORT, Program, change, output, until, window_app


class ApplicationsTest(EntriesTest):
    def install(self, name, **keys):
        return super().install(name, "".join(f"{key}={value}\n" for key, value in
                                             {"Name": "Any", **keys}.items()))

    def entry(self, window):
        return next(e for e in self.host.result("desktop_windows_list")["windows"]
                    if e["id"] == window)

    def identifier(self, program):
        return self.entry(program.window).get("bundleIdentifier")

    def test_packaged_applications(self):
        for command, identifier, name in (("galculator", "galculator.desktop", "Galculator"),
                                          ("mousepad", "org.xfce.mousepad.desktop", "Mousepad"),
                                          ("featherpad", "featherpad.desktop", "FeatherPad"),
                                          ("xterm", "debian-xterm.desktop", "XTerm"),
                                          ("uxterm", "debian-uxterm.desktop", "UXTerm")):
            with self.subTest(command):
                program = Program(self, command)
                entry = self.entry(program.window)
                self.assertEqual((entry.get("bundleIdentifier"), entry["owner"]),
                                 (identifier, name))
                running = [app for app in self.host.result("desktop_apps_list")["apps"]
                           if app["appId"] == identifier]
                self.assertEqual([(app["name"], app["running"], app["executablePath"])
                                  for app in running],
                                 [(name, True, os.readlink(f"/proc/{program.pid}/exe"))])
                program.end()

    def test_every_hint(self):
        script = os.path.join(FOLDER, "The-Script.py")
        twin = os.path.join(FOLDER, "elsewhere", "The-Script.py")
        os.mkdir(os.path.dirname(twin))
        for path in (script, twin):
            shutil.copy(os.path.join(SUPPORT, "window_app.py"), path)
        plain = lambda: window_app(self, "qt5", "plain")
        terminal = lambda *options: lambda: Program(self, "xterm", *options)
        named = lambda name: lambda: window_app(self, "gtk3", "named", 300, 200, f"id={name}")
        runs = lambda path: lambda: Program(self, PYTHON, "-B", "-W", "ignore", path, "qt5", "T",
                                            "300", "200")
        by_script = {"Exec": f"{PYTHON} {script} qt5 %F"}
        cases = (
            ("its script", "org.example.ByProgram.desktop", by_script, runs(script), True),
            ("another script of that name", "org.example.ByProgram.desktop", by_script, runs(twin),
             False),
            ("its executable", "any.desktop", {"Exec": "/usr/bin/xterm"},
             terminal("-name", "s", "-class", "S"), True),
            ("another program of that name", "any.desktop",
             {"Exec": shutil.copy("/usr/bin/true", os.path.join(FOLDER, "xterm"))},
             terminal("-name", "s", "-class", "S"), False),
            ("its class, folded", "org.example.ByClass.desktop",
             {"Exec": "sh", "StartupWMClass": "Window_App.py"}, plain, True),
            ("its class as written before its instance, folded", "special.desktop",
             {"Exec": "sh", "StartupWMClass": "Special"},
             terminal("-class", "Special"), True),
            ("its class, which is of another program", "galculator.desktop", {"Exec": "galculator"},
             terminal("-name", "s", "-class", "Galculator"), False),
            ("its class as the id", "Special.desktop", {"Exec": "sh"},
             terminal("-name", "s", "-class", "Special"), True),
            ("its class as the last part of an id", "org.example.Special.desktop", {"Exec": "sh"},
             terminal("-name", "s", "-class", "Special"), False),
            ("a script's class as the id", "xlogo.desktop", {"Exec": "sh"}, named("xlogo"), False),
            ("a script's unique name as the id", "org.example.Logo.desktop", {"Exec": "sh"},
             named("org.example.Logo"), True),
            ("its application id", "org.example.ById.desktop", {"Exec": "sh"},
             lambda: window_app(self, "gtk4", "G", 300, 200, "id=org.example.ById"), True),
            ("an id with a folder", "vendor/tool.desktop",
             {"Exec": "sh", "StartupWMClass": "window_app.py"}, plain, True),
        )
        for case, name, keys, start, is_meant in cases:
            with self.subTest(case):
                path = self.install(name, **keys)
                program = start()
                identifier = name.replace("/", "-")
                if is_meant:
                    self.assertEqual(self.identifier(program), identifier)
                    os.remove(path)
                self.assertNotEqual(self.identifier(program), identifier)
                if not is_meant:
                    os.remove(path)
                program.end()

    def test_the_surer_hint_wins(self):
        program = window_app(self, "qt5", "many hints")
        self.assertNotIn("bundleIdentifier", self.entry(program.window))
        self.assertEqual(self.entry(program.window)["owner"], "window_app.py")
        expect = lambda name: self.assertEqual(self.identifier(program), name)
        self.install("hidden.desktop", Exec="sh", StartupWMClass="window_app.py", NoDisplay="true")
        expect("hidden.desktop")
        self.install("shown.desktop", Exec="sh -x", StartupWMClass="window_app.py")
        expect("shown.desktop")
        self.install("plain.desktop", Exec="sh", StartupWMClass="window_app.py",
                     **{"Name[de]": "Größe"})
        expect("plain.desktop")
        self.assertEqual(self.entry(program.window)["owner"], "Größe")
        self.install("gone.desktop", Exec="/nowhere/program", StartupWMClass="window_app.py")
        expect("plain.desktop")
        self.install("gtk.desktop", Exec="sh")
        change(program.window, "-f", "_GTK_APPLICATION_ID", "8u", "-set", "_GTK_APPLICATION_ID",
               "gtk")
        expect("gtk.desktop")
        self.install("kde.desktop", Exec="sh")
        change(program.window, "-f", "_KDE_NET_WM_DESKTOP_FILE", "8u", "-set",
               "_KDE_NET_WM_DESKTOP_FILE", "kde")
        expect("kde.desktop")

    def test_a_process_with_windows_of_two_entries_is_its_active_one(self):
        Program(self, PYTHON, "-c", """
import gi
gi.require_version("Gtk", "3.0")
from gi.repository import Gtk
owner = None
for name in ("writer", "table", "dialog", "stray"):
    window = Gtk.Window(title=name)
    window.set_wmclass(name, name)
    if name == "dialog":
        window.set_transient_for(owner)
    window.show_all()
    owner = window
Gtk.main()""")
        for name in ("writer", "table"):
            self.install(name + ".desktop", Exec="sh", StartupWMClass=name, Name=name.title())
        listed = lambda: self.host.result("desktop_windows_list")["windows"]
        until(lambda: len(listed()) == 4, "its windows")
        known = lambda: [self.host.result("desktop_target")["target"], *listed(),
                         *(app for app in self.host.result("desktop_apps_list")["apps"]
                           if app["running"])]
        for name, entry in (("writer", "writer"), ("table", "table"), ("stray", "table"),
                            ("writer", "writer"), ("dialog", "table")):
            with self.subTest(name):
                output("xdotool", "search", "--name", f"^{name}$", "windowactivate", "--sync")
                self.assertEqual({record["bundleIdentifier"] for record in known()},
                                 {entry + ".desktop"})
                self.assertEqual({window["owner"] for window in listed()}, {entry.title()})
        # The one with the focus need not be the topmost.
        output("wmctrl", "-r", "writer", "-b", "add,above")
        output("xdotool", "search", "--name", "^table$", "windowactivate", "--sync")
        until(lambda: listed()[0]["name"] == "writer", "kept above")
        self.assertEqual({record["bundleIdentifier"] for record in known()}, {"table.desktop"})

    def test_what_was_launched_keeps_its_identity(self):
        def wrapper(name, text):
            path = os.path.join(FOLDER, name)
            with open(path, "w") as file:
                file.write(text)
            os.chmod(path, 0o755)
            return path

        app = f"{PYTHON} {SUPPORT}/window_app.py qt5 L 300 200"
        calculator = "galculator.desktop"
        self.install("other.desktop", Exec="sh", StartupWMClass="window_app.py")
        cases = (
            ("the program itself", app, {}, "launched.desktop"),
            ("one that becomes it", wrapper("execs", "#!/bin/sh\nexec galculator\n"), {},
             "launched.desktop"),
            ("one that waits", wrapper("waits", "#!/bin/sh\ngalculator\ntrue\n"), {},
             "launched.desktop"),
            ("two that wait", wrapper("outer", f"#!{PYTHON}\nimport os\n"
                                      f"os.system('{FOLDER}/waits; true')\n"), {},
             "launched.desktop"),
            ("one that ends", wrapper("ends", "#!/bin/sh\ngalculator &\n"), {},
             "launched.desktop"),
            ("a program with windows", "xterm -T x -e galculator", {}, calculator),
            ("a class of another entry", app, {"StartupWMClass": "mine"}, "other.desktop"),
            ("a class of no other entry", "galculator", {"StartupWMClass": "mine"}, calculator),
        )
        for case, command, keys, identifier in cases:
            with self.subTest(case):
                path = self.install("launched.desktop", Exec=command, **keys)
                self.host.result("desktop_launch_app", appId="launched.desktop")
                title = "L" if command == app else "galculator"
                window = int(output("xdotool", "search", "--sync", "--onlyvisible", "--name",
                                    f"^{title}$").split()[0])
                self.assertEqual(self.entry(window)["bundleIdentifier"], identifier)
                until(lambda: self.host.result("desktop_target")["target"].get("bundleIdentifier")
                      == identifier, "in front")
                self.assertIn(identifier, [
                    record["appId"] for record in self.host.result("desktop_apps_list")["apps"]
                    if record["running"]])
                for record in self.host.result("desktop_windows_list")["windows"]:
                    os.kill(record["pid"], signal.SIGKILL)
                until(lambda: not self.host.result("desktop_windows_list")["windows"], "ended")
                os.remove(path)

    def test_what_runs_can_be_launched(self):
        """Whatever file an application was launched from."""
        places = {"by its id": FOLDER, "by its path": os.path.join(FOLDER, os.pardir)}
        for case, folder in places.items():
            with self.subTest(case):
                path = os.path.normpath(self.install(os.path.join(folder, "mine.desktop"),
                                                     Exec="galculator"))
                self.addCleanup(lambda file=path: os.path.exists(file) and os.remove(file))
                for _ in range(2):
                    self.host.result("desktop_launch_app", appId=path)
                    window = until(lambda: self.host.result("desktop_windows_list")["windows"],
                                   "its window")[0]
                    path = window["bundleIdentifier"]
                    os.kill(window["pid"], signal.SIGKILL)
                    until(lambda: not self.host.result("desktop_windows_list")["windows"], "ended")
                self.assertEqual(path.startswith("/"), case == "by its path")
                if not path.startswith("/"):
                    os.remove(os.path.join(FOLDER, path))


if __name__ == "__main__":
    unittest.main()
