"""One of each widget of a toolkit, for tests of what elements say and do.

usage: gallery.py gtk3|gtk4|qt5|qt6|qml5|qml6 [ROWS]

Each line of standard output is what has changed: {"widget": value}. A push button says afterwards that
it was pushed; after it the focus comes to a password. ROWS (GTK) is how long the list is.

That button, "Done" in the dialog that "Dialog" opens, "Open" in the menu "Menu" and "Apple" in what
"Popover" opens each have a colour that is nowhere else, all over their bounds.
"""
import json
import os
import sys

FOLDER = os.path.dirname(os.path.abspath(__file__))
TITLE = "Gallery"
COLOURS = {"push": "#e01070", "dialog": "#10e070", "open": "#7010e0", "popover": "#e0a010"}
FRUIT = ("Apple", "Pear", "Plum")
TEXT = "first line\nsecond line"
REFUSED = "refused"  # by GTK's entry, which keeps its text


def report(widget, value):
    print(json.dumps({widget: value}), flush=True)


def gtk(version, rows):
    import gi
    gi.require_version("Gtk", version)
    gi.require_version("Gdk", version)
    from gi.repository import Gdk, Gio, GLib, Gtk
    is_4 = version == "4.0"
    provider = Gtk.CssProvider()
    provider.load_from_data("".join(
        f"{selector} {{ background: {colour}; border: none; border-radius: 0; outline: none; box-shadow: none;"
        " text-shadow: none; margin: 0; padding: 0 }" for selector, colour in [
            ("menu menuitem, modelbutton", COLOURS["open"]),
            *((f"#{name}, #{name} > *", colour) for name, colour in COLOURS.items())]).encode())
    if is_4:
        Gtk.StyleContext.add_provider_for_display(Gdk.Display.get_default(), provider, 800)
    else:
        Gtk.StyleContext.add_provider_for_screen(Gdk.Screen.get_default(), provider, 800)
    window = Gtk.Window(title=TITLE, default_width=500, default_height=700)
    # Draws its own decorations, with shadows where the window manager knows of such.
    window.set_titlebar(Gtk.HeaderBar() if is_4 else Gtk.HeaderBar(title=TITLE, show_close_button=True))
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=2)

    def put(parent, child):
        (parent.append if hasattr(parent, "append") else parent.add)(child)

    def row(*widgets):
        line = Gtk.Box(spacing=4)
        for widget in widgets:
            put(line, widget)
        put(box, line)

    def button(label, name, action):
        made = Gtk.Button(label=label, name=name)
        made.connect("clicked", lambda *_: (report(name, True), action()))
        return made

    def open_dialog():
        dialog = Gtk.Window(title="Dialog", transient_for=window, modal=True, default_width=300,
                            default_height=100)
        inside = Gtk.Box(margin_top=12, margin_bottom=12, margin_start=24, margin_end=24)
        put(inside, button("Done", "dialog", dialog.destroy))
        (dialog.set_child if is_4 else dialog.add)(inside)
        (dialog.present if is_4 else dialog.show_all)()

    push = button("Push", "push", lambda: push.set_label("Pushed"))
    toggle = Gtk.ToggleButton(label="Toggle")
    password = Gtk.PasswordEntry(text="secret") if is_4 else Gtk.Entry(text="secret",
                                                                       visibility=False)
    toggle.connect("toggled", lambda *_: report("toggle", toggle.get_active()))
    check, switch = Gtk.CheckButton(label="Check"), Gtk.Switch()
    check.connect("toggled", lambda *_: report("check", check.get_active()))
    switch.connect("notify::active", lambda *_: report("switch", switch.get_active()))
    link = Gtk.LinkButton(uri="about:blank", label="Link")
    link.connect("activate-link", lambda *_: report("link", True) or True)
    row(push, password, toggle, check, switch, link)
    actions = Gio.SimpleActionGroup()
    action = Gio.SimpleAction.new("open", None)
    action.connect("activate", lambda *_: report("open", True))
    actions.add_action(action)
    window.insert_action_group("win", actions)
    menu, file = Gio.Menu(), Gio.Menu()
    file.append("Open", "win.open")
    menu.append_submenu("Menu", file)
    bar = Gtk.PopoverMenuBar.new_from_model(menu) if is_4 else Gtk.MenuBar.new_from_model(menu)
    popover = Gtk.Popover()
    apple = button("Apple", "popover", popover.popdown)
    (popover.set_child if is_4 else popover.add)(apple)
    apple.set_visible(True)
    row(bar, button("Dialog", "opener", open_dialog), Gtk.MenuButton(label="Popover", popover=popover))
    if is_4:
        one, two = Gtk.CheckButton(label="One"), Gtk.CheckButton(label="Two")
        two.set_group(one)
    else:
        one = Gtk.RadioButton(label="One")
        two = Gtk.RadioButton.new_with_label_from_widget(one, "Two")
    two.set_active(True)
    one.connect("toggled", lambda *_: report("one", one.get_active()))
    combo, editable = Gtk.ComboBoxText(), Gtk.ComboBoxText.new_with_entry()
    for choice in (combo, editable):
        for fruit in FRUIT:
            choice.append_text(fruit)
        choice.set_active(1)
    row(one, two, combo, editable)
    if is_4:
        row(Gtk.DropDown.new_from_strings(FRUIT), Gtk.EditableLabel(text="editable label"))
    spin = Gtk.SpinButton.new_with_range(0, 100, 1)
    scale = Gtk.Scale.new_with_range(Gtk.Orientation.HORIZONTAL, 0, 100, 1)
    scale.set_size_request(120, -1)
    for number, name in ((spin, "spin"), (scale, "slider")):
        number.set_value(25)
        number.connect("value-changed", lambda it, name=name: report(name, it.get_value()))
    progress, level = Gtk.ProgressBar(fraction=0.4), Gtk.LevelBar(value=0.6)
    row(spin, scale, progress, level)
    entry, search, area = Gtk.Entry(text="Grüße"), Gtk.SearchEntry(text="sought"), Gtk.TextView()
    text = area.get_buffer()
    text.set_text(TEXT)

    def edited(*_):
        if entry.get_text() == REFUSED:
            entry.set_text("Grüße")
        report("entry", entry.get_text())

    entry.connect("changed", edited)
    text.connect("changed", lambda *_: report("text", text.get_text(*text.get_bounds(), False)))
    row(entry, search, area)
    expander = Gtk.Expander(label="More")
    (expander.set_child if is_4 else expander.add)(Gtk.Label(label="hidden detail"))
    expander.connect("notify::expanded", lambda *_: report("more", expander.get_expanded()))
    frame = Gtk.Frame(label="Frame")
    (frame.set_child if is_4 else frame.add)(Gtk.Label(label="in a frame", selectable=True))
    row(expander, frame)
    book = Gtk.Notebook()
    for name in ("First", "Second"):
        book.append_page(Gtk.Label(label=f"{name} page"), Gtk.Label(label=name))
    book.connect("switch-page", lambda _, __, page: report("tab", page))
    put(box, book)
    store = Gtk.TreeStore(str, int)
    for number in reversed(range(rows)):  # since the last one is found by going through all
        first = store.insert(None, 0, [f"cell{number}_0", number])
    store.append(first, ["below", 7])
    tree = Gtk.TreeView(model=store)
    for column, title in enumerate(("Text", "Number")):
        tree.append_column(Gtk.TreeViewColumn(title, Gtk.CellRendererText(), text=column))
    scrolled = Gtk.ScrolledWindow(vexpand=True)
    (scrolled.set_child if is_4 else scrolled.add)(tree)
    put(box, scrolled)
    (window.set_child if is_4 else window.add)(box)
    (window.present if is_4 else window.show_all)()
    GLib.MainLoop().run()


def qt(version):
    widgets = __import__(f"PyQt{version}.QtWidgets", fromlist=["QtWidgets"])
    core = __import__(f"PyQt{version}.QtCore", fromlist=["QtCore"])
    application = widgets.QApplication(sys.argv[:1])
    window = widgets.QMainWindow(windowTitle=TITLE)
    window.resize(500, 700)
    layout = widgets.QVBoxLayout()
    central = widgets.QWidget()
    central.setLayout(layout)
    window.setCentralWidget(central)

    def row(*items):
        line = widgets.QHBoxLayout()
        for item in items:
            line.addWidget(item)
        layout.addLayout(line)

    def button(label, name, action):
        made = widgets.QPushButton(label)
        made.clicked.connect(lambda: (report(name, True), action()))
        made.setStyleSheet(f"background: {COLOURS[name]}; border: none; padding: 4px" if name in COLOURS else "")
        return made

    def open_dialog():
        dialog = widgets.QDialog(window)
        dialog.setWindowTitle("Dialog")
        dialog.resize(300, 100)
        widgets.QVBoxLayout(dialog).addWidget(button("Done", "dialog", dialog.accept))
        dialog.open()

    push = button("Push", "push", lambda: push.setText("Pushed"))
    toggle = widgets.QPushButton("Toggle", checkable=True)
    password = widgets.QLineEdit("secret")
    password.setEchoMode(widgets.QLineEdit.EchoMode.Password)
    toggle.toggled.connect(lambda on: report("toggle", on))
    check, tool = widgets.QCheckBox("Check"), widgets.QToolButton(text="Tool")
    check.toggled.connect(lambda on: report("check", on))
    link = widgets.QLabel('<a href="about:blank">Link</a>')
    link.linkActivated.connect(lambda *_: report("link", True))
    row(push, password, toggle, check, tool, link)
    # Windows of the type Popup are not in the tree; the list of a combo box is.
    popover = widgets.QComboBox()
    popover.addItems(["Popover", "Apple"])
    popover.activated.connect(lambda *_: report("popover", True))
    row(button("Dialog", "opener", open_dialog), popover)
    one, two = widgets.QRadioButton("One"), widgets.QRadioButton("Two", checked=True)
    one.toggled.connect(lambda on: report("one", on))
    combo, editable = widgets.QComboBox(), widgets.QComboBox(editable=True)
    for choice in (combo, editable):
        choice.addItems(FRUIT)
        choice.setCurrentIndex(1)
    row(one, two, combo, editable)
    spin = widgets.QSpinBox(value=25)
    slider = widgets.QSlider(core.Qt.Orientation.Horizontal, value=25)
    spin.valueChanged.connect(lambda value: report("spin", value))
    slider.valueChanged.connect(lambda value: report("slider", value))
    row(spin, slider, widgets.QProgressBar(value=40), widgets.QDateEdit(core.QDate(2024, 2, 3)))
    entry, area = widgets.QLineEdit("Grüße"), widgets.QPlainTextEdit(TEXT)
    entry.textChanged.connect(lambda text: report("entry", text))
    area.textChanged.connect(lambda: report("text", area.toPlainText()))
    row(entry, area)
    group = widgets.QGroupBox("More", checkable=True, checked=False)
    group.toggled.connect(lambda on: report("more", on))
    row(group, widgets.QTextBrowser(plainText="read only text"))
    tabs = widgets.QTabWidget()
    for name in ("First", "Second"):
        tabs.addTab(widgets.QLabel(f"{name} page"), name)
    tabs.currentChanged.connect(lambda index: report("tab", index))
    layout.addWidget(tabs)
    table = widgets.QTableWidget(2, 2)
    tree = widgets.QTreeWidget(columnCount=2)
    for number in range(2):
        table.setItem(number, 0, widgets.QTableWidgetItem(f"cell{number}_0"))
        table.setItem(number, 1, widgets.QTableWidgetItem(str(number)))
        item = widgets.QTreeWidgetItem(tree, [f"node{number}", str(number)])
        widgets.QTreeWidgetItem(item, [f"below{number}", "7"])
    listed = widgets.QListWidget()
    listed.addItems(["Item one", "Item two"])
    row(table, tree, listed)
    menu = window.menuBar().addMenu("Menu")
    menu.addAction("Open").triggered.connect(lambda *_: report("open", True))
    menu.setStyleSheet(f"QMenu::item {{ background: {COLOURS['open']}; padding: 4px 20px }}")
    menu.aboutToShow.connect(lambda: report("menu", True))
    window.show()
    application.exec()


def qml(version):
    gui = __import__(f"PyQt{version}.QtGui", fromlist=["QtGui"])
    core = __import__(f"PyQt{version}.QtCore", fromlist=["QtCore"])
    engine = __import__(f"PyQt{version}.QtQml", fromlist=["QtQml"])
    __import__(f"PyQt{version}.QtQuick")
    application = gui.QGuiApplication(sys.argv[:1])
    os.environ["QT_QUICK_BACKEND"] = "software"

    class Reporter(core.QObject):
        @core.pyqtSlot(str, str)
        def report(self, widget, value):
            report(widget, json.loads(value))

    reporter = Reporter()
    loader = engine.QQmlApplicationEngine()
    loader.rootContext().setContextProperty("reporter", reporter)
    loader.load(core.QUrl.fromLocalFile(os.path.join(FOLDER, "gallery.qml")))
    if loader.rootObjects():
        application.exec()


if __name__ == "__main__":
    name = sys.argv[1]
    if name.startswith("gtk"):
        gtk(name[3] + ".0", int((sys.argv[2:] or ["2"])[0]))
    else:
        (qml if name.startswith("qml") else qt)(name[-1])
