"""One of each widget of a toolkit, for tests of what elements say and do.

usage: gallery.py gtk3|gtk4|qt5|qt6|qml5|qml6

Each line of standard output is what has changed: {"widget": value}.
"""
import json
import os
import sys

FOLDER = os.path.dirname(os.path.abspath(__file__))
TITLE = "Gallery"
FRUIT = ("Apple", "Pear", "Plum")


def report(widget, value):
    print(json.dumps({widget: value}), flush=True)


def gtk(version):
    import gi
    gi.require_version("Gtk", version)
    from gi.repository import Gio, GLib, Gtk
    is_4 = version == "4.0"
    window = Gtk.Window(title=TITLE, default_width=500, default_height=700)
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=2)

    def put(parent, child):
        (parent.append if hasattr(parent, "append") else parent.add)(child)

    def row(*widgets):
        line = Gtk.Box(spacing=4)
        for widget in widgets:
            put(line, widget)
        put(box, line)

    push, toggle = Gtk.Button(label="Push"), Gtk.ToggleButton(label="Toggle")
    push.connect("clicked", lambda *_: report("push", True))
    toggle.connect("toggled", lambda *_: report("toggle", toggle.get_active()))
    check, switch = Gtk.CheckButton(label="Check"), Gtk.Switch()
    check.connect("toggled", lambda *_: report("check", check.get_active()))
    switch.connect("notify::active", lambda *_: report("switch", switch.get_active()))
    link = Gtk.LinkButton(uri="about:blank", label="Link")
    link.connect("activate-link", lambda *_: report("link", True) or True)
    row(push, toggle, check, switch, link)
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
        row(Gtk.DropDown.new_from_strings(FRUIT), Gtk.EditableLabel(text="editable label"),
            Gtk.Spinner(spinning=True))
    spin = Gtk.SpinButton.new_with_range(0, 100, 1)
    scale = Gtk.Scale.new_with_range(Gtk.Orientation.HORIZONTAL, 0, 100, 1)
    scale.set_size_request(120, -1)
    for number, name in ((spin, "spin"), (scale, "slider")):
        number.set_value(25)
        number.connect("value-changed", lambda it, name=name: report(name, it.get_value()))
    progress, level = Gtk.ProgressBar(fraction=0.4), Gtk.LevelBar(value=0.6)
    row(spin, scale, progress, level)
    entry, search = Gtk.Entry(text="entry text"), Gtk.SearchEntry(text="sought")
    password = Gtk.PasswordEntry(text="secret") if is_4 else Gtk.Entry(text="secret",
                                                                       visibility=False)
    entry.connect("changed", lambda *_: report("entry", entry.get_text()))
    row(entry, search, password)
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
    for number in range(2):
        parent = store.append(None, [f"cell{number}_0", number])
        store.append(parent, [f"below{number}", 7])
    tree = Gtk.TreeView(model=store)
    for column, title in enumerate(("Text", "Number")):
        tree.append_column(Gtk.TreeViewColumn(title, Gtk.CellRendererText(), text=column))
    scrolled = Gtk.ScrolledWindow(vexpand=True)
    (scrolled.set_child if is_4 else scrolled.add)(tree)
    put(box, scrolled)
    actions = Gio.SimpleActionGroup()
    for name in ("open", "other"):
        action = Gio.SimpleAction.new(name, None)
        action.connect("activate", lambda *_, name=name: report(name, True))
        actions.add_action(action)
    window.insert_action_group("win", actions)
    menu, file = Gio.Menu(), Gio.Menu()
    file.append("Open", "win.open")
    menu.append_submenu("File", file)
    bar = Gtk.PopoverMenuBar.new_from_model(menu) if is_4 else Gtk.MenuBar.new_from_model(menu)
    menu_button = Gtk.MenuButton(label="Menu", menu_model=file)
    row(bar, menu_button)
    if not is_4:
        status = Gtk.Statusbar()
        status.push(0, "status text")
        put(box, status)
    else:
        flow = Gtk.ListBox()
        for name in ("Item one", "Item two"):
            flow.append(Gtk.Label(label=name))
        put(box, flow)
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

    push, toggle = widgets.QPushButton("Push"), widgets.QPushButton("Toggle", checkable=True)
    push.clicked.connect(lambda: report("push", True))
    toggle.toggled.connect(lambda on: report("toggle", on))
    check, tool = widgets.QCheckBox("Check"), widgets.QToolButton(text="Tool")
    check.toggled.connect(lambda on: report("check", on))
    link = widgets.QLabel('<a href="about:blank">Link</a>')
    link.linkActivated.connect(lambda *_: report("link", True))
    row(push, toggle, check, tool, link)
    one, two = widgets.QRadioButton("One"), widgets.QRadioButton("Two", checked=True)
    one.toggled.connect(lambda on: report("one", on))
    combo, editable = widgets.QComboBox(), widgets.QComboBox(editable=True)
    for choice in (combo, editable):
        choice.addItems(FRUIT)
        choice.setCurrentIndex(1)
    row(one, two, combo, editable)
    spin, dial = widgets.QSpinBox(value=25), widgets.QDial(value=25)
    slider = widgets.QSlider(core.Qt.Orientation.Horizontal, value=25)
    spin.valueChanged.connect(lambda value: report("spin", value))
    slider.valueChanged.connect(lambda value: report("slider", value))
    row(spin, dial, slider, widgets.QProgressBar(value=40),
        widgets.QDateEdit(core.QDate(2024, 2, 3)))
    entry, password = widgets.QLineEdit("entry text"), widgets.QLineEdit("secret")
    entry.textChanged.connect(lambda text: report("entry", text))
    password.setEchoMode(widgets.QLineEdit.EchoMode.Password)
    row(entry, password, widgets.QLCDNumber())
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
    menu = window.menuBar().addMenu("File")
    menu.addAction("Open").triggered.connect(lambda *_: report("open", True))
    menu.addAction("Marked").setCheckable(True)
    menu.aboutToShow.connect(lambda: report("menu", True))
    window.statusBar().showMessage("status text")
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
        gtk(name[3] + ".0")
    else:
        (qml if name.startswith("qml") else qt)(name[-1])
