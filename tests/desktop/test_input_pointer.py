"""Pointer, wheel and keys, as an application of ours and other tools see them."""
import re
import time
import unittest

from desktop_tools import DesktopTest, XServer, geometry, output, text_window, until
from field_programs import point
from quil_host import Host
from real_keyboard import RealKeyboard

SHIFT, LOCK, CONTROL, ALT, BUTTON1 = 1, 2, 4, 8, 256


def pointer():
    return tuple(map(int, re.findall(r"[xy]:(-?\d+)", output("xdotool", "getmouselocation"))))


class InputTest(DesktopTest):
    def setUp(self):
        super().setUp()
        self.app = text_window(self, "gtk3", "field")
        x, y, width, _ = geometry(self.app.window)
        self.middle = x + width // 2, y + 50

    def events(self, count, is_wanted):
        """So many events of a kind. The window manager, which looks at clicks first, may delay them."""
        found = []

        def come():
            found.extend(e for e in self.app.ask("events") if is_wanted(e))
            return len(found) >= count

        until(come, f"{count} events")
        return found


def is_button(event):
    return event[0] in ("press", "release", "double-press")


def is_scroll(event):
    return event[0] == "scroll"


class Pointer(InputTest):
    def test_clicks_and_moves(self):
        x, y = self.middle
        self.assertEqual(self.host.result("desktop_move", point=point(x, y)), {"ok": True})
        self.assertEqual(pointer(), (x, y))
        self.app.ask("events")
        self.assertTrue(self.host.result("desktop_click", point=point(x + 1, y))["ok"])
        self.assertEqual(self.events(2, is_button),
                         [["press", 1, x + 1, y, 0], ["release", 1, x + 1, y, BUTTON1]])

        self.host.result("desktop_double_click", point=point(x + 40, y + 10))
        self.assertEqual([e[0] for e in self.events(5, is_button)],
                         ["press", "release", "press", "double-press", "release"])

        # Left-handed people press the other button for the same, on all or some of their devices.
        own = "xinput", "set-button-map", "Virtual core XTEST pointer"
        for at, change, back in [(x, (*own, "2", "3", "1"), (*own, "1", "2", "3")),
                                 (x - 40, ("xmodmap", "-e", "pointer = 3 2 1 4 5 6 7 8 9 10"),
                                  ("xmodmap", "-e", "pointer = default"))]:
            output(*change)
            self.addCleanup(output, *back)
            self.host.result("desktop_click", point=point(at, y))
            self.assertEqual([e[:2] for e in self.events(2, is_button)],
                             [["press", 1], ["release", 1]], change)

    def test_wheel(self):
        x, y = self.middle
        for amount, axis, direction in [(3, "vertical", "up"), (-2, "vertical", "down"),
                                        (2, "horizontal", "left"), (-1, "horizontal", "right")]:
            self.host.result("desktop_scroll", point=point(x, y), amount=amount, axis=axis)
            self.assertEqual(self.events(abs(amount), is_scroll), [["scroll", direction]] * abs(amount))
        self.host.result("desktop_scroll", point=point(x, y), amount=0)
        self.assertEqual(list(filter(is_scroll, self.app.ask("events"))), [])
        began = time.monotonic()
        self.host.result("desktop_scroll", point=point(x, y), amount=-2**40)
        self.assertLess(time.monotonic() - began, 1)
        self.assertEqual(len(self.events(1000, is_scroll)), 1000)

    def test_drags(self):
        x, y = self.middle
        self.app.ask("events")
        self.host.result("desktop_drag", **{"from": point(x, y), "to": point(x + 120, y + 24)})
        events = self.events(2, lambda e: is_button(e) or e[0] == "motion" and e[3] & BUTTON1)
        while events[-1][0] != "release":
            events += self.events(1, lambda e: is_button(e) or e[0] == "motion")
        self.assertEqual([e[0] for e in events if is_button(e)], ["press", "release"])
        motions = [e[1:] for e in events if e[0] == "motion"]
        self.assertGreaterEqual(len(motions), 3)  # the toolkit joins those of a frame
        self.assertEqual(motions[-1], [x + 120, y + 24, BUTTON1])


class Keys(InputTest):
    def press(self, combo):
        """What reaches the application: (keysym, state) of the keys that go down."""
        self.app.ask("events")
        self.assertEqual(self.host.result("desktop_keypress", combo=combo), {"ok": True})
        self.seen = self.app.ask("events")
        down = [e for e in self.seen if e[0] == "key-press"]
        return [(e[1], e[3]) for e in down]

    def setUp(self):
        super().setUp()
        self.app.ask("field")

    def test_combinations(self):
        for combo, keys in [
                ("k", [("k", 0)]), ("shift+K", [("Shift_L", 0), ("K", SHIFT)]),
                ("cmd+k", [("Control_L", 0), ("k", CONTROL)]),
                ("cmd+ctrl+k", [("Control_L", 0), ("k", CONTROL)]),
                ("shift+alt+cmd+f12", [("Control_L", 0), ("Alt_L", CONTROL),
                                       ("Shift_L", CONTROL | ALT), ("F12", SHIFT | CONTROL | ALT)]),
                ("keycode-117", [("Delete", 0)]), ("keycode-83", [("KP_End", 0)]),
                ("keycode-60", [("Shift_R", 0)]), ("keycode-0x10", []), ("keycode-60000", []),
                ("keycode-639", [("Pause", 0)])]:
            with self.subTest(combo):
                self.assertEqual(self.press(combo), keys)
                codes = [(e[0], e[2]) for e in self.seen]
                self.assertEqual(codes, [("key-press", c) for _, c in codes[:len(keys)]]
                                 + [("key-release", c) for _, c in codes[:len(keys)][::-1]])

    def test_every_named_key(self):
        names = ([*"abcdefghijklmnopqrstuvwxyz0123456789=-][';\\,/.`"]
                 + [f"f{n}" for n in range(1, 13)]
                 + "return tab space delete escape left right down up home end pageup pagedown".split())
        self.assertEqual(len(names), 72)
        keysyms = {"=": "equal", "-": "minus", "]": "bracketright", "[": "bracketleft",
                   "'": "apostrophe", ";": "semicolon", "\\": "backslash", ",": "comma",
                   "/": "slash", ".": "period", "`": "grave", "delete": "BackSpace",
                   "pageup": "Page_Up", "pagedown": "Page_Down"}
        wanted = [keysyms.get(name) or (name if len(name) == 1 or name == "space"
                                        else name.capitalize()) for name in names]
        for name in names:
            self.host.result("desktop_keypress", combo=name)
        events = self.app.ask("events")
        self.assertEqual([e[:2] for e in events],
                         [[kind, name] for name in wanted for kind in ("key-press", "key-release")])

    def held(self):
        """The modifiers that the next key of a user has."""
        self.app.ask("events")
        output("xdotool", "key", "F7")
        return next(e[3] for e in self.app.ask("events") if e[2] == 73)

    def test_what_the_user_holds_or_has_locked_neither_leaks_nor_is_lost(self):
        for keys in (["Shift_L"], ["Control_R", "Alt_L"], ["Shift_L", "Shift_R"]):
            output("xdotool", "keydown", *keys)
            before = self.held()
            self.assertNotEqual(before, 0)
            for combo, state in [("k", 0), ("shift+alt+k", SHIFT | ALT)]:
                self.press(combo)
                self.assertIn(state, [e[3] for e in self.seen if e[2] == 45], combo)
                self.assertEqual(self.held(), before)
            output("xdotool", "keyup", *keys)
            self.assertEqual(self.held(), 0)
        # A hand on a keyboard is not undone by letting go of the key in a program's name.
        hand = RealKeyboard(self)
        for _ in range(2):
            hand.key(50, True)
            self.assertEqual(self.held(), SHIFT)
            self.assertEqual(self.press("k"), [("k", 0), ("Shift_L", 0)])
            self.assertEqual(self.held(), SHIFT)
            hand.key(50, False)
            self.assertEqual(self.held(), 0)
            output("xdotool", "key", "shift+k")
            self.assertIn(["key-press", "K", 45, SHIFT], self.app.ask("events"))
            self.assertEqual(self.press("shift+k"), [("Shift_L", 0), ("K", SHIFT)])
        output("xdotool", "key", "Caps_Lock")
        self.assertEqual(self.held(), LOCK)
        self.assertEqual(self.press("k"), [("k", 0)])
        self.assertEqual(self.held(), LOCK)
        self.host.result("desktop_keypress", combo="keycode-57")
        self.assertEqual(self.held(), 0, "the key itself still works")


class Display(unittest.TestCase):
    def test_one_that_goes_and_comes_back(self):
        server = XServer(self)
        host = self.enterContext(Host(env=server.environment))
        where = lambda: output("xdotool", "getmouselocation", env=server.environment)
        middle = {"x": 0.5, "y": 0.5}
        for _ in range(2):
            self.assertTrue(host.result("desktop_click", point=middle)["ok"])
            self.assertTrue(host.result("desktop_type", text="to nobody, 日本語")["ok"])
            until(lambda: where().startswith("x:640 y:400 "), "the pointer in the middle")
            server.stop()
            for method, params in [("keypress", {"combo": "cmd+v"}), ("type", {"text": "日本"}),
                                   ("paste", {"text": "text"})]:
                self.assertTrue(host.result("desktop_" + method, **params)["ok"])
            self.assertEqual(host.error("desktop_click", point=middle)["message"],
                             "point is required")
            server.start()


if __name__ == "__main__":
    unittest.main()
