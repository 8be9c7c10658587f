"""scripts/with-desktop: what runs inside, what it gives back, and that nothing stays behind."""
import contextlib
import os
import signal
import subprocess
import unittest

from desktop_tools import until

SCRIPT = os.path.join(os.path.dirname(__file__), "..", "..", "scripts", "with-desktop")
# Every process of one desktop has this in its environment, which /proc shows.
MARK = "QUIL_TEST_MARK"


def marked(mark, names=None):
    """The processes that carry the mark; of these programs only."""
    found = []
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{pid}/environ", "rb") as environment:
                is_marked = f"{MARK}={mark}\0".encode() in environment.read()
            if is_marked and (not names or os.path.basename(os.readlink(f"/proc/{pid}/exe")) in names):
                found.append(int(pid))
        except OSError:  # it has ended meanwhile
            pass
    return found


def end_marked(mark):
    for pid in marked(mark):
        with contextlib.suppress(ProcessLookupError):
            os.kill(pid, signal.SIGKILL)


class WithDesktop(unittest.TestCase):
    def setUp(self):
        self.mark = f"{os.getpid()}-{self._testMethodName}"
        self.environment = dict(os.environ, **{MARK: self.mark})

    def run_in_desktop(self, script, **environment):
        return subprocess.run([SCRIPT, "sh", "-c", script], env=dict(self.environment, **environment),
                              capture_output=True, text=True, timeout=120)

    def test_a_private_desktop_with_everything_on_it(self):
        done = self.run_in_desktop(
            "echo $DISPLAY; xprop -root _NET_SUPPORTING_WM_CHECK; xdotool getdisplaygeometry;"
            "dbus-send --print-reply --dest=org.a11y.Bus /org/a11y/bus org.a11y.Bus.GetAddress",
            QUIL_DESKTOP_SCREEN="1024x600x24")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertNotEqual(done.stdout.split()[0], os.environ["DISPLAY"])
        self.assertIn("window id", done.stdout)
        self.assertIn("1024 600", done.stdout)
        self.assertIn("unix:", done.stdout)

    def test_the_exit_status_is_the_commands(self):
        for script, status in (("exit 7", 7), ("kill -TERM $$", 128 + signal.SIGTERM),
                               ("exec /no/such/program", 127)):
            with self.subTest(script):
                self.assertEqual(self.run_in_desktop(script).returncode, status)
        self.assertEqual(subprocess.run([SCRIPT], capture_output=True).returncode, 125)

    def test_no_process_stays(self):
        # One that runs on, one that left its parent, its session and its terminal, one that is deaf.
        done = self.run_in_desktop("sleep 300 & setsid -f sleep 300; setsid -f sh -c "
                                   "'trap \"\" TERM; while :; do sleep 1; done'; exit 0")
        self.assertEqual(done.returncode, 0)
        self.assertEqual(marked(self.mark), [])

    def test_interrupted_and_killed(self):
        # What it started itself ends even when it is killed; the command and what the buses started
        # need not.
        self.addCleanup(end_marked, self.mark)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGKILL):
            with self.subTest(number.name):
                process = subprocess.Popen([SCRIPT, "sh", "-c", "echo ready; exec sleep 300"],
                                           env=self.environment, stdout=subprocess.PIPE,
                                           start_new_session=True)
                self.assertEqual(process.stdout.readline(), b"ready\n")
                process.send_signal(number)
                status = process.wait(60)
                process.stdout.close()
                if number == signal.SIGKILL:
                    until(lambda: not marked(self.mark, {"Xvfb", "openbox"}), "the desktop's end")
                else:
                    self.assertEqual((status, marked(self.mark)), (128 + number, []))


if __name__ == "__main__":
    unittest.main()
