"""The user's input, with xdotool as the user: what was recorded is what was done."""
import ctypes
import os
import time
import unittest

from desktop_tools import DesktopTest, Program, XServer, output, until, window_app
from quil_host import Host

SCREEN = (1366, 768)


def user(*arguments):
    output("xdotool", *map(str, arguments))


def press_at_once(key, times):
    """Presses a key so often without a pause, which takes some 30 ms for a thousand times."""
    x11, xtest = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXtst.so.6")
    x11.XOpenDisplay.restype = ctypes.c_void_p
    display = ctypes.c_void_p(x11.XOpenDisplay(None))
    code = x11.XKeysymToKeycode(display, ctypes.c_ulong(ord(key)))
    for _ in range(times):
        for is_press in (1, 0):
            xtest.XTestFakeKeyEvent(display, code, is_press, ctypes.c_ulong(0))
    x11.XCloseDisplay(display)


def brief(event):
    """A record without what differs from one recording to the next."""
    return (event["action"], *event["params"].values())


def layout(test, *arguments):
    """Another keyboard layout for the rest of the test."""
    test.addCleanup(output, "setxkbmap", "us", "-option")
    output("setxkbmap", *arguments)


class RecordingTest(DesktopTest):
    def setUp(self):
        super().setUp()
        self.addCleanup(output, "xdotool", "mousemove", "5", "5")

    def record(self, *actions, count):
        """Does it; the records, of which so many are awaited."""
        self.host.result("startInputRecording")
        for action in actions:
            user(*action.split())
        return self.taken(count)

    def taken(self, count):
        events = [self.host.result("nextInputEvent", timeoutMs=5000)["event"]
                  for _ in range(count)]
        self.assertNotIn(None, events)
        return events + self.host.result("stopInputRecording")["events"]

    def text(self, *actions, count):
        return [brief(event)[-1] for event in self.record(*actions, count=count)]

    def test_pointer(self):
        self.host.result("startInputRecording")
        spans = []
        places = ((0, 0), (1365, 767), (400, 300))
        for x, y in places:
            begin = time.time() * 1000
            user("mousemove", x, y, "click", 1)
            spans.append((begin, time.time() * 1000))
            user("click", 3, "click", 2, "mousemove", 200, 100)
        user("click", "--repeat", 3, "--delay", 2, 4, "click", 5, "click", 6, "click", 7)
        user("mousemove", 10, 20, "mousedown", 1, "mousemove", 90, 80, "mouseup", 1)
        events = self.taken(10)
        self.assertEqual([brief(e) for e in events],
                         [("click",)] * 3 + [("scroll", n) for n in (1, 1, 1, -1, 0, 0)] +
                         [("click",)])
        points = [e["target"]["point"] for e in events]
        for (x, y), point in zip(places + ((200, 100),) * 6 + ((10, 20),), points):
            self.assertAlmostEqual(point["x"], x / SCREEN[0])
            self.assertAlmostEqual(point["y"], y / SCREEN[1])
        for (begin, end), event in zip(spans, events):
            self.assertTrue(begin - 20 <= event["at"] <= end + 20, (begin, event["at"], end))
        self.assertEqual(sorted(e["at"] for e in events), [e["at"] for e in events])

    def test_keys(self):
        events = self.record("key a shift+b ctrl+c alt+shift+F4 Return shift+Tab Left super+l Pause",
                             "key Shift_L Control_R Alt_L Num_Lock Num_Lock ISO_Level3_Shift space",
                             count=9)
        self.assertEqual([brief(e) for e in events], [
            ("type", "a"), ("type", "B"), ("keypress", "ctrl+keycode-8"),
            ("keypress", "alt+shift+keycode-118"), ("keypress", "keycode-36"),
            ("keypress", "shift+keycode-48"), ("keypress", "keycode-123"),
            ("keypress", "keycode-639"), ("type", " ")])
        self.assertNotIn("target", events[0])
        self.host.result("startInputRecording")
        user("click", 1, "key", "a")  # just before the end
        self.assertEqual([brief(event)[0] for event in self.host.result("stopInputRecording")["events"]], ["click", "type"])

    def test_text_is_the_layouts(self):
        self.assertEqual(self.text("key q w 2 shift+2", count=4), list("qw2@"))
        for name, codes, characters in (("de", "29 52 47 shift+11 shift+61", 'zyö"_'),
                                        ("fr", "24 38 11 shift+11", "aqé2"),
                                        ("ru", "24 shift+25 41", "йЦа"),
                                        ("us,gr", "38", "a")):
            with self.subTest(name):
                layout(self, name)
                self.assertEqual(self.text(f"key {codes}", count=len(characters)),
                                 list(characters))
        with self.subTest("second group"):
            layout(self, "us,gr")
            self.assertEqual(self.text("key a Greek_alpha Greek_ALPHA a", count=4), list("aαΑa"))

    def test_caps_lock_level_3_and_dead_keys(self):
        layout(self, "de")
        self.assertEqual(self.text("key Caps_Lock 47 shift+47 10 Caps_Lock 47", count=4),
                         list("Öö1ö"))
        third = "keydown ISO_Level3_Shift key 24 26 keyup ISO_Level3_Shift"
        events = self.record(third, count=2)
        self.assertEqual([brief(e) for e in events], [("type", "@"), ("type", "€")])
        # dead acute and dead circumflex; a click gives up what was begun
        self.assertEqual(self.text("key 21 26 49 shift+38 49 space 21 click 1 key 26", count=5),
                         ["é", "Â", "^", "click", "e"])

    def test_characters_that_no_key_has(self):
        text = "aé漢😀ßZ"
        self.host.result("startInputRecording")
        user("type", "--delay", "20", text)
        self.assertEqual("".join(e["params"]["text"] for e in self.taken(len(text))), text)
        # Keys that have fewer keysyms than there are levels.
        self.addCleanup(output, "xmodmap", "-e", "keycode 200 =")
        for keysyms, typed in (("A", "aA"), ("A A", "AA"), ("1", "11"), ("Cyrillic_A", "аА")):
            with self.subTest(keysyms):
                self.host.result("startInputRecording")
                output("xmodmap", "-e", f"keycode 200 = {keysyms}")
                user("key", "200", "shift+200")
                self.assertEqual("".join(e["params"]["text"] for e in self.taken(2)), typed)

    def test_held_keys_repeat(self):
        # In a window, whose program the server tells of each repeat.
        terminal = Program(self, "xterm")
        user("windowactivate", "--sync", terminal.window)
        events = self.record("keydown x sleep 1 keyup x", count=3)
        self.assertEqual({brief(e) for e in events}, {("type", "x")})
        gaps = [b["at"] - a["at"] for a, b in zip(events, events[1:])]
        self.assertGreater(gaps[0], 400)
        self.assertTrue(all(20 <= gap <= 80 for gap in gaps[1:]), gaps)

    def test_bursts_of_keys(self):
        terminal = Program(self, "xterm")
        user("windowactivate", "--sync", terminal.window)
        counts = []
        for _ in range(8):
            self.host.result("startInputRecording")
            press_at_once("a", 1000)
            self.host.result("nextInputEvent", timeoutMs=5000)
            counts.append(1 + len(self.host.result("stopInputRecording")["events"]))
        # The server loses some when it is not read in time, which a busy machine may cause.
        self.assertGreaterEqual(counts.count(1000), 6, counts)

    def test_nothing_changes_while_a_menu_or_a_program_grabs(self):
        window_app(self, "gtk3", "with a menu", 300, 200, "menu")
        output("xdotool", "search", "--sync", "--onlyvisible", "--name", "^window_app.py$")
        events = self.record("mousemove 700 400 key Down mousemove 900 700 click 1", count=2)
        self.assertEqual([brief(e) for e in events], [("keypress", "keycode-125"), ("click",)])

    def test_servers_come_and_go(self):
        absent = dict(os.environ, DISPLAY=":99999")
        host = self.enterContext(Host(env=absent))
        self.assertEqual(host.error("startInputRecording")["message"],
                         "input monitoring permission required")
        deaf = XServer(self, "-extension", "RECORD")
        self.assertEqual(
            self.enterContext(Host(env=deaf.environment)).error("startInputRecording")["code"],
            "RECORDING_PERMISSION_REQUIRED")

        server = XServer(self)
        host = self.enterContext(Host(env=server.environment))
        host.result("startInputRecording")
        output("xdotool", "click", "1", env=server.environment)
        self.assertTrue(host.result("nextInputEvent", timeoutMs=5000)["event"])
        server.stop()
        self.assertIsNone(host.result("nextInputEvent", timeoutMs=100)["event"])
        self.assertEqual(host.result("stopInputRecording"), {"events": []})
        server.start()
        until(lambda: "result" in host.request("startInputRecording"), "the server is found")
        output("xdotool", "key", "a", env=server.environment)
        self.assertEqual(brief(host.result("nextInputEvent", timeoutMs=5000)["event"]),
                         ("type", "a"))
        self.assertEqual(host.close()[1:], (0, b""), "ends while it records")


if __name__ == "__main__":
    unittest.main()
