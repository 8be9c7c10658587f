"""Which desktop entry a running application comes from, and its name."""
import base64
import os
import shutil
import struct
import unittest

from desktop_entries import FOLDER, WINDOW_APP, EntriesTest
from desktop_tools import PYTHON, SUPPORT, Program, change, output, until, window_app


class ApplicationsTest(EntriesTest):
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
                self.assertEqual([(app["name"], app["running"], app["executablePath"])
                                  for app in self.apps() if app["appId"] == identifier],
                                 [(name, True, os.readlink(f"/proc/{program.pid}/exe"))])
                shown = lambda: output("xdotool", "getwindowname", str(program.window)).rstrip("\n")
                target = lambda: self.host.result("desktop_target")["target"]
                until(lambda: target().get("windowTitle") == shown(), "the title")
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
                path = self.install(name, Name="Any", **keys)
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
        by_class = {"Exec": "sh", "StartupWMClass": "window_app.py"}
        for name, keys, hint, wins in (
                ("hidden", {**by_class, "NoDisplay": "true"}, None, True),
                ("shown", {**by_class, "Exec": "sh -x"}, None, True),
                ("plain", {**by_class, "Name[de]": "Größe"}, None, True),
                ("gone", {**by_class, "Exec": "/nowhere/program"}, None, False),
                ("gtk", {"Exec": "sh"}, "_GTK_APPLICATION_ID", True),
                ("kde", {"Exec": "sh"}, "_KDE_NET_WM_DESKTOP_FILE", True)):
            with self.subTest(name):
                self.install(f"{name}.desktop", Name=name, **keys)
                if hint:
                    change(program.window, "-f", hint, "8u", "-set", hint, name)
                expected = name if wins else "plain"
                entry = self.entry(program.window)
                self.assertEqual((entry["bundleIdentifier"], entry["owner"]),
                                 (f"{expected}.desktop",
                                  "Größe" if expected == "plain" else expected))

    def test_a_process_with_windows_of_two_entries_is_its_active_one(self):
        Program(self, PYTHON, "-c", """
import gi
gi.require_version("Gtk", "3.0")
from gi.repository import Gtk
owner = None
for name in ("writer", "table", "dialog", "stray"):
    window = Gtk.Window(title=name, default_width=200 + 10 * len(name))
    window.set_wmclass(name, name)
    if name == "dialog":
        window.set_transient_for(owner)
    window.show_all()
    owner = window
Gtk.main()""")
        for name in ("writer", "table"):
            self.install(name + ".desktop", Exec="sh", StartupWMClass=name, Name=name.title())
        until(lambda: len(self.windows()) == 4, "its windows")
        known = lambda: [self.target(), *self.windows(),
                         *(app for app in self.apps() if app["running"])]
        for name, entry in (("writer", "writer"), ("table", "table"), ("stray", "table"),
                            ("writer", "writer"), ("dialog", "table")):
            with self.subTest(name):
                output("xdotool", "search", "--name", f"^{name}$", "windowactivate", "--sync")
                self.assertEqual({record["bundleIdentifier"] for record in known()},
                                 {entry + ".desktop"})
                self.assertEqual({window["owner"] for window in self.windows()}, {entry.title()})
        # The one with the focus need not be the topmost.
        output("wmctrl", "-r", "writer", "-b", "add,above")
        output("xdotool", "search", "--name", "^table$", "windowactivate", "--sync")
        until(lambda: self.windows()[0]["name"] == "writer", "kept above")
        self.assertEqual({record["bundleIdentifier"] for record in known()}, {"table.desktop"})
        url = self.host.result("desktop_screenshot")["screenshotDataURL"]
        width, height = struct.unpack(">II", base64.b64decode(url.partition(",")[2])[16:24])
        window = next(entry for entry in self.windows() if entry["name"] == "table")
        self.assertEqual((width / 2, height / 2),
                         (window["bounds"]["Width"], window["bounds"]["Height"]))

    def test_what_was_launched_keeps_its_identity(self):
        app = f"{WINDOW_APP} qt5 L 300 200"
        calculator, mine = "galculator.desktop", {"StartupWMClass": "mine"}
        self.install("other.desktop", Name="Other", Exec="sh", StartupWMClass="window_app.py")
        waits = self.script("waits", "#!/bin/sh", "galculator", "true")
        outer = self.script("outer", f"#!{PYTHON}", "import os", f"os.system('{waits}; true')")
        elsewhere = os.path.join(os.path.dirname(FOLDER), "launched.desktop")
        self.addCleanup(lambda: os.path.exists(elsewhere) and os.remove(elsewhere))
        cases = (
            ("the program itself", app, {}, "launched.desktop"),
            ("one that becomes it", self.script("execs", "#!/bin/sh", "exec galculator"), {},
             "launched.desktop"),
            ("one that waits", waits, {}, "launched.desktop"),
            ("two that wait", outer, {}, "launched.desktop"),
            ("one that ends", self.script("ends", "#!/bin/sh", "galculator &"), {},
             "launched.desktop"),
            ("an entry that is not installed", "galculator", {}, elsewhere),
            ("a program with windows", "xterm -T x -e galculator", {}, calculator),
            ("a class of another entry", app, mine, "other.desktop"),
            ("a class of no other entry", "galculator", mine, calculator),
        )
        for case, command, keys, identifier in cases:
            with self.subTest(case):
                place = identifier if identifier == elsewhere else "launched.desktop"
                path = self.install(place, Name="Any", Exec=command, **keys)
                # What it goes by can be launched, too.
                for launched in sorted({path, identifier} - {calculator, "other.desktop"}):
                    self.launch(launched)
                    title = "L" if command == app else "galculator"
                    window = until(lambda: next((w for w in self.windows() if w["name"] == title),
                                                None), "its window")
                    self.assertEqual(window["bundleIdentifier"], identifier)
                    until(lambda: self.target().get("bundleIdentifier") == identifier, "in front")
                    self.assertIn(identifier,
                                  [record["appId"] for record in self.apps() if record["running"]])
                    self.end_everything()
                os.remove(path)


if __name__ == "__main__":
    unittest.main()
