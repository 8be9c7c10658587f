"""Windows of a real toolkit, for tests that look at them and act on them from outside.

usage: window_app.py gtk3|gtk4|qt5|qt6|tk TITLES WIDTH HEIGHT [OPTION...]

Each of the titles, which are divided by commas, is a window that is filled by a text area. Windows of
GTK 3 have client-side decorations. Options of GTK: plain (they have none), menu (opens a menu at
once; 3), behind (does not ask for the focus; 3), id=APPLICATION.ID, service (shows its windows when
the session bus asks for them; 4), field (above the text there is a field, 100 pixels high, which
takes keys and clicks; 3).

"texts" on standard input is answered by what the windows hold (a line of JSON), "text" by what the
first does, "clear" empties them. With a field, "field" moves the focus there, and "events" is answered
by what has reached the window's keyboard and the field's pointer since the last "events":

    ["key-press"|"key-release", keysym's name, X key code, state]
    ["press"|"release"|"double-press", button, x, y, state]      x and y on the screen
    ["motion", x, y, state]
    ["scroll", "up"|"down"|"left"|"right"]
"""
import json
import os
import sys


class Commands:
    def __init__(self, texts, clear):
        self.known = {"texts": texts, "text": lambda: texts()[0], "clear": clear}

    def read(self):
        """The next command; empty when there will be none."""
        return os.read(sys.stdin.fileno(), 1000).decode().strip()

    def answer(self, command):
        print(json.dumps(self.known[command]()), flush=True)


def add_field(Gdk, Gtk, window, box, commands):
    """The field of GTK 3, and what tells of its events."""
    field = Gtk.EventBox(can_focus=True, height_request=100)
    box.add(field)
    recorded = []

    def record(_, event):
        name = event.type.value_nick
        state = int(event.get_state()) & 0x1FFF
        if name.startswith("key"):
            recorded.append([name, Gdk.keyval_name(event.keyval), event.hardware_keycode, state])
        elif name == "scroll":
            recorded.append([name, event.direction.value_nick])
        elif name.startswith("motion"):
            recorded.append(["motion", event.x_root, event.y_root, state])
        else:
            kind = {"button-press": "press", "button-release": "release",
                    "2button-press": "double-press"}.get(name, name)
            recorded.append([kind, event.button, event.x_root, event.y_root, state])

    def take():
        taken = recorded[:]
        recorded.clear()
        return taken

    field.add_events(Gdk.EventMask.BUTTON_PRESS_MASK | Gdk.EventMask.BUTTON_RELEASE_MASK
                     | Gdk.EventMask.SCROLL_MASK | Gdk.EventMask.POINTER_MOTION_MASK)
    for name in ("button-press", "button-release", "motion-notify", "scroll"):
        field.connect(name + "-event", record)
    field.connect("button-press-event", lambda *_: field.grab_focus())
    for name in ("key-press", "key-release"):
        window.connect(name + "-event", record)
    commands.known.update(events=take, field=field.grab_focus)


def gtk(version, titles, width, height, options):
    import gi
    gi.require_version("Gtk", version)
    gi.require_version("Gdk", version)
    from gi.repository import Gdk, Gio, GLib, Gtk
    is_4 = version == "4.0"
    name = next((option[3:] for option in options if option.startswith("id=")), None)
    if name and not is_4:
        GLib.set_prgname(name)
    windows, buffers = [], []
    commands = Commands(lambda: [b.get_text(*b.get_bounds(), True) for b in buffers],
                        lambda: [b.set_text("") for b in buffers] and None)

    def add(application, title):
        window = Gtk.Window(application=application, title=title, default_width=width,
                            default_height=height)
        if not is_4 and "plain" not in options:
            window.set_titlebar(Gtk.HeaderBar(title=title, show_close_button=True))
        # Without wrapping the window grows with a long line, over the other one; a blinking cursor would be
        # in pictures.
        area = Gtk.TextView(wrap_mode=Gtk.WrapMode.CHAR, cursor_visible="plain" in options)
        scroller = Gtk.ScrolledWindow(hexpand=True, vexpand=True)
        box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
        (scroller.set_child if is_4 else scroller.add)(area)
        if "field" in options:
            add_field(Gdk, Gtk, window, box, commands)
        (box.append if is_4 else box.add)(scroller)
        (window.set_child if is_4 else window.add)(box)
        windows.append(window)
        buffers.append(area.get_buffer())
        area.grab_focus()
        if not is_4:
            window.set_focus_on_map("behind" not in options)
        (window.present if is_4 else window.show_all)()
        if "menu" in options:
            menu = Gtk.Menu()
            menu.append(Gtk.MenuItem(label="Entry"))
            menu.show_all()
            window.connect("map-event", lambda *_: menu.popup_at_widget(window, 5, 5, None))

    def read(*_):
        """Answers once the events that the server has sent are processed: the toolkit keeps the
        pointer's motion back until the next frame."""
        command = commands.read()
        frames = iter(range(2))

        def next_frame(*_):
            if next(frames, None) is not None:
                return True
            GLib.idle_add(commands.answer, command, priority=GLib.PRIORITY_LOW)
            return False

        if command:
            windows[0].get_display().sync()
            windows[0].add_tick_callback(next_frame)
        return bool(command)

    def activate(application):
        for title in titles:
            add(application, title)

    GLib.io_add_watch(sys.stdin, GLib.PRIORITY_LOW, GLib.IOCondition.IN | GLib.IOCondition.HUP, read)
    flags = Gio.ApplicationFlags.IS_SERVICE if "service" in options else 0
    application = Gtk.Application(application_id=name if is_4 else None, flags=flags)
    application.connect("activate", activate)
    application.run()


def qt(version, titles, width, height):
    core = __import__(f"PyQt{version}.QtCore", fromlist=["QtCore"])
    widgets = __import__(f"PyQt{version}.QtWidgets", fromlist=["QtWidgets"])
    application = widgets.QApplication(sys.argv[:1])
    areas = [widgets.QPlainTextEdit(windowTitle=title) for title in titles]
    for area in areas:
        area.resize(width, height)
        area.show()
    commands = Commands(lambda: [area.toPlainText() for area in areas],
                        lambda: [area.setPlainText("") for area in areas] and None)
    notifier = core.QSocketNotifier(sys.stdin.fileno(), core.QSocketNotifier.Type.Read)

    def read():
        if (command := commands.read()):
            commands.answer(command)
        notifier.setEnabled(bool(command))

    notifier.activated.connect(read)
    application.exec()


def tk(titles, width, height):
    import tkinter
    root = tkinter.Tk()
    areas = []
    for window, title in zip((root, tkinter.Toplevel(root)), titles):
        window.title(title)
        window.geometry(f"{width}x{height}")
        area = tkinter.Text(window)
        area.pack(expand=True, fill="both")
        areas.append(area)
    commands = Commands(lambda: [area.get("1.0", "end-1c") for area in areas],
                        lambda: [area.delete("1.0", "end") for area in areas] and None)
    root.createfilehandler(sys.stdin, tkinter.READABLE, lambda *_: commands.answer(commands.read()))
    root.mainloop()


if __name__ == "__main__":
    toolkit, title_list, *size = sys.argv[1:5]
    place = title_list.split(","), *map(int, size)
    if toolkit.startswith("gtk"):
        gtk(toolkit[3] + ".0", *place, sys.argv[5:])
    elif toolkit.startswith("qt"):
        qt(toolkit[2], *place)
    else:
        tk(*place)
