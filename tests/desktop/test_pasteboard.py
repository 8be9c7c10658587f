"""The clipboard: read from whoever owns it, offered while a paste waits, put back and kept."""
import os
import signal
import subprocess
import threading
import time
import unittest

from desktop_tools import until
from quil_host import Host

TEXT = "Grüße\n日本語 👩‍💻\ttab"


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


class Pasteboard(unittest.TestCase):
    def setUp(self):
        self.host = self.enterContext(Host("quil"))

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

    def test_texts_that_come_and_go_in_parts(self):
        text = "".join(f"{number:07} é\n" for number in range(300_000))  # 3.3 MB
        copy(self, text)
        self.paste("other")
        self.assertEqual(clipboard(), text)

    def test_nothing_before_and_nothing_after(self):
        for before in (None, ""):
            with self.subTest(before=before):
                if before is not None:
                    copy(self, before)
                self.paste("text")
                self.assertEqual(clipboard(), before)

    def test_another_program_copies_after_the_paste(self):
        self.paste("text")
        copy(self, "newer")
        self.assertEqual(clipboard(), "newer")

    def test_an_owner_that_does_not_answer(self):
        owner = copy(self, TEXT)
        os.kill(owner.pid, signal.SIGSTOP)
        began = time.monotonic()
        self.paste("text")
        self.assertLess(time.monotonic() - began, 2)
        os.kill(owner.pid, signal.SIGCONT)
        self.assertIsNone(clipboard())


if __name__ == "__main__":
    unittest.main()
