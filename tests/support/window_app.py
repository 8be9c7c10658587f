"""One window of a real toolkit, for tests that look at it from outside.

usage: window_app.py gtk3|gtk4|qt5|qt6 TITLE WIDTH HEIGHT [OPTION...]

GTK windows have client-side decorations. Options: menu (opens a menu at once; gtk3), behind
(does not ask for the focus; gtk3), id=APPLICATION.ID
(gtk3, gtk4), service (shows its window when the session bus asks for it; gtk4).
"""
import sys


def gtk3(title, width, height, options):
    import gi
    gi.require_version("Gtk", "3.0")
    from gi.repository import GLib, Gtk
    for option in options:
        if option.startswith("id="):
            GLib.set_prgname(option[3:])
    window = Gtk.Window(title=title, default_width=width, default_height=height)
    window.set_focus_on_map("behind" not in options)
    window.set_titlebar(Gtk.HeaderBar(title=title, show_close_button=True))
    window.connect("destroy", Gtk.main_quit)
    window.show_all()
    if "menu" in options:
        menu = Gtk.Menu()
        menu.append(Gtk.MenuItem(label="Entry"))
        menu.show_all()
        window.connect("map-event", lambda *_: menu.popup_at_widget(window, 5, 5, None))
    Gtk.main()


def gtk4(title, width, height, options):
    import gi
    gi.require_version("Gtk", "4.0")
    from gi.repository import Gio, Gtk
    name = next((option[3:] for option in options if option.startswith("id=")), None)

    def activate(app):
        Gtk.ApplicationWindow(application=app, title=title, default_width=width,
                              default_height=height).present()

    flags = Gio.ApplicationFlags.IS_SERVICE if "service" in options else 0
    application = Gtk.Application(application_id=name, flags=flags)
    application.connect("activate", activate)
    application.run()


def qt(version, title, width, height):
    widgets = __import__(f"PyQt{version}.QtWidgets", fromlist=["QtWidgets"])
    application = widgets.QApplication(sys.argv[:1])
    window = widgets.QWidget()
    window.setWindowTitle(title)
    window.resize(width, height)
    window.show()
    application.exec()


if __name__ == "__main__":
    toolkit, arguments = sys.argv[1], sys.argv[2:]
    place = (arguments[0], int(arguments[1]), int(arguments[2]))
    if toolkit.startswith("qt"):
        qt(toolkit[2], *place)
    else:
        {"gtk3": gtk3, "gtk4": gtk4}[toolkit](*place, arguments[3:])
