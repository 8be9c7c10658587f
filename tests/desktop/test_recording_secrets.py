"""Passwords that the user types while their input is recorded, with xdotool as the user."""
import json
import signal
import subprocess
import time
import unittest

from ax_tools import gallery, observe
from desktop_tools import PYTHON, DesktopTest, Program, output, until

# Keeps devices to itself, as screen lockers do; ends with its input. Each line names a device, or the
# core protocol's keyboard, or with a minus a device to give back; it writes the server's status.
LOCKER = """
import ctypes, sys
x11, xi = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXi.so.6")
x11.XOpenDisplay.restype = ctypes.c_void_p
x11.XDefaultRootWindow.restype = ctypes.c_ulong
display = ctypes.c_void_p(x11.XOpenDisplay(None))
root, now = ctypes.c_ulong(x11.XDefaultRootWindow(display)), ctypes.c_ulong(0)
class Mask(ctypes.Structure):
    _fields_ = [("device", ctypes.c_int), ("length", ctypes.c_int), ("bits", ctypes.c_char_p)]
for word in sys.stdin:
    if word == "core\\n":
        status = x11.XGrabKeyboard(display, root, 0, 1, 1, now)
    elif int(word) > 0:
        mask = Mask(int(word), 4, bytes(4))
        status = xi.XIGrabDevice(display, int(word), root, now, now, 1, 1, 0, ctypes.byref(mask))
    else:
        status = xi.XIUngrabDevice(display, -int(word), now)
    x11.XSync(display, 0)
    print(status, flush=True)
"""
POINTER, KEYBOARD = 2, 3  # the server's own master devices
TAB = "keycode-48"

# Has no window; says on the accessibility bus that a password field of its has the focus.
PAGE = """
from gi.repository import Gio, GLib
session = Gio.bus_get_sync(Gio.BusType.SESSION)
call = lambda bus, *to: bus.call_sync(*to, None, None, Gio.DBusCallFlags.NONE, 5000, None)
address, = call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")
flags = Gio.DBusConnectionFlags
bus = Gio.DBusConnection.new_for_address_sync(
    address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)
interface = Gio.DBusNodeInfo.new_for_xml('''<node><interface name="org.a11y.atspi.Accessible">
    <method name="GetRole"><arg type="u" direction="out"/></method></interface></node>''')
asked = lambda *call: call[-1].return_value(GLib.Variant("(u)", (40,)))
bus.register_object("/field", interface.interfaces[0], asked, None, None)
bus.emit_signal(None, "/field", "org.a11y.atspi.Event.Object", "StateChanged", GLib.Variant(
    "(siiva{sv})", ("focused", 1, 0, GLib.Variant("i", 0), {})))
bus.flush_sync()
print("\\033]0;spoken\\007", flush=True)
GLib.MainLoop().run()
"""


def user(*arguments):
    output("xdotool", *map(str, arguments))


class SecretsTest(DesktopTest):
    def setUp(self):
        super().setUp()
        # Toolkits join the accessibility bus when somebody uses it.
        self.assertTrue(self.host.result("ping")["accessibility"])

    def form(self, toolkit):
        """A form in front, with the focus on its first element; the next one is a password."""
        program = gallery(self, toolkit)
        user("windowactivate", "--sync", program.window, "mousemove", 3, 3)
        observe(self.host, program)
        return program

    def record(self, *actions, gap=0.0):
        """The text and key codes of what was recorded while the user did these, followed by a
        sideways turn of the wheel that shows that everything has arrived."""
        self.host.result("startInputRecording")
        for action in actions:
            user(*action.split())
            time.sleep(gap)  # as a user pauses
        user("click", 6)
        seen = []
        while (event := self.host.result("nextInputEvent", timeoutMs=5000)["event"]):
            if event["action"] == "scroll":
                break
            seen.append(event["params"].get("text") or event["params"].get("combo"))
        self.assertIsNotNone(event)
        self.assertEqual(self.host.result("stopInputRecording"), {"events": []})
        return "".join(seen)

    def test_password_fields(self):
        for toolkit in ("gtk3", "gtk4", "qt5", "qt6"):
            for gap in (0, 0.3):
                with self.subTest(toolkit, gap=gap):
                    program = self.form(toolkit)
                    self.assertEqual(self.record("key Tab", "type pass word", "key Tab", "key Tab",
                                                 "type more", gap=gap), 2 * TAB + "more")
                    self.assertNotIn("pass word", json.dumps(
                        self.host.result("desktop_ax_get_state")))
                    program.end()

    def test_recording_begins_and_ends_in_a_password_field(self):
        terminal = Program(self, "xterm")
        for toolkit in ("gtk3", "gtk4", "qt5", "qt6"):
            with self.subTest(toolkit):
                program = self.form(toolkit)
                user("key", "Tab")
                time.sleep(0.2)
                self.assertEqual(self.record("type hidden", "key BackSpace Return"), "")
                self.host.result("startInputRecording")
                user("type", "hidden")
                user("windowactivate", "--sync", terminal.window)
                user("type", "seen")
                texts = [self.host.result("nextInputEvent", timeoutMs=5000)["event"]["params"]
                         for _ in range(4)]
                self.assertEqual("".join(params["text"] for params in texts), "seen")
                self.host.result("stopInputRecording")
                program.end()

    def test_a_program_that_is_stuck(self):
        program = self.form("gtk3")
        self.host.result("startInputRecording")
        program.process.send_signal(signal.SIGSTOP)
        user("key", "Tab")
        user("type", "hidden")
        self.assertEqual(self.host.result("nextInputEvent", timeoutMs=1000)["event"]["params"],
                         {"combo": TAB})
        self.assertIsNone(self.host.result("nextInputEvent", timeoutMs=1500)["event"])
        program.process.send_signal(signal.SIGCONT)
        self.assertEqual(self.record("key Tab", "type more"), "more")

    def test_processes_that_speak_for_the_active_program(self):
        other = Program(self, "xterm")
        activate = lambda window: user("windowactivate", "--sync", window, "mousemove", 3, 3)
        with self.subTest("a child, before"):
            self.host.result("startInputRecording")
            program = Program(self, "xterm", "-e", PYTHON, "-c", PAGE)
            until(lambda: output("xdotool", "getwindowname", str(program.window)) == "spoken\n",
                  "the child speaks")
            activate(other.window)
            activate(program.window)
            self.assertEqual(self.record("type hidden"), "")
        with self.subTest("none"):
            self.host.result("startInputRecording")
            activate(other.window)
            self.assertEqual(self.record("type typed"), "typed")
        with self.subTest("a stranger, since the window is in front"):
            self.host.result("startInputRecording")
            stranger = subprocess.Popen([PYTHON, "-c", PAGE], stdout=subprocess.PIPE)
            self.addCleanup(stranger.communicate)
            self.addCleanup(stranger.kill)
            self.assertIn(b"spoken", stranger.stdout.read(len("\033]0;spoken\007")))
            self.assertEqual(self.record("type hidden"), "")

    def locker(self, *devices, status=0):
        """A program that has asked for these."""
        locker = Program(self, PYTHON, "-c", LOCKER, has_window=False, talks=True)
        for device in devices:
            self.assertEqual(locker.ask(str(device)), status)
        return locker

    def test_programs_that_keep_all_keys(self):
        def too_late():
            lock = self.locker("core")
            self.locker("core", status=1).end()
            return lock

        lockers = {  # how the keyboard is locked, and whether before the recording begins
            "core": (lambda: self.locker("core"), False),
            "XInput": (lambda: self.locker(KEYBOARD), False),
            "mouse given back": (lambda: self.locker(KEYBOARD, POINTER, -POINTER), False),
            "a second one, too late": (too_late, False),
            "before the recording": (lambda: self.locker("core"), True),
            "before the recording, too late": (too_late, True),
        }
        for front, names in (("gtk3", lockers), (None, ["core", "before the recording"])):
            program = self.form(front) if front else Program(self, "xterm")
            user("windowactivate", "--sync", program.window, "mousemove", 3, 3)
            for name in names:
                with self.subTest(name, front=front):
                    lock, is_first = lockers[name]
                    locker = lock() if is_first else None
                    self.host.result("startInputRecording")
                    locker = locker or lock()
                    user("type", "hidden")
                    locker.end()
                    self.assertEqual(self.record("type seen"), "seen")
            program.end()
        with self.subTest("a mouse alone is no secret"):
            self.host.result("startInputRecording")
            self.locker(POINTER)
            self.assertEqual(self.record("type seen"), "seen")


if __name__ == "__main__":
    unittest.main()
