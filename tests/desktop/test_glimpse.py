"""Glimpse captures of real applications, beside what the other methods say of the same window."""
import os
import tempfile
import unittest

from desktop_tools import DesktopTest, Program, output, until

NUMBERS = ("AXMenuItem", "AXScrollBar", "AXRadioButton", "AXCheckBox", "AXSlider")


def line(node):
    """A node of the snapshot as a capture writes it: values that are numbers left out, no subrole."""
    value = node.get("value") if node["role"] not in NUMBERS else None
    texts = [text for text in (node.get("name"), node.get("description"), value) if text]
    return " | ".join([node["role"], *(text.replace("\n", " ") for text in texts)])


class GlimpseTest(DesktopTest):
    def front(self, *command):
        program = Program(self, *command)
        output("xdotool", "windowactivate", "--sync", str(program.window))
        until(lambda: self.host.result("desktop_ax_get_state")["nodes"][0].get("name"), "its tree")
        return program

    def next(self):
        return self.host.result("nextGlimpseCaptureUpdate", requestId="a")["update"]

    def test_text_is_the_snapshots(self):
        text = "".join(f"line {i}\twith “quotes” and 日本\n" for i in range(200))
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "text.txt")
            with open(path, "w") as file:
                file.write(text)
            self.front("mousepad", path)
            self.host.result("startFrontmostGlimpseCapture", requestId="a")
            nodes = self.host.result("desktop_ax_get_state")["nodes"]
            lines = self.next()["text"].split("\n")
        self.assertEqual(lines[0], line(nodes[0]) + " | (AXStandardWindow)")
        self.assertEqual(len(lines), len(nodes))
        for node, written in zip(nodes, lines):
            written = written.partition(" | (AX")[0]
            if len(node.get("value", "")) == 500:
                self.assertEqual(written, "AXTextArea | " + text.replace("\n", " "))
                self.assertTrue(written.startswith(line(node)))
            else:
                self.assertEqual(written, line(node), node)
        # The tokens of the snapshot still hold.
        clipped, = (node for node in nodes if len(node.get("value", "")) == 500)
        self.assertEqual(self.host.result("desktop_read_value", token=clipped["token"])["value"], text)

    def test_screenshot_is_the_windows(self):
        program = self.front("galculator")
        target = self.host.result("startFrontmostGlimpseCapture", requestId="a")["target"]
        self.assertEqual((target["pid"], target["bundleIdentifier"]),
                         (program.pid, "galculator.desktop"))
        self.assertIn("Basic Mode", self.next()["text"])
        other = Program(self, "xterm")
        until(lambda: self.target()["pid"] == other.pid, "xterm")
        output("xdotool", "windowactivate", "--sync", str(program.window))

        def picture():
            return self.host.result("desktop_screenshot")["screenshotDataURL"]

        # It is painted anew, as the active window.
        until(lambda: picture() == picture(), "a picture that stays")
        update = self.next()
        self.assertEqual(update.pop("screenshotDataURL"), picture())
        self.assertEqual(update, {"type": "screenshot", "target": target})
        self.assertEqual(self.next(), {"type": "completed"})


if __name__ == "__main__":
    unittest.main()
