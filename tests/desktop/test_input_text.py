"""Typed text arrives as it was asked for, in every toolkit and keyboard layout."""
import os
import shutil
import signal
import subprocess
import time
import unittest
import unittest.mock

from desktop_tools import DesktopTest, Program, output, text_window, until
from field_programs import start_program
from quil_host import Host

MIXED = ("The quick brown FOX (über) jumps — «naïve» façade, señor! ΑΒΓαβγδ Привет, мир. ¡~^`¨´\n"
         "日本語の文字列 漢字仮名交じり 한국어 문장 … “quoted” ‘marks’ €100 ½ × 3 ≠ 4\tafter a tab\n"
         "👩‍💻 👍🏽 🇩🇪 e\u0302 ﬁn @#$%&*()_+{}|:\"<>?-=[]\\;',./ ₿ 𝒳 \u200bﷺ ")


def mixed(length):
    return (MIXED * (length // len(MIXED) + 1))[:length]


class TextTest(DesktopTest):
    def setUp(self):
        super().setUp()
        self.keyboard = output("xkbcomp", "-xkb", os.environ["DISPLAY"], "-")

    def tearDown(self):
        self.assertEqual(output("xkbcomp", "-xkb", os.environ["DISPLAY"], "-"), self.keyboard,
                         "the keyboard is not as before")

    def type(self, text):
        self.assertTrue(self.host.result("desktop_type", text=text, seconds=120)["ok"])


class Toolkits(TextTest):
    def check(self, toolkit):
        app = text_window(self, toolkit)
        for text in (mixed(500), "Hello, World", "", "a\r\nb\rc\nd", "ééé" * 20 + "\a\x00ok"):
            self.type(text)
            wanted = "a\nb\nc\nd" if text.startswith("a\r") else text.replace("\a\x00", "")
            until(lambda: app.ask("text") == wanted, repr(wanted), 5)
            app.ask("clear")
        app.end()

    def test_toolkits(self):
        for toolkit in ("gtk3", "gtk4", "qt5", "qt6"):
            with self.subTest(toolkit):
                self.check(toolkit)

    @unittest.skipUnless(shutil.which("ibus-daemon"), "no IBus")
    def test_ibus(self):
        Program(self, "ibus-daemon", "--panel", "disable", has_window=False)
        until(lambda: subprocess.call(["ibus", "engine", "xkb:us::eng"], stderr=subprocess.DEVNULL)
              == 0, "IBus")
        with unittest.mock.patch.dict(os.environ, GTK_IM_MODULE="ibus", QT_IM_MODULE="ibus"):
            self.check("gtk3")
            self.check("qt5")
            app = text_window(self, "gtk4")

            def types_exactly():
                app.ask("clear")
                self.type("Hello, Wörld")
                return app.ask("text") == "Hello, Wörld"

            # On a busy machine, now and then GTK 4 still swaps two keys.
            self.assertTrue(any(types_exactly() for _ in range(4)))

    def test_terminal(self):
        terminals = start_program(self, "xterm")
        text = mixed(500)
        self.host.result("desktop_type", text=text, point=terminals.middle(0))
        until(lambda: terminals.texts()[0] == text.replace("\n", "\r"), "the whole text", 10)


class Applications(TextTest):
    def test_a_megabyte_is_pasted_whole(self):
        text = "0123456789 日本語 é\n" * 50_000
        for toolkit in ("gtk3", "qt6"):
            app = text_window(self, toolkit)
            self.assertTrue(self.host.result("desktop_paste", text=text)["ok"])
            until(lambda: app.ask("text") == text, toolkit)
            app.end()


class Keyboards(TextTest):
    def setUp(self):
        super().setUp()
        self.app = text_window(self, "gtk3")
        self.addCleanup(output, "setxkbmap", "us", "-option", "")

    def typed(self, text):
        self.app.ask("clear")
        self.type(text)
        return self.app.ask("text")

    def use(self, *layout):
        output("setxkbmap", *layout)
        self.keyboard = output("xkbcomp", "-xkb", os.environ["DISPLAY"], "-")

    def test_layouts_and_groups(self):
        text = mixed(300) + "aZyW!?&é@ъ"
        for layout in (["us"], ["fr"], ["de"], ["ru"], ["us,ru", "-option", "grp:menu_toggle"],
                       ["us", "-variant", "dvorak-intl"], ["gr"], ["jp"]):
            with self.subTest(layout):
                self.use(*layout)
                self.assertEqual(self.typed(text), text)
        for layout, q in ("us,ru", "й"), ("us,gr", ";"):  # the right Alt key is AltGr in the second
            self.use(layout, "-option", "grp:menu_toggle")
            self.host.result("desktop_keypress", combo="keycode-110")
            self.keyboard = output("xkbcomp", "-xkb", os.environ["DISPLAY"], "-")
            self.assertEqual(self.typed(text), text, layout)
            self.app.ask("clear")
            self.host.result("desktop_keypress", combo="q")
            self.assertEqual(self.app.ask("text"), q, "still in the second layout")
            self.host.result("desktop_keypress", combo="keycode-110")

    def test_commands_are_those_of_their_letters(self):
        """In layouts without them, too, and in those that have them on other keys."""
        for layout in (["ru"], ["gr"], ["us", "-variant", "dvorak"], ["fr", "-variant", "bepo"],
                       ["fr"], ["us,ru"], ["ru,us", "-variant", ",dvorak"], ["us"]):
            self.use(*layout)
            self.assertTrue(self.host.result("desktop_paste", text="pästed")["ok"])
            self.assertEqual(self.app.ask("text"), "pästed", layout)
            self.host.result("desktop_keypress", combo="cmd+a")
            self.host.result("desktop_keypress", combo="delete")
            self.assertEqual(self.app.ask("text"), "", layout)

    def test_locked_and_held_modifiers(self):
        text = mixed(200) + "aA1!"
        for press, after in [(["key", "Caps_Lock"], "K"), (["keydown", "Shift_L"], "K"),
                             (["keydown", "ISO_Level3_Shift"], "k"), (["key", "Num_Lock"], "k")]:
            with self.subTest(press):
                output("xdotool", *press)
                self.assertEqual(self.typed(text), text)
                self.app.ask("clear")
                output("xdotool", "key", "45")
                self.assertEqual(self.app.ask("text"), after, "lost for the user")
                output("xdotool", press[0].replace("down", "up"), press[1])

    def test_many_characters(self):
        cjk = "".join(chr(0x4E00 + i * 7919 % 20000) for i in range(2000))
        self.assertEqual(self.typed(cjk), cjk)
        long = mixed(10_000)
        self.assertEqual(self.typed(long), long)


class Failures(TextTest):
    def test_killed_while_typing(self):
        app = text_window(self, "gtk3")
        self.type("connected before")
        victim = self.enterContext(Host())
        os.kill(app.pid, signal.SIGSTOP)  # keeps the keys from being done with
        victim.send("desktop_type", {"text": mixed(100)})
        used = lambda: output("xkbcomp", "-xkb", os.environ["DISPLAY"], "-") != self.keyboard
        until(used, "the keys are mapped")
        victim.process.kill()
        os.kill(app.pid, signal.SIGCONT)
        until(lambda: app.ask("text") == "connected before" + mixed(100), "the text")
        app.ask("clear")
        output("xdotool", "keydown", "Shift_L")  # as if killed between press and release
        text = mixed(500)[::-1]
        self.type(text)
        output("xdotool", "key", "45")
        self.assertEqual(app.ask("text"), text + "k", "nothing stays pressed")

    def test_two_runtimes_at_once(self):
        app = text_window(self, "gtk3")
        other = self.enterContext(Host())
        texts = mixed(400), mixed(400)[::-1]
        for _ in range(3):
            app.ask("clear")
            sent = [(host, host.send("desktop_type", {"text": text}))
                    for host, text in zip((self.host, other), texts)]
            for host, number in sent:
                host.answer(number)
            self.assertIn(app.ask("text"), (texts[0] + texts[1], texts[1] + texts[0]))

    def test_a_program_that_hangs(self):
        app = text_window(self, "gtk3")
        os.kill(app.pid, signal.SIGSTOP)
        began = time.monotonic()
        self.type("".join(chr(0x4E00 + i) for i in range(1000)))
        self.assertLess(time.monotonic() - began, 12)
        os.kill(app.pid, signal.SIGCONT)
        app.ask("clear")
        self.type("日本語")
        self.assertEqual(app.ask("text"), "日本語")


if __name__ == "__main__":
    unittest.main()
