"""The clipboard: read from whoever owns it, offered while a paste waits, put back and kept."""
import os
import shutil
import signal
import subprocess
import tempfile
import threading
import time
import unittest

from desktop_tools import PYTHON, DesktopTest, Program, text_window, until

TEXT = "Grüße\n日本語 👩‍💻\ttab"

OWNER_CHANGES = """
import gi
gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk
clipboard = Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD)
def changed(*_):
    print("changed", flush=True)
clipboard.connect("owner-change", changed)
Gdk.Display.get_default().sync()
print("ready", flush=True)
Gtk.main()
"""


def copy(test, text):
    """xclip becomes the owner; its process, which serves the text."""
    process = subprocess.Popen(["xclip", "-selection", "clipboard", "-quiet", "-i"],
                               stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    test.addCleanup(process.wait)
    test.addCleanup(process.kill)
    process.stdin.write(text.encode())
    process.stdin.close()
    until(lambda: clipboard("UTF8_STRING") == text, "xclip's ownership")
    return process


def clipboard(target="UTF8_STRING"):
    """What another program gets; None when there is nothing."""
    done = subprocess.run(["xclip", "-selection", "clipboard", "-o", "-t", target],
                          capture_output=True, timeout=10)
    encoding = "latin-1" if target == "STRING" else "utf-8"
    # Refused in the middle of a change of owners, xclip asks the new one for STRING instead.
    return done.stdout.decode(encoding, "replace") if done.returncode == 0 else None


class Pasteboard(DesktopTest):
    def paste(self, text):
        self.assertEqual(self.host.result("desktop_paste", text=text)["ok"], True)

    def test_offered_while_the_paste_waits_then_the_old_text_again(self):
        owner = copy(self, TEXT)
        seen = []

        def watch():
            while not stop.is_set():
                seen.append(clipboard())

        stop = threading.Event()
        watcher = threading.Thread(target=watch)
        watcher.start()
        self.paste("pasted " + TEXT)
        stop.set()
        watcher.join()
        self.assertIn("pasted " + TEXT, seen)
        self.assertEqual(owner.wait(5), 0, "xclip still owns the clipboard")
        self.assertEqual(clipboard(), TEXT)
        self.host.close()
        self.assertIsNone(clipboard())

    def test_every_form_that_programs_ask_for(self):
        copy(self, TEXT)
        self.paste("other")
        self.assertEqual(set(clipboard("TARGETS").split()),
                         {"TARGETS", "TIMESTAMP", "MULTIPLE", "UTF8_STRING", "STRING"})
        for target in ("UTF8_STRING", "TEXT", "text/plain", "text/plain;charset=utf-8"):
            with self.subTest(target):
                self.assertEqual(clipboard(target), TEXT)
        self.assertEqual(clipboard("STRING"), "Grüße\n??? ???\ttab")
        self.assertIsNone(clipboard("image/png"))

    def test_nothing_before_and_nothing_after(self):
        for before in (None, ""):
            with self.subTest(before=before):
                if before is not None:
                    copy(self, before)
                self.paste("text")
                self.assertEqual(clipboard(), before)

    @unittest.skipUnless(shutil.which("xfce4-clipman"), "xfce4-clipman is not installed")
    def test_the_clipboard_manager_keeps_the_text(self):
        Program(self, "xfce4-clipman", has_window=False)
        copy(self, TEXT)
        self.paste("other")
        self.assertEqual(clipboard(), TEXT)
        self.host.close()
        until(lambda: clipboard() == TEXT, "the text after the end", 5)

    def test_one_change_of_owner_each_way(self):
        """Programs that hear of a change ask what is there; they never find nothing."""
        copy(self, "before")
        seen = self.enterContext(tempfile.NamedTemporaryFile(mode="ab+"))
        Program(self, PYTHON, "-c", OWNER_CHANGES, has_window=False, stdout=seen)
        until(lambda: os.path.getsize(seen.name), "the watcher")
        for _ in range(3):
            self.paste("text")
        copy(self, "after")  # a seventh
        lines = lambda: seen.seek(0) or seen.read().split()
        until(lambda: len(lines()) >= 8, "the changes")
        self.assertEqual(lines(), [b"ready"] + 7 * [b"changed"])

    def test_a_busy_program_pastes_the_text_all_the_same(self):
        app = text_window(self, "qt6")
        copy(self, "old")
        os.kill(app.pid, signal.SIGSTOP)
        number = self.host.send("desktop_paste", {"text": "new"})
        until(lambda: clipboard() == "new", "the offer")
        time.sleep(0.6)  # longer than other programs are given
        os.kill(app.pid, signal.SIGCONT)
        self.host.answer(number)
        self.assertEqual(app.ask("text"), "new")

    def test_an_owner_that_does_not_answer(self):
        owner = copy(self, TEXT)
        os.kill(owner.pid, signal.SIGSTOP)
        began = time.monotonic()
        self.paste("text")
        self.assertLess(time.monotonic() - began, 3)
        os.kill(owner.pid, signal.SIGCONT)
        self.assertIsNone(clipboard())


if __name__ == "__main__":
    unittest.main()
