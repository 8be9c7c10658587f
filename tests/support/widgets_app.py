"""A window with the usual widgets, in a real toolkit, for tests of the accessibility tree.

usage: widgets_app.py gtk3|gtk4|qt5|qt6 TITLE [ROWS]

A label that counts the presses of the button "Push"; the fields "Name" and "Notes" (several lines);
the check box "Agree"; the slider "Volume"; a scrolled list of ROWS rows (default 50).
"""
import sys

TEXT = "old"
NOTES = "first\nsecond"


def gtk_window(Gtk, window, title, rows, add, scrolled_add):
    """What GTK 3 and 4 have in common."""
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=4)
    label = Gtk.Label(label="Pushed 0 times")
    pushed = [0]

    def push(_):
        pushed[0] += 1
        label.set_label(f"Pushed {pushed[0]} times")

    button = Gtk.Button(label="Push")
    button.connect("clicked", push)
    entry = Gtk.Entry(text=TEXT)
    notes = Gtk.TextView()
    notes.get_buffer().set_text(NOTES)
    check = Gtk.CheckButton(label="Agree")
    slider = Gtk.Scale.new_with_range(Gtk.Orientation.HORIZONTAL, 0, 100, 1)
    slider.set_value(25)
    store = Gtk.ListStore(str)
    for row in range(rows):
        store.append([f"Row {row}"])
    view = Gtk.TreeView(model=store, headers_visible=False)
    view.append_column(Gtk.TreeViewColumn("Row", Gtk.CellRendererText(), text=0))
    scrolled = Gtk.ScrolledWindow(vexpand=True, min_content_height=120)
    scrolled_add(scrolled, view)
    for child in (label, button, entry, notes, check, slider, scrolled):
        add(box, child)
    return box, {"Name": entry, "Notes": notes, "Volume": slider}


def gtk3(title, rows):
    import gi
    gi.require_version("Gtk", "3.0")
    from gi.repository import Gtk
    window = Gtk.Window(title=title, default_width=300, default_height=400)
    window.set_titlebar(Gtk.HeaderBar(title=title, show_close_button=True))
    add = lambda box, child: box.add(child)
    box, named = gtk_window(Gtk, window, title, rows, add, add)
    for name, widget in named.items():
        widget.get_accessible().set_name(name)
    window.add(box)
    window.connect("destroy", Gtk.main_quit)
    window.show_all()
    Gtk.main()


def gtk4(title, rows):
    import gi
    gi.require_version("Gtk", "4.0")
    from gi.repository import Gtk

    def activate(app):
        window = Gtk.ApplicationWindow(application=app, title=title, default_width=300,
                                       default_height=400)
        box, named = gtk_window(Gtk, window, title, rows, lambda box, child: box.append(child),
                                lambda scrolled, child: scrolled.set_child(child))
        for name, widget in named.items():
            widget.update_property([Gtk.AccessibleProperty.LABEL], [name])
        window.set_child(box)
        window.present()

    application = Gtk.Application()
    application.connect("activate", activate)
    application.run()


def qt(version, title, rows):
    widgets = __import__(f"PyQt{version}.QtWidgets", fromlist=["QtWidgets"])
    core = __import__(f"PyQt{version}.QtCore", fromlist=["QtCore"])
    application = widgets.QApplication(sys.argv[:1])
    window = widgets.QWidget()
    window.setWindowTitle(title)
    window.resize(300, 400)
    layout = widgets.QVBoxLayout(window)
    label = widgets.QLabel("Pushed 0 times")
    pushed = [0]

    def push():
        pushed[0] += 1
        label.setText(f"Pushed {pushed[0]} times")

    button = widgets.QPushButton("Push")
    button.clicked.connect(push)
    entry = widgets.QLineEdit(TEXT)
    entry.setAccessibleName("Name")
    notes = widgets.QPlainTextEdit(NOTES)
    notes.setAccessibleName("Notes")
    notes.setMaximumHeight(60)
    check = widgets.QCheckBox("Agree")
    slider = widgets.QSlider(core.Qt.Orientation.Horizontal)
    slider.setAccessibleName("Volume")
    slider.setRange(0, 100)
    slider.setValue(25)
    view = widgets.QListView()
    view.setModel(core.QStringListModel([f"Row {row}" for row in range(rows)]))
    for child in (label, button, entry, notes, check, slider, view):
        layout.addWidget(child)
    window.show()
    application.exec()


if __name__ == "__main__":
    toolkit, title = sys.argv[1:3]
    rows = int(sys.argv[3]) if len(sys.argv) > 3 else 50
    if toolkit.startswith("qt"):
        qt(toolkit[2], title, rows)
    else:
        {"gtk3": gtk3, "gtk4": gtk4}[toolkit](title, rows)
