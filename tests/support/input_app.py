"""A window that tells what input reaches it, for tests that drive it from outside.

usage: input_app.py gtk3|gtk4|qt5|qt6 [events]

The window has a text area, which has the focus; with "events" (gtk3) also a slider, and a field that
takes keys and clicks. Whatever is read on standard input as a line is answered by one line of JSON
on standard output: "text" by the text of the area, "clear" empties it, "selection" tells the
selected text, "slider" the slider's value, "places" where things are on the screen, "events" the
events since the last "events", each [TYPE, ...] as below.

    ["key-press"|"key-release", keysym's name, X key code, state]
    ["press"|"release"|"double-press", button, x, y, state]      x and y on the screen
    ["motion", x, y, state]
    ["scroll", "up"|"down"|"left"|"right"]
"""
import json
import os
import sys


def answer(commands, line):
    if not line:
        sys.exit()
    print(json.dumps(commands[line.strip()]()), flush=True)


def gtk3(has_events):
    import gi
    gi.require_version("Gdk", "3.0")
    gi.require_version("Gtk", "3.0")
    from gi.repository import Gdk, GLib, Gtk
    window = Gtk.Window(title="input", default_width=500, default_height=400)
    window.connect("destroy", Gtk.main_quit)
    area = Gtk.TextView(wrap_mode=Gtk.WrapMode.CHAR)
    buffer = area.get_buffer()
    scale = Gtk.Scale.new_with_range(Gtk.Orientation.HORIZONTAL, 0, 100, 1)
    field = Gtk.EventBox(can_focus=True, height_request=100)
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
    scroller = Gtk.ScrolledWindow(expand=True)
    scroller.add(area)
    for widget in [scale, field] * has_events + [scroller]:
        box.add(widget)
    window.add(box)
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

    field.add_events(Gdk.EventMask.BUTTON_PRESS_MASK | Gdk.EventMask.BUTTON_RELEASE_MASK
                     | Gdk.EventMask.SCROLL_MASK | Gdk.EventMask.POINTER_MOTION_MASK)
    for name in ("button-press", "button-release", "motion-notify", "scroll"):
        field.connect(name + "-event", record)
    field.connect("button-press-event", lambda *_: field.grab_focus())
    for name in ("key-press", "key-release"):
        window.connect(name + "-event", record)

    def take_events():
        taken = recorded[:]
        recorded.clear()
        return taken

    def places():
        found = {}
        for name, widget in (("slider", scale), ("field", field), ("area", area)):
            if widget.get_mapped():
                x, y = window.get_window().get_origin()[1:]
                left, top = widget.translate_coordinates(window, 0, 0)
                size = widget.get_allocation()
                found[name] = [x + left, y + top, size.width, size.height]
        return found

    def selection():
        ends = buffer.get_selection_bounds()
        return buffer.get_text(*ends, True) if ends else ""

    commands = {
        "text": lambda: buffer.get_text(*buffer.get_bounds(), True),
        "clear": lambda: buffer.set_text(""), "selection": selection,
        "slider": scale.get_value, "places": places, "events": take_events,
        "area": area.grab_focus, "field": field.grab_focus}

    def read_command(*_):
        """Answers once the events that the server has sent are processed: the toolkit keeps the
        pointer's motion back until the next frame."""
        line = sys.stdin.readline()
        window.get_display().sync()
        frames = iter(range(2))

        def next_frame(*_):
            if next(frames, None) is not None:
                return True
            GLib.idle_add(answer, commands, line, priority=GLib.PRIORITY_LOW)
            return False

        window.add_tick_callback(next_frame)
        return True

    GLib.io_add_watch(sys.stdin, GLib.PRIORITY_LOW, GLib.IOCondition.IN, read_command)
    window.show_all()
    area.grab_focus()
    Gtk.main()


def gtk4():
    import gi
    gi.require_version("Gtk", "4.0")
    from gi.repository import GLib, Gtk
    loop = GLib.MainLoop()
    Gtk.init()
    window = Gtk.Window(title="input", default_width=500, default_height=300)
    area = Gtk.TextView(wrap_mode=Gtk.WrapMode.CHAR)
    buffer = area.get_buffer()
    scroller = Gtk.ScrolledWindow(child=area)
    window.set_child(scroller)
    commands = {
        "text": lambda: buffer.get_text(*buffer.get_bounds(), True),
        "clear": lambda: buffer.set_text("")}
    GLib.io_add_watch(sys.stdin, GLib.PRIORITY_LOW, GLib.IOCondition.IN,
                      lambda *_: answer(commands, sys.stdin.readline()) or True)
    window.present()
    area.grab_focus()
    loop.run()


def qt(version):
    core = __import__(f"PyQt{version}.QtCore", fromlist=["QtCore"])
    widgets = __import__(f"PyQt{version}.QtWidgets", fromlist=["QtWidgets"])
    application = widgets.QApplication(sys.argv[:1])
    area = widgets.QPlainTextEdit()
    area.setWindowTitle("input")
    area.resize(500, 300)
    commands = {"text": area.toPlainText, "clear": lambda: area.setPlainText("")}
    kind = core.QSocketNotifier.Type.Read if version == "6" else core.QSocketNotifier.Read
    notifier = core.QSocketNotifier(sys.stdin.fileno(), kind)
    os.set_blocking(sys.stdin.fileno(), False)

    def read_command(*_):
        """The notifier also calls when there is nothing to be read."""
        try:
            line = os.read(sys.stdin.fileno(), 1000)
        except BlockingIOError:
            return
        answer(commands, line.decode())

    notifier.activated.connect(read_command)
    area.show()
    area.setFocus()
    application.exec()


if __name__ == "__main__":
    toolkit = sys.argv[1]
    if toolkit.startswith("qt"):
        qt(toolkit[2])
    elif toolkit == "gtk4":
        gtk4()
    else:
        gtk3("events" in sys.argv[2:])
