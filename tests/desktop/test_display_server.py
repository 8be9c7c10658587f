"""X servers, window managers and session buses that are missing, come, go and hang."""
import os
import signal
import tempfile
import unittest

from desktop_tools import Program, XServer, output, until, window_app
from quil_host import Host

NOTHING = {"permissionsGranted": False, "accessibility": False, "screenRecording": False,
           "inputMonitoring": False, "semantic": True}


def names(host):
    return [entry["name"] for entry in host.result("desktop_windows_list")["windows"]]


def front(host):
    return host.result("desktop_target")["target"].get("pid")


def newest_thread():
    """The number of the thread that was created last, by any process."""
    with open("/proc/loadavg", encoding="ascii") as file:
        return int(file.read().split()[-1])


class DisplayServerTest(unittest.TestCase):
    def quil(self, environment, **variables):
        return self.enterContext(Host(env=dict(environment, **variables)))

    def xterm(self, server, title, place="80x24+0+0"):
        return Program(self, "xterm", "-T", title, "-geometry", place, env=server.environment)

    def test_server_comes_and_goes(self):
        server = XServer(self)
        server.stop()
        host = self.quil(server.environment, DBUS_SESSION_BUS_ADDRESS="unix:path=/nowhere")
        for _ in range(2):
            self.assertEqual(host.result("ping"), NOTHING)
            server.start()
            self.assertEqual(host.result("ping"),
                             NOTHING | {"screenRecording": True, "inputMonitoring": True})
            server.stop()
        before = newest_thread()
        for _ in range(500):  # each found out without a thread
            host.result("ping")
        self.assertLess(newest_thread() - before, 500)
        host = self.quil(server.environment)
        self.assertTrue(host.result("ping")["accessibility"])
        self.assertEqual((names(host), front(host)), ([], None))
        server.start()
        program = self.xterm(server, "there again")
        self.assertEqual((names(host), front(host)), (["there again"], program.pid))
        # An unset display is no display.
        del server.environment["DISPLAY"]
        self.assertEqual(self.quil(server.environment).result("ping"),
                         NOTHING | {"accessibility": True})

    def test_server_that_does_not_answer(self):
        server = XServer(self)
        program = self.xterm(server, "still here")
        early, late = self.quil(server.environment), self.quil(server.environment)
        self.assertEqual(names(early), ["still here"])
        server.process.send_signal(signal.SIGSTOP)
        for host in (early, late):
            self.assertEqual(names(host), [])
            self.assertIsNone(front(host))
            self.assertFalse(host.result("ping")["screenRecording"])
        server.process.send_signal(signal.SIGCONT)
        for host in (early, late):
            until(lambda: names(host) == ["still here"], "the server is asked again")
            self.assertEqual(front(host), program.pid)

    def test_session_bus_that_does_not_answer(self):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        address = f"unix:path={folder}/bus"
        bus = Program(self, "dbus-daemon", "--session", "--nofork", f"--address={address}",
                      has_window=False)
        until(lambda: os.path.exists(f"{folder}/bus"), "the session bus")
        host = self.quil(os.environ, DBUS_SESSION_BUS_ADDRESS=address)
        late = self.quil(os.environ, DBUS_SESSION_BUS_ADDRESS=address)
        self.assertTrue(host.result("ping")["accessibility"])
        bus.process.send_signal(signal.SIGSTOP)
        self.assertFalse(host.result("ping")["accessibility"])
        self.assertFalse(late.result("ping")["accessibility"])
        # GVfs, which a desktop entry would be read through, would wait for the bus without a limit.
        late.result("desktop_apps_list", seconds=10)
        bus.process.send_signal(signal.SIGCONT)
        until(lambda: host.result("ping")["accessibility"], "the bus is asked again")
        until(lambda: late.result("ping")["accessibility"], "the bus is asked again")
        bus.end()
        self.assertFalse(host.result("ping")["accessibility"])

    def test_without_a_window_manager(self):
        server = XServer(self)
        xdotool = lambda *arguments: output("xdotool", *map(str, arguments), env=server.environment)
        host = self.quil(server.environment)
        self.assertIsNone(front(host))
        left = self.xterm(server, "left", "20x10+0+0")
        right = self.xterm(server, "right", "20x10+600+0")
        self.assertEqual(names(host), ["right", "left"])
        # Keys go to where the pointer is; on the bare root window, to nobody.
        for place, program in (((700, 50), right), ((50, 50), left), ((1000, 700), right)):
            xdotool("mousemove", *place)
            self.assertEqual(front(host), program.pid, place)
        xdotool("windowfocus", "--sync", left.window)
        self.assertEqual(front(host), left.pid)
        xdotool("windowraise", left.window)
        self.assertEqual(names(host), ["left", "right"])
        xdotool("windowmove", "--sync", right.window, 2000, 0)
        self.assertEqual(names(host), ["left"], "off the screen")
        xdotool("windowmove", "--sync", right.window, 600, 0)
        menu = window_app(self, "gtk3", "with a menu", 300, 200, "menu", env=server.environment)
        xdotool("search", "--sync", "--onlyvisible", "--name", "^window_app.py$")
        self.assertEqual(names(host), ["with a menu", "left", "right"])
        menu.end()

        for _ in range(2):
            manager = Program(self, "openbox", has_window=False, env=server.environment)
            until(lambda: str(manager.pid) in output("xprop", "-root", "_OPENBOX_PID",
                                                     env=server.environment), "openbox")
            xdotool("windowactivate", right.window)
            until(lambda: front(host) == right.pid and len(names(host)) == 2, "managed windows")
            manager.end()
            xdotool("windowfocus", "--sync", left.window)
            until(lambda: front(host) == left.pid, "openbox is no longer believed")
            self.assertEqual(sorted(names(host)), ["left", "right"])


if __name__ == "__main__":
    unittest.main()
