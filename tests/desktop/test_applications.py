"""Which desktop entry a running application comes from, and its name."""
import os
import shutil
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
                                          ("xterm", "debian-xterm.desktop", "XTerm")):
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
        shutil.copy(os.path.join(SUPPORT, "window_app.py"), script)
        plain = lambda: window_app(self, "qt5", "plain")
        cases = {
            "its program": ("org.example.ByProgram.desktop", {"Exec": f"{PYTHON} {script} qt5 %F"},
                            lambda: Program(self, PYTHON, script, "qt5", "T", "300", "200")),
            "its class": ("org.example.ByClass.desktop",
                          {"Exec": "sh", "StartupWMClass": "Window_App.py"}, plain),
            "its class as the id": ("window_app.py.desktop", {"Exec": "sh"}, plain),
            "its class as the last part": (
                "org.example.Special.desktop", {"Exec": "sh"},
                lambda: Program(self, "xterm", "-name", "s", "-class", "Special")),
            "its application id": ("org.example.ById.desktop", {"Exec": "sh"}, lambda: window_app(
                self, "gtk4", "G", 300, 200, "id=org.example.ById")),
            "an id with a folder": ("vendor/tool.desktop",
                                    {"Exec": "sh", "StartupWMClass": "window_app.py"}, plain),
        }
        for case, (name, keys, start) in cases.items():
            with self.subTest(case):
                path = self.install(name, **keys)
                program = start()
                self.assertEqual(self.identifier(program), name.replace("/", "-"))
                os.remove(path)
                self.assertNotEqual(self.identifier(program), name.replace("/", "-"), "removed")
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

    def test_a_process_with_windows_of_two_entries_is_its_foremost(self):
        Program(self, PYTHON, "-c", """
import gi
gi.require_version("Gtk", "3.0")
from gi.repository import Gtk
for name in ("writer", "table"):
    window = Gtk.Window(title=name)
    window.set_wmclass(name, name)
    window.show_all()
Gtk.main()""")
        for name in ("writer", "table"):
            self.install(name + ".desktop", Exec="sh", StartupWMClass=name, Name=name.title())
        until(lambda: len(self.host.result("desktop_windows_list")["windows"]) == 2, "two windows")
        for name in ("writer", "table", "writer"):
            output("xdotool", "search", "--name", f"^{name}$", "windowactivate", "--sync")
            windows = until(lambda: (w := self.host.result("desktop_windows_list")["windows"]) and
                            w[0]["name"] == name and w, "in front")
            known = [self.host.result("desktop_target")["target"]] + windows
            running = [app for app in self.host.result("desktop_apps_list")["apps"]
                       if app["running"]]
            self.assertEqual({record["bundleIdentifier"] for record in known + running},
                             {name + ".desktop"})
            self.assertEqual({window["owner"] for window in windows}, {name.title()})

    def test_what_was_launched_keeps_its_identity(self):
        self.install("launched.desktop", Exec=f"{PYTHON} {SUPPORT}/window_app.py qt5 L 300 200")
        self.install("other.desktop", Exec="sh", StartupWMClass="window_app.py")
        self.host.result("desktop_launch_app", appId="launched.desktop")
        window = int(output("xdotool", "search", "--sync", "--onlyvisible", "--name", "^L$"))
        self.addCleanup(output, "xdotool", "windowkill", str(window))
        self.assertEqual(self.entry(window)["bundleIdentifier"], "launched.desktop")
        until(lambda: self.host.result("desktop_target")["target"].get("bundleIdentifier") ==
              "launched.desktop", "in front")


if __name__ == "__main__":
    unittest.main()
