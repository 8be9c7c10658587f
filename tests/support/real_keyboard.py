"""Keys on the X server's own keyboard, as if a hand pressed them: not from the device that synthetic
events come from."""
import ctypes
import re

from desktop_tools import output


SLOW_AND_BOUNCE_KEYS = 0x06  # XkbSlowKeysMask, XkbBounceKeysMask
CORE_KEYBOARD = 0x100


class RealKeyboard:
    def __init__(self, test):
        self.x11 = ctypes.CDLL("libX11.so.6")
        self.xi = ctypes.CDLL("libXi.so.6")
        self.xtst = ctypes.CDLL("libXtst.so.6")
        self.x11.XOpenDisplay.restype = self.xi.XOpenDevice.restype = ctypes.c_void_p
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(None))
        test.addCleanup(self.x11.XCloseDisplay, self.display)
        found = re.search(r"Xvfb keyboard\s+id=(\d+)", output("xinput", "list"))
        self.number = int(found.group(1))
        self.device = ctypes.c_void_p(self.xi.XOpenDevice(self.display, ctypes.c_ulong(self.number)))

    def key(self, code, is_down):
        self.xtst.XTestFakeDeviceKeyEvent(self.display, self.device, ctypes.c_uint(code),
                                          int(is_down), None, 0, ctypes.c_ulong(0))
        self.x11.XSync(self.display, 0)

    def tap(self, code):
        self.key(code, True)
        self.key(code, False)

    def switch(self, controls, are_on):
        """Turns controls of all keyboards on or off."""
        self.x11.XkbQueryExtension(self.display, None, None, None, None, None)
        self.x11.XkbChangeEnabledControls(self.display, CORE_KEYBOARD, controls,
                                          controls if are_on else 0)
        self.x11.XSync(self.display, 0)
