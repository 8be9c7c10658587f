"""The window list and the frontmost application, beside what xwininfo, xprop and wmctrl say."""
import os
import unittest

from desktop_tools import (DesktopTest, Program, change, geometry, output, stacking, until,
                           window_app)


def bounds(entry):
    return tuple(entry["bounds"][key] for key in ("X", "Y", "Width", "Height"))


class WindowsTest(DesktopTest):
    def names(self):
        return [entry["name"] for entry in self.windows()]

    def bounds(self, program):
        return bounds(self.entry(program.window))

    def test_every_toolkit(self):
        programs = [window_app(self, toolkit, f"{toolkit} – ünïcode 窓", 300 + 10 * i, 200 + i)
                    for i, toolkit in enumerate(("gtk3", "gtk4", "qt5", "qt6"))]
        programs.append(Program(self, "xterm", "-T", "terminal"))
        windows = until(lambda: (w := self.windows()) and [e["id"] for e in w] == stacking() and w,
                        "the stacking order of the window manager")
        self.assertEqual({e["id"] for e in windows}, {p.window for p in programs})
        for program in programs:
            entry = next(e for e in windows if e["id"] == program.window)
            with self.subTest(entry["name"]):
                self.assertEqual(entry["pid"], program.pid)
                self.assertEqual(entry["executablePath"],
                                 os.readlink(f"/proc/{program.pid}/exe"))
                self.assertEqual(bounds(entry), geometry(program.window))
                self.assertEqual(
                    entry["name"],
                    output("xdotool", "getwindowname", str(program.window)).strip())

        for program in (programs[0], programs[3]):
            output("xdotool", "windowactivate", "--sync", str(program.window))
            until(lambda: stacking()[0] == program.window, "the window is raised")
            self.assertEqual(self.windows()[0]["id"], program.window)
            self.assertEqual(self.target()["pid"], program.pid)

    def test_menus_and_other_types_are_not_ordinary_windows(self):
        window_app(self, "gtk3", "with a menu", 300, 200, "menu")
        output("xdotool", "search", "--sync", "--onlyvisible", "--name", "^window_app.py$")
        self.assertEqual(self.names(), ["with a menu"])

        program = window_app(self, "qt5", "of every type")
        for kind, is_ordinary in (("DIALOG", True), ("UTILITY", True), ("SPLASH", True),
                                  ("DOCK", False), ("DESKTOP", False), ("NOTIFICATION", False),
                                  ("TOOLBAR", False), ("MENU", False), ("POPUP_MENU", False),
                                  ("TOOLTIP", False), ("NORMAL", True)):
            name = "_NET_WM_WINDOW_TYPE"
            change(program.window, "-f", name, "32a", "-set", name, f"{name}_{kind}")
            with self.subTest(kind):
                self.assertEqual(self.entry(program.window) is not None, is_ordinary)

    def test_only_what_is_on_the_screen(self):
        seen = window_app(self, "gtk3", "seen")
        other = window_app(self, "qt5", "other")
        shown = lambda: sorted(self.names())
        both = ["other", "seen"]

        output("xdotool", "windowminimize", "--sync", str(other.window))
        until(lambda: shown() == ["seen"], "minimised")
        output("xdotool", "windowactivate", "--sync", str(other.window))
        until(lambda: shown() == both, "restored")

        output("wmctrl", "-n", "2")
        self.addCleanup(output, "wmctrl", "-s", "0")
        output("wmctrl", "-i", "-r", str(other.window), "-t", "1")
        until(lambda: shown() == ["seen"], "on another workspace")
        output("wmctrl", "-s", "1")
        until(lambda: shown() == ["other"], "the other workspace is shown")
        output("wmctrl", "-i", "-r", str(seen.window), "-t", "-1")
        until(lambda: shown() == both, "on every workspace")

        # Window managers that show small pictures of all windows leave them mapped.
        name = "_NET_WM_DESKTOP"
        change(other.window, "-f", name, "32c", "-set", name, "0")
        until(lambda: shown() == ["seen"], "on another workspace, though mapped")
        change(other.window, "-f", name, "32c", "-set", name, "1")

        output("xdotool", "windowmove", str(other.window), "5000", "100")
        until(lambda: shown() == ["seen"] or geometry(other.window)[0] < 1366, "off the screen")
        output("wmctrl", "-i", "-r", str(other.window), "-b", "add,fullscreen")
        until(lambda: self.entry(other.window) and self.bounds(other) == (0, 0, 1366, 768),
              "full screen")
        self.assertEqual(self.bounds(other), geometry(other.window))

    def test_titles_and_shadows(self):
        program = window_app(self, "qt5", "to be changed", 400, 300)
        change(program.window, "-remove", "_NET_WM_NAME")
        for kind, text, title, name in (
                ("8s", "Größe".encode("latin-1"), "Größe", "WM_NAME"),
                ("8t", "漢字 ok".encode(), "漢字 ok", "WM_NAME"),
                ("8u", "窓".encode(), "窓", "WM_NAME"),
                ("8u", b"broken \xff\xc3 end", "broken \ufffd\ufffd end", "WM_NAME"),
                ("8u", "wins ✓".encode(), "wins ✓", "_NET_WM_NAME")):
            change(program.window, "-f", name, kind, "-set", name, text)
            self.assertEqual(self.entry(program.window)["name"], title, kind)
        change(program.window, "-remove", "_NET_WM_NAME")
        change(program.window, "-remove", "WM_NAME")
        self.assertEqual(self.entry(program.window)["name"], "")

        x, y, width, height = geometry(program.window)
        extents = "_GTK_FRAME_EXTENTS"
        for values, expected in (("26,25,23,29", (x + 26, y + 23, width - 51, height - 52)),
                                 ("400,400,1,1", (x, y, width, height))):  # too large to be true
            change(program.window, "-f", extents, "32c", "-set", extents, values)
            self.assertEqual(self.bounds(program), expected)

    def test_what_a_client_says_of_its_process_does_not_count(self):
        program = Program(self, "xterm")
        change(program.window, "-f", "_NET_WM_PID", "32c", "-set", "_NET_WM_PID", "1")
        self.assertEqual(self.entry(program.window)["pid"], program.pid)

    def test_frontmost_application_comes_and_goes(self):
        self.assertEqual(self.target(), {})
        program = Program(self, "xterm")
        until(lambda: self.target().get("pid") == program.pid, "in front")
        output("xdotool", "windowminimize", "--sync", str(program.window))
        until(lambda: self.target() == {}, "nothing in front")
        output("xdotool", "windowactivate", "--sync", str(program.window))
        self.assertEqual(self.target()["pid"], program.pid)
        program.end()
        until(lambda: self.target() == {} and self.windows() == [], "ended")


if __name__ == "__main__":
    unittest.main()
