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
import sys

import fields_app


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


if __name__ == "__main__":
    toolkit = sys.argv[1]
    if toolkit == "gtk3":
        gtk3("events" in sys.argv[2:])
    elif toolkit == "gtk4":
        fields_app.gtk("4.0", ["input"])
    else:
        fields_app.qt(toolkit[2], ["input"])
