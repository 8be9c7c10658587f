"""A program of a real toolkit whose elements can be found in a picture of the screen.

usage: places_app.py gtk3|gtk4|qt5|qt6|quick|chromium|firefox|swing

A window with the buttons "Probe main", "Open dialog", "Open menu" and "Open popover". A dialog (in
browsers a second window) holds the button "Probe dialog", a menu (in browsers a list of choices) the
item "Probe menu", a popover the button "Probe popover". Each probe has a colour that is nowhere
else, all over its bounds. Each line of standard output is the name of a probe that was clicked.
"""
import os
import subprocess
import sys
import tempfile

COLOURS = {"main": "#e01070", "dialog": "#10e070", "menu": "#7010e0", "popover": "#e0a010"}
TITLE = "Places"


def clicked(what):
    print(f"Probe {what}", flush=True)


def gtk(version):
    import gi
    gi.require_version("Gtk", version)
    gi.require_version("Gdk", version)
    from gi.repository import Gdk, Gio, GLib, Gtk
    is_4 = version == "4.0"
    style = "".join(
        f"#{what}, #{what} > * {{ background: {colour}; border: none; border-radius: 0; outline: none;"
        " box-shadow: none; text-shadow: none; margin: 0; padding: 0 }" for what, colour in COLOURS.items())
    style += f"modelbutton {{ background: {COLOURS['menu']}; border-radius: 0; padding: 0 }}"
    provider = Gtk.CssProvider()
    provider.load_from_data(style.encode())
    priority = Gtk.STYLE_PROVIDER_PRIORITY_USER
    if is_4:
        Gtk.StyleContext.add_provider_for_display(Gdk.Display.get_default(), provider, priority)
    else:
        Gtk.StyleContext.add_provider_for_screen(Gdk.Screen.get_default(), provider, priority)

    def button(label, action, name=""):
        made = Gtk.Button(label=label, name=name)
        made.connect("clicked", lambda *_: action())
        return made

    def probe(what, then=lambda: None):
        return button(f"Probe {what}", lambda: (clicked(what), then()), what)

    def fill(container, *parts):
        box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=12, margin_top=12,
                      margin_bottom=12, margin_start=24, margin_end=24)
        for part in parts:
            (box.append if is_4 else box.add)(part)
        (container.set_child if is_4 else container.add)(box)

    def show(part):
        (part.present if is_4 and isinstance(part, Gtk.Window) else
         part.popup if isinstance(part, Gtk.Popover) else part.show_all)()

    window = Gtk.Window(title=TITLE, default_width=360, default_height=280)
    # Draws its own decorations, with shadows where the window manager knows of such.
    window.set_titlebar(Gtk.HeaderBar() if is_4 else Gtk.HeaderBar(title=TITLE, show_close_button=True))

    def open_dialog():
        dialog = Gtk.Window(title=f"{TITLE} dialog", transient_for=window, modal=True,
                            default_width=300, default_height=100)
        fill(dialog, probe("dialog", dialog.destroy))
        show(dialog)

    if is_4:
        actions = Gio.SimpleActionGroup()
        action = Gio.SimpleAction(name="probe")
        action.connect("activate", lambda *_: clicked("menu"))
        actions.add_action(action)
        window.insert_action_group("places", actions)
        model = Gio.Menu()
        model.append("Probe menu", "places.probe")
        open_menu = Gtk.MenuButton(label="Open menu", menu_model=model)
        popover = Gtk.Popover()
        open_popover = Gtk.MenuButton(label="Open popover", popover=popover)
    else:
        menu = Gtk.Menu()
        item = Gtk.MenuItem(label="Probe menu", name="menu")
        item.connect("activate", lambda *_: clicked("menu"))
        menu.append(item)
        menu.show_all()
        open_menu = Gtk.MenuButton(label="Open menu", popup=menu)
        popover = Gtk.Popover()
        open_popover = Gtk.MenuButton(label="Open popover", popover=popover)
    fill(popover, probe("popover", popover.popdown))
    if not is_4:
        popover.get_child().show_all()
    fill(window, probe("main"), button("Open dialog", open_dialog), open_menu, open_popover)
    loop = GLib.MainLoop()
    window.connect("destroy", lambda *_: loop.quit())
    show(window)
    loop.run()


def qt(version):
    widgets = __import__(f"PyQt{version}.QtWidgets", fromlist=["QtWidgets"])
    application = widgets.QApplication(sys.argv[:1])

    def button(label, action):
        made = widgets.QPushButton(label)
        made.clicked.connect(action)
        return made

    def probe(what, then=lambda: None):
        made = button(f"Probe {what}", lambda: (clicked(what), then()))
        made.setStyleSheet(f"background: {COLOURS[what]}; border: none; padding: 4px")
        return made

    window = widgets.QMainWindow()
    window.setWindowTitle(TITLE)
    window.resize(360, 280)

    def open_dialog():
        dialog = widgets.QDialog(window)
        dialog.setWindowTitle(f"{TITLE} dialog")
        dialog.resize(300, 100)
        widgets.QVBoxLayout(dialog).addWidget(probe("dialog", dialog.accept))
        dialog.open()

    menu = window.menuBar().addMenu("Open menu")
    menu.setStyleSheet(f"QMenu::item {{ background: {COLOURS['menu']}; padding: 4px 20px }}")
    menu.addAction("Probe menu", lambda: clicked("menu"))
    # Windows of the type Popup are not in the tree; the list of a combo box is.
    popover = widgets.QComboBox()
    popover.addItems(["Open popover", "Probe popover"])
    popover.setView(widgets.QListView())
    popover.setStyleSheet(f"QListView::item {{ background: {COLOURS['popover']}; padding: 4px }}")
    popover.activated.connect(lambda row: clicked("popover") if row else None)
    centre = widgets.QWidget()
    layout = widgets.QVBoxLayout(centre)
    for part in (probe("main"), button("Open dialog", open_dialog), popover):
        layout.addWidget(part)
    window.setCentralWidget(centre)
    window.show()
    application.exec()


QUICK = """
import QtQuick
import QtQuick.Window
import QtQuick.Controls.Basic
ApplicationWindow {
    id: root; visible: true; title: "%(title)s"; width: 360; height: 280
    signal clicked(string what)
    component Probe: Button {
        required property string what
        required property color paint
        text: "Probe " + what
        background: Rectangle { color: paint }
        onClicked: root.clicked(what)
    }
    Column {
        spacing: 12; x: 24; y: 12
        Probe { what: "main"; paint: "%(main)s" }
        Button { text: "Open dialog"; onClicked: dialog.show() }
        Button { text: "Open menu"; onClicked: menu.popup() }
        Button { text: "Open popover"; onClicked: popup.open() }
    }
    Window {
        id: dialog; title: "%(title)s dialog"; transientParent: root; width: 300; height: 100
        Probe { what: "dialog"; paint: "%(dialog)s"; x: 30; y: 20; onClicked: dialog.close() }
    }
    Menu {
        id: menu
        MenuItem {
            text: "Probe menu"; onTriggered: root.clicked("menu")
            background: Rectangle { color: "%(menu)s" }
        }
    }
    Popup {
        id: popup; x: 150; y: 150; focus: true
        Probe { what: "popover"; paint: "%(popover)s"; onClicked: popup.close() }
    }
}
"""


def quick():
    from PyQt6.QtGui import QGuiApplication
    from PyQt6.QtQml import QQmlApplicationEngine
    application = QGuiApplication(sys.argv[:1])
    engine = QQmlApplicationEngine()
    engine.loadData((QUICK % {"title": TITLE, **COLOURS}).encode())
    if not engine.rootObjects():
        sys.exit("the QML modules are missing")
    engine.rootObjects()[0].clicked.connect(clicked)
    application.exec()


PAGE = """<meta charset="utf-8"><title>%(title)s</title>
<style>button, select, option { font: 16px sans-serif; border: 0; border-radius: 0; padding: 6px; outline: 0 }
[id] { margin: 12px 24px; display: block } option { background: %(menu)s !important }</style>
<script>function probe(what) { fetch("/" + what, {method: "POST"}) }</script>
<button id="main" style="background: %(main)s" onclick="probe('main')">Probe main</button>
<button id="opener" onclick="window.open('/dialog', '', 'popup,width=320,height=160,left=200,top=150')">Open dialog</button>
<select id="choice" aria-label="Open menu" onchange="probe('menu')"><option>Nothing<option>Probe menu</select>
<button id="shower" onclick="document.all.panel.style.display = 'block'">Open popover</button>
<div id="panel" style="display: none; position: fixed; left: 120px; top: 90px; padding: 20px; background: white">
<button style="background: %(popover)s" onclick="probe('popover'); this.parentNode.style.display = 'none'"
>Probe popover</button></div>"""
DIALOG = """<meta charset="utf-8"><title>%(title)s dialog</title>
<button style="background: %(dialog)s; border: 0; margin: 24px; padding: 6px" onclick="fetch('/dialog',
{method: 'POST'}).then(() => window.close())">Probe dialog</button>"""


def serve():
    """Serves the page to a browser; its address."""
    import http.server
    import threading

    class Pages(http.server.BaseHTTPRequestHandler):
        def do_GET(self):
            page = DIALOG if self.path == "/dialog" else PAGE
            self.answer((page % {"title": TITLE, **COLOURS}).encode())

        def do_POST(self):
            clicked(self.path[1:])
            self.answer(b"")

        def answer(self, body):
            self.send_response(200)
            self.send_header("Content-Type", "text/html")
            self.send_header("Content-Length", str(len(body)))
            self.end_headers()
            self.wfile.write(body)

        def log_message(self, *_):
            pass

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Pages)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return f"http://127.0.0.1:{server.server_port}/"


def chromium():
    from desktop_tools import CHROMIUM
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        scale = os.environ.get("PLACES_SCALE", "1")
        subprocess.run([*CHROMIUM, f"--user-data-dir={folder}", f"--force-device-scale-factor={scale}",
                        "--window-size=560,480", "--window-position=90,70", serve()], check=False)


def firefox():
    with tempfile.TemporaryDirectory(ignore_cleanup_errors=True) as folder:
        scale = os.environ.get("PLACES_SCALE", "1")
        preferences = {"layout.css.devPixelsPerPx": f'"{scale}"', "accessibility.force_disabled": -1,
                       "browser.shell.checkDefaultBrowser": "false", "browser.aboutwelcome.enabled": "false",
                       "datareporting.policy.dataSubmissionEnabled": "false",
                       "dom.disable_open_during_load": "false",
                       "browser.startup.homepage_override.mstone": '"ignore"',
                       "toolkit.telemetry.reportingpolicy.firstRun": "false"}
        with open(f"{folder}/user.js", "w") as file:
            for name, value in preferences.items():
                file.write(f'user_pref("{name}", {value});\n')
        browser = "firefox-esr" if os.path.exists("/usr/bin/firefox-esr") else "firefox"
        subprocess.run([browser, "--no-remote", "--profile", folder, "--width", "600", "--height", "500",
                        serve()], check=False)


SWING = """
import java.awt.*;
import javax.swing.*;

class Places {
    static void clicked(String what) {
        System.out.println("Probe " + what);
        System.out.flush();
    }

    static class Probe extends JButton {
        Probe(String what, String paint, Runnable then) {
            super("Probe " + what);
            setUI(new javax.swing.plaf.basic.BasicButtonUI());
            setBackground(Color.decode(paint));
            setBorder(BorderFactory.createEmptyBorder(6, 12, 6, 12));
            setFocusPainted(false);
            addActionListener(event -> { clicked(what); then.run(); });
        }
    }

    static JButton button(String label, Runnable action) {
        JButton made = new JButton(label);
        made.addActionListener(event -> action.run());
        return made;
    }

    static void show() {
        JFrame frame = new JFrame("%(title)s");
        frame.setDefaultCloseOperation(JFrame.EXIT_ON_CLOSE);
        JMenuBar bar = new JMenuBar();
        JMenu menu = new JMenu("Open menu");
        JMenuItem item = new JMenuItem("Probe menu");
        item.setUI(new javax.swing.plaf.basic.BasicMenuItemUI() {
            protected void paintMenuItem(Graphics g, JComponent c, Icon check, Icon arrow, Color b,
                                         Color f, int gap) {
                g.setColor(Color.decode("%(menu)s"));
                g.fillRect(0, 0, c.getWidth(), c.getHeight());
            }
        });
        item.addActionListener(event -> clicked("menu"));
        item.setPreferredSize(new Dimension(160, 30));
        menu.add(item);
        bar.add(menu);
        frame.setJMenuBar(bar);
        JPanel panel = new JPanel();
        panel.add(new Probe("main", "%(main)s", () -> {}));
        panel.add(button("Open dialog", () -> {
            JDialog dialog = new JDialog(frame, "%(title)s dialog");
            dialog.getContentPane().setLayout(new FlowLayout());
            dialog.add(new Probe("dialog", "%(dialog)s", dialog::dispose));
            dialog.setSize(300, 100);
            dialog.setLocationRelativeTo(frame);
            dialog.setVisible(true);
        }));
        JPopupMenu popover = new JPopupMenu();
        popover.add(new Probe("popover", "%(popover)s", () -> popover.setVisible(false)));
        panel.add(button("Open popover", () -> popover.show(panel, 60, 80)));
        frame.setContentPane(panel);
        frame.setSize(360, 280);
        frame.setLocation(170, 130);
        frame.setVisible(true);
    }

    public static void main(String[] arguments) {
        SwingUtilities.invokeLater(Places::show);
    }
}
"""


def swing():
    scale = os.environ.get("PLACES_SCALE", "1")
    with tempfile.TemporaryDirectory() as folder:
        with open(f"{folder}/Places.java", "w") as file:
            file.write(SWING % {"title": TITLE, **COLOURS})
        subprocess.run(["java", f"-Dsun.java2d.uiScale={scale}", "-cp",
                        "/usr/share/java/java-atk-wrapper.jar", "-Djava.library.path=/usr/lib/jni",
                        "-Djavax.accessibility.assistive_technologies=org.GNOME.Accessibility.AtkWrapper",
                        f"{folder}/Places.java"], check=False)


if __name__ == "__main__":
    toolkit = sys.argv[1]
    if toolkit.startswith("gtk"):
        gtk(f"{toolkit[-1]}.0")
    elif toolkit.startswith("qt"):
        qt(toolkit[-1])
    else:
        {"quick": quick, "chromium": chromium, "firefox": firefox, "swing": swing}[toolkit]()
