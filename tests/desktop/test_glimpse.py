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
    def next(self):
        return self.host.result("nextGlimpseCaptureUpdate", requestId="a")["update"]

    def picture(self):
        return self.host.result("desktop_screenshot")["screenshotDataURL"]

    def test_text_is_the_snapshots_and_the_picture_the_windows(self):
        text = "".join(f"line {i}\twith “quotes” and 日本\n" for i in range(200))
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "text.txt")
            with open(path, "w") as file:
                file.write(text)
            program = Program(self, "mousepad", path)
            output("xdotool", "windowactivate", "--sync", str(program.window))
            until(lambda: self.host.result("desktop_ax_get_state")["nodes"][0].get("name"), "its tree")
            target = self.host.result("startFrontmostGlimpseCapture", requestId="a")["target"]
            nodes = self.host.result("desktop_ax_get_state")["nodes"]
            lines = self.next()["text"].split("\n")
        self.assertEqual((target["pid"], target["bundleIdentifier"]), (program.pid, "org.xfce.mousepad.desktop"))
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

        other = Program(self, "xterm")
        until(lambda: self.target()["pid"] == other.pid, "xterm")
        output("xdotool", "windowactivate", "--sync", str(program.window))
        # It is painted anew, as the active window, whose cursor blinks.
        pictures = [until(lambda: (one := self.picture()) == self.picture() and one, "a picture that stays")]
        update = self.next()
        pictures.append(until(lambda: self.picture() != pictures[0] and self.picture(), "the cursor"))
        self.assertIn(update.pop("screenshotDataURL"), pictures)
        self.assertEqual(update, {"type": "screenshot", "target": target})
        self.assertEqual(self.next(), {"type": "completed"})


if __name__ == "__main__":
    unittest.main()
