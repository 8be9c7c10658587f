"""Programs with two places for text, each in the toolkit that it stands for, and what they hold."""
import glob
import json
import os
import re
import subprocess
import tempfile
import time

from desktop_tools import CHROMIUM, SUPPORT, Program, change, firefox, geometry, output, until, window_app

WIDTH, HEIGHT = map(int, re.findall(r"dimensions:\s+(\d+)x(\d+)", output("xdpyinfo"))[0])
PAGE = """<meta charset=utf-8><title>["",""]</title><style>body {margin: 0; display: flex}
textarea {flex: 1; height: 97vh; border: 1px solid}</style><textarea id=a></textarea>
<textarea id=b></textarea><script>const tell = () => document.title = JSON.stringify([a.value, b.value]);
oninput = tell; onkeydown = e => { if (e.key == 'F9') { a.value = b.value = ''; tell(); } }</script>"""


def point(x, y):
    """The point object of a pixel's middle."""
    return {"x": (x + 0.5) / WIDTH, "y": (y + 0.5) / HEIGHT}


def window_named(pattern, seconds=90):
    search = ("xdotool", "search", "--onlyvisible", "--name", pattern)
    return int(until(lambda: output(*search, check=False, stderr=subprocess.DEVNULL), pattern,
                     seconds).split()[0])


class FieldProgram:
    """`places` are rectangles on the screen, `titles` those of the windows around them, where told."""

    titles = None, None
    can = "type", "double click", "paste", "kill"
    exact = "x😀y é日Ж€"

    def arrange(self, windows, width=None):
        """Puts the windows beside each other, unless the window manager does so."""
        for window in windows if width else ():
            output("xdotool", "windowsize", str(window), str(width), "500", check=False)
        before = None

        def rest():
            """Whether they lie beside each other, and have not moved for a while."""
            nonlocal before
            time.sleep(0.5)
            last, before = before, [geometry(window) for window in windows]
            ends = [(x, x + width) for x, _, width, _ in sorted(before)]
            is_apart = all(end <= begin for (_, end), (begin, _) in zip(ends, ends[1:]))
            if is_apart and last == before and all(size[2] > 100 for size in before):
                return True
            if not is_apart or last is None:  # or moved before a window manager had taken them
                for i, window in enumerate(windows):
                    output("xdotool", "windowmove", str(window), str(20 + i * ((width or 480) + 20)), "60",
                           check=False)
            return False

        until(rest, "the windows at rest beside each other")
        self.places = before

    def middle(self, index, below=0):
        """The middle, or so many pixels below it."""
        x, y, width, height = self.places[index]
        return point(x + width // 2, y + height // 2 + below)

    def top(self, index):
        """Where the first words are."""
        x, y, _, _ = self.places[index]
        return point(x + 20, y + 10)


class TwoWindows(FieldProgram):
    """Two text areas in windows of their own."""

    titles = "one", "two"

    def __init__(self, test, toolkit):
        if toolkit == "swing":
            classes = test.enterContext(tempfile.TemporaryDirectory())
            output("javac", "-d", classes, os.path.join(SUPPORT, "FieldsApp.java"))
            self.program = Program(test, "java", "-cp", classes, "FieldsApp", talks=True)
        else:
            self.program = window_app(test, toolkit, "one,two", 400, 300, "plain")
        if toolkit == "tk":
            self.exact = "xéyЖ€日"  # Tk 8.6 knows no more
        self.arrange([window_named(f"^{title}$") for title in self.titles])

    def texts(self):
        return self.program.ask("texts")

    def clear(self, _host):
        self.program.ask("clear")


class Terminals(FieldProgram):
    titles = "one", "two"
    can = "type", "kill"

    def __init__(self, test):
        folder = test.enterContext(tempfile.TemporaryDirectory())
        self.paths = [f"{folder}/{title}" for title in self.titles]
        self.seen = [0, 0]
        for title, path in zip(self.titles, self.paths):
            Program(test, "xterm", "-T", title, "-u8", "-geometry", "60x20", "-e", "sh", "-c",
                    f"stty raw -echo; : > {path}; exec tee -a {path}")
        until(lambda: all(map(os.path.exists, self.paths)), "the shells")
        self.arrange([window_named(f"^{title}$") for title in self.titles])

    def held(self):
        texts = []
        for path in self.paths:
            with open(path, "rb") as file:
                texts.append(file.read())
        return texts

    def texts(self):
        return [text[seen:].decode(errors="replace") for text, seen in zip(self.held(), self.seen)]

    def clear(self, _host):
        self.seen = [len(text) for text in self.held()]


class Browser(FieldProgram):
    """Two text areas of a page, whose title tells what they hold."""

    def __init__(self, test, browser):
        folder = test.enterContext(tempfile.TemporaryDirectory(ignore_cleanup_errors=True))
        with open(os.path.join(folder, "page.html"), "w") as page:
            page.write(PAGE)
        address = f"file://{folder}/page.html"
        if browser == "chromium":
            command = [*CHROMIUM, f"--user-data-dir={folder}/profile", "--test-type", f"--app={address}"]
        else:
            os.mkdir(f"{folder}/profile")
            command = [*firefox(f"{folder}/profile"), "--kiosk", address]
        Program(test, *command, has_window=False)
        self.window = window_named(r'^\["","')
        time.sleep(2)
        self.arrange([self.window], 1000)
        x, y, width, height = self.places[0]
        self.places = [(x, y, width // 2, height), (x + width // 2, y, width // 2, height)]

    def texts(self):
        title = change(self.window, "_NET_WM_NAME").partition('"')[2].replace('\\"', '"')
        return json.loads(title[:title.rindex("]") + 1])

    def clear(self, host):
        host.result("desktop_keypress", combo="f9")
        until(lambda: self.texts() == ["", ""], "the empty fields")


class Writer(FieldProgram):
    """One document, whose text is read on the accessibility bus; windows of two would cover each
    other."""

    can = "type", "paste", "kill"

    def __init__(self, test):
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi
        self.atspi = Atspi
        folder = test.enterContext(tempfile.TemporaryDirectory(ignore_cleanup_errors=True))
        open(f"{folder}/one.txt", "w").close()
        Program(test, "soffice", f"-env:UserInstallation=file://{folder}/profile", "--norestore",
                "--nologo", "--nofirststartwizard", f"{folder}/one.txt", has_window=False)
        self.titles = "one.txt - LibreOffice Writer",
        self.arrange([window_named("^one.txt")])
        self.document = until(self.find_document, "the document")

    def find_document(self):
        desktop = self.atspi.get_desktop(0)
        for position in range(desktop.get_child_count()):
            program = desktop.get_child_at_index(position)
            if program and program.get_name() == "soffice":
                return self.find(program, self.atspi.Role.DOCUMENT_TEXT)
        return None

    def find(self, accessible, role, depth=10):
        if accessible is None or depth == 0 or accessible.get_role() == role:
            return accessible if depth else None
        children = (accessible.get_child_at_index(i)
                    for i in range(min(accessible.get_child_count(), 60)))
        return next(filter(None, (self.find(child, role, depth - 1) for child in children)), None)

    def texts(self):
        paragraphs = [self.document.get_child_at_index(i)
                      for i in range(self.document.get_child_count())]
        return ["\n".join(self.atspi.Text.get_text(text, 0, -1) for text in paragraphs)]

    def clear(self, host):
        for combo in ("ctrl+a", "delete"):
            host.result("desktop_keypress", combo=combo)
        until(lambda: self.texts() == [""], "the empty document")


PROGRAMS = {"gtk3": TwoWindows, "gtk4": TwoWindows, "qt5": TwoWindows, "qt6": TwoWindows,
            "tk": TwoWindows, "swing": TwoWindows, "xterm": Terminals, "chromium": Browser,
            "firefox": Browser, "writer": Writer}


def start_program(test, name):
    kind = PROGRAMS[name]
    return kind(test, name) if kind in (TwoWindows, Browser) else kind(test)


def missing_for(name):
    """What the program needs and the machine does not have; None when it has all."""
    import importlib.util
    import shutil
    needed = {"swing": "javac", "chromium": "chromium", "firefox": "firefox", "writer": "soffice",
              "xterm": "xterm"}.get(name)
    if needed and not shutil.which(needed):
        return needed
    if name == "tk" and not importlib.util.find_spec("tkinter"):
        return "tkinter"
    if name == "writer" and not glob.glob("/usr/lib/libreoffice/program/swriter"):
        return "LibreOffice Writer"
    return None
