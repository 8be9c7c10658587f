"""Two windows, "one" and "two", each filled by a text area, for tests of where text goes.

usage: fields_app.py gtk3|gtk4|qt5|qt6|tk

"texts" on standard input is answered by what the two hold (a line of JSON), "text" by what the first
does, "clear" empties them.
"""
import json
import os
import sys

TITLES = "one", "two"


class Commands:
    def __init__(self, texts, clear):
        self.commands = {"texts": texts, "text": lambda: texts()[0], "clear": clear}
        os.set_blocking(sys.stdin.fileno(), False)

    def read(self, *_):
        try:
            line = os.read(sys.stdin.fileno(), 1000)
        except BlockingIOError:
            return True
        if not line:
            os._exit(0)
        print(json.dumps(self.commands[line.decode().strip()]()), flush=True)
        return True


def gtk(version, titles=TITLES):
    import gi
    gi.require_version("Gtk", version)
    from gi.repository import GLib, Gtk
    if version == "4.0":
        Gtk.init()
    buffers = []
    for title in titles:
        window = Gtk.Window(title=title, default_width=400, default_height=300)
        # Without wrapping the window grows with a long line, over the other one.
        area = Gtk.TextView(wrap_mode=Gtk.WrapMode.CHAR)
        window.add(area) if version == "3.0" else window.set_child(area)
        window.show_all() if version == "3.0" else window.present()
        buffers.append(area.get_buffer())
    commands = Commands(lambda: [b.get_text(*b.get_bounds(), True) for b in buffers],
                        lambda: [b.set_text("") for b in buffers] and None)
    GLib.io_add_watch(sys.stdin, GLib.PRIORITY_LOW, GLib.IOCondition.IN, commands.read)
    GLib.MainLoop().run()


def qt(version, titles=TITLES):
    core = __import__(f"PyQt{version}.QtCore", fromlist=["QtCore"])
    widgets = __import__(f"PyQt{version}.QtWidgets", fromlist=["QtWidgets"])
    application = widgets.QApplication(sys.argv[:1])
    areas = [widgets.QPlainTextEdit() for _ in titles]
    for area, title in zip(areas, titles):
        area.setWindowTitle(title)
        area.resize(400, 300)
        area.show()
    commands = Commands(lambda: [area.toPlainText() for area in areas],
                        lambda: [area.setPlainText("") for area in areas] and None)
    kind = core.QSocketNotifier.Type.Read if version == "6" else core.QSocketNotifier.Read
    notifier = core.QSocketNotifier(sys.stdin.fileno(), kind)
    notifier.activated.connect(commands.read)
    application.exec()


def tk():
    import tkinter
    root = tkinter.Tk()
    areas = []
    for window, title in zip((root, tkinter.Toplevel(root)), TITLES):
        window.title(title)
        window.geometry("400x300")
        area = tkinter.Text(window)
        area.pack(expand=True, fill="both")
        areas.append(area)
    commands = Commands(lambda: [area.get("1.0", "end-1c") for area in areas],
                        lambda: [area.delete("1.0", "end") for area in areas] and None)
    root.createfilehandler(sys.stdin, tkinter.READABLE, commands.read)
    root.mainloop()


if __name__ == "__main__":
    toolkit = sys.argv[1]
    if toolkit.startswith("qt"):
        qt(toolkit[2])
    elif toolkit.startswith("gtk"):
        gtk(toolkit[3] + ".0")
    else:
        tk()
