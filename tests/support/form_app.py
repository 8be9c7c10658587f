"""A form of a real toolkit, for tests that observe it and act on it by its elements.

usage: form_app.py gtk3|gtk4|qt5|qt6 [ROWS]

A label "Clicks: 0" that counts the presses of the button "Count"; an entry, a text of several lines,
a check box, a slider, a password field; with ROWS also a list of that many rows. Each line of
standard output is the state after a change: {"clicks", "entry", "text", "agreed", "level"}.
"""
import json
import sys

TITLE = "Form"
ENTRY = "Grüße"
REFUSED = "refused"  # by GTK's entry, which keeps its text
TEXT = "first line\nsecond line"


def report(clicks, entry, text, agreed, level):
    print(json.dumps({"clicks": clicks, "entry": entry, "text": text, "agreed": agreed,
                      "level": level}), flush=True)


def gtk(version, rows):
    import gi
    gi.require_version("Gtk", version)
    from gi.repository import GLib, Gtk
    is_4 = version == "4.0"
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=4)
    window = Gtk.Window(title=TITLE, default_width=400, default_height=500)
    count = 0
    label = Gtk.Label(label="Clicks: 0")
    button = Gtk.Button(label="Count")
    entry = Gtk.Entry(text=ENTRY)
    text = Gtk.TextView(height_request=60)
    text.get_buffer().set_text(TEXT)
    check = Gtk.CheckButton(label="Agree")
    slider = Gtk.Scale.new_with_range(Gtk.Orientation.HORIZONTAL, 0, 100, 1)
    slider.set_value(25)
    password = Gtk.PasswordEntry() if is_4 else Gtk.Entry(visibility=False)
    password.set_text("secret")

    def changed(*_):
        if entry.get_text() == REFUSED:
            return entry.set_text(ENTRY)
        buffer = text.get_buffer()
        report(count, entry.get_text(),
               buffer.get_text(buffer.get_start_iter(), buffer.get_end_iter(), False),
               check.get_active(), slider.get_value())

    def clicked(*_):
        nonlocal count
        count += 1
        label.set_text(f"Clicks: {count}")
        changed()

    button.connect("clicked", clicked)
    entry.connect("changed", changed)
    text.get_buffer().connect("changed", changed)
    check.connect("toggled", changed)
    slider.connect("value-changed", changed)
    add = box.append if is_4 else box.add
    for widget in (label, button, entry, text, check, slider, password):
        add(widget)
    if rows:
        store = Gtk.ListStore(str)
        for row in range(rows):
            store.append([f"Row {row}"])
        tree = Gtk.TreeView(model=store)
        tree.append_column(Gtk.TreeViewColumn("Rows", Gtk.CellRendererText(), text=0))
        scrolled = Gtk.ScrolledWindow(vexpand=True)
        (scrolled.set_child if is_4 else scrolled.add)(tree)
        add(scrolled)
    (window.set_child if is_4 else window.add)(box)
    loop = GLib.MainLoop()
    window.connect("destroy", lambda *_: loop.quit())
    (window.present if is_4 else window.show_all)()
    loop.run()


def qt(version, rows):
    widgets = __import__(f"PyQt{version}.QtWidgets", fromlist=["QtWidgets"])
    core = __import__(f"PyQt{version}.QtCore", fromlist=["QtCore"])
    application = widgets.QApplication(sys.argv[:1])
    window = widgets.QWidget()
    window.setWindowTitle(TITLE)
    window.resize(400, 500)
    layout = widgets.QVBoxLayout(window)
    label = widgets.QLabel("Clicks: 0")
    button = widgets.QPushButton("Count")
    entry = widgets.QLineEdit(ENTRY)
    text = widgets.QPlainTextEdit(TEXT)
    check = widgets.QCheckBox("Agree")
    slider = widgets.QSlider(core.Qt.Orientation.Horizontal)
    slider.setRange(0, 100)
    slider.setValue(25)
    password = widgets.QLineEdit("secret")
    password.setEchoMode(widgets.QLineEdit.EchoMode.Password)
    count = 0

    def changed(*_):
        report(count, entry.text(), text.toPlainText(), check.isChecked(), slider.value())

    def clicked():
        nonlocal count
        count += 1
        label.setText(f"Clicks: {count}")
        changed()

    button.clicked.connect(clicked)
    entry.textChanged.connect(changed)
    text.textChanged.connect(changed)
    check.toggled.connect(changed)
    slider.valueChanged.connect(changed)
    for widget in (label, button, entry, text, check, slider, password):
        layout.addWidget(widget)
    if rows:
        rows_list = widgets.QListWidget()
        rows_list.addItems([f"Row {row}" for row in range(rows)])
        layout.addWidget(rows_list)
    window.show()
    application.exec()


if __name__ == "__main__":
    toolkit, row_count = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 0
    if toolkit.startswith("qt"):
        qt(toolkit[2], row_count)
    else:
        gtk({"gtk3": "3.0", "gtk4": "4.0"}[toolkit], row_count)
