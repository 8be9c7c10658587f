"""A runtime that is ended in the middle of a request leaves nothing pressed and no key changed."""
import ctypes
import os
import random
import signal
import time
import unittest

from desktop_tools import output, text_window
from quil_host import Host

NOTHING = [], 0
BUTTON1 = 256
TIMES = int(os.environ.get("QUIL_TEST_TIMES", 3))
DRAG = "desktop_drag", {"from": {"x": 0.9, "y": 0.9}, "to": {"x": 0.95, "y": 0.95}}
CHORD = "desktop_mouse_drag", {"path": [{"x": 0.9, "y": 0.9}, {"x": 0.95, "y": 0.95}],
                               "modifiers": "ctrl+shift", "durationMs": 5000}
# Shift is pressed for some, modifiers are locked for others, spare keys have to be mapped.
TEXT = "desktop_type", {"text": "aAbB 日本語 éÜ" * 40}
COMBINATION = "desktop_keypress", {"combo": "shift+alt+f11"}


x11 = ctypes.CDLL("libX11.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
display = ctypes.c_void_p(x11.XOpenDisplay(None))
x11.XDefaultRootWindow.restype = ctypes.c_ulong
root = ctypes.c_ulong(x11.XDefaultRootWindow(display))


def pressed():
    """The keys that are down, by their codes, and the state of buttons, modifiers and locks."""
    keys = ctypes.create_string_buffer(32)
    x11.XQueryKeymap(display, keys)
    number, state = ctypes.c_ulong(), ctypes.c_uint()
    unused = [ctypes.byref(number)] * 2 + [ctypes.byref(ctypes.c_int())] * 4
    x11.XQueryPointer(display, root, *unused, ctypes.byref(state))
    return [code for code in range(256) if keys.raw[code // 8] >> code % 8 & 1], state.value


def keyboard():
    return output("xkbcomp", "-xkb", os.environ["DISPLAY"], "-")


class Interrupted(unittest.TestCase):
    def setUp(self):
        self.app = text_window(self, "gtk3")
        self.keyboard = keyboard()
        self.assertEqual(pressed(), NOTHING)

    def interrupt(self, request, number, delay):
        """Ends a runtime that long after the request has been sent; returns how it ended."""
        with Host() as host:
            host.result("ping")
            host.send(*request)
            time.sleep(delay)  # the point: at any moment
            host.process.send_signal(number)
            return host.process.wait(10)

    def test_asked_to_end(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            for request in (DRAG, CHORD, TEXT, COMBINATION):
                for turn in range(TIMES):
                    delay = random.uniform(0, 0.08)
                    with self.subTest(number=number, request=request[0], delay=delay):
                        self.assertEqual(self.interrupt(request, number, delay), -number)
                        self.assertEqual(pressed(), NOTHING)
                        self.assertEqual(keyboard(), self.keyboard)

    def test_killed(self):
        left = 0
        running = self.enterContext(Host())
        running.result("desktop_move", point={"x": 0.1, "y": 0.9})
        for request in (DRAG, CHORD, TEXT, COMBINATION):
            for turn in range(TIMES):
                delay = random.uniform(0, 0.08)
                with self.subTest(request=request[0], delay=delay):
                    self.interrupt(request, signal.SIGKILL, delay)
                    left += pressed() != NOTHING
                    if turn % 2:
                        running.result("desktop_move", point={"x": 0.2, "y": 0.9})
                        running.result("desktop_keypress", combo="f11")
                        self.assertEqual(pressed(), NOTHING, "after one that ran before")
                    with Host() as host:
                        host.result("desktop_move", point={"x": 0.1, "y": 0.9})
                        self.assertEqual(pressed(), NOTHING)
                        self.assertEqual(keyboard(), self.keyboard)
        self.assertGreater(left, 0, "nothing was ever left to be undone")

    def test_another_runtimes_drag_goes_on(self):
        with Host() as dragging, Host() as other:
            number = dragging.send(*DRAG)
            while pressed() == NOTHING:
                pass
            other.result("desktop_keypress", combo="f11")
            other.result("desktop_move", point={"x": 0.5, "y": 0.5})
            self.assertEqual(pressed(), ([], BUTTON1))
            dragging.answer(number)
            self.assertEqual(pressed(), NOTHING)


if __name__ == "__main__":
    unittest.main()
