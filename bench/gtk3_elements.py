#!/usr/bin/python3
"""A GTK 3 window with about so many accessible elements: a flat list or a nested tree of the usual
widgets.

usage: gtk3_elements.py flat|nested COUNT
"""
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gtk  # noqa: E402

FANOUT = 8


def widget(number):
    kind = number % 4
    if kind == 0:
        return Gtk.Button(label=f"Button {number}")
    if kind == 1:
        return Gtk.Label(label=f"Label {number}")
    if kind == 2:
        return Gtk.CheckButton(label=f"Check {number}", active=number % 3 == 0)
    return Gtk.Entry(text=f"Text {number}")


def fill(box, first, count):
    """Puts `count` elements into a box: widgets, or boxes of about as many each."""
    if count <= FANOUT:
        for number in range(first, first + count):
            box.add(widget(number))
        return
    share, rest = divmod(count, FANOUT)
    for part in range(FANOUT):
        size = share + (part < rest)
        inner = Gtk.Box(orientation=Gtk.Orientation.VERTICAL if part % 2 else Gtk.Orientation.HORIZONTAL)
        fill(inner, first, size - 1)  # the box is an element itself
        box.add(inner)
        first += size


def main(shape, count):
    window = Gtk.Window(title=f"{shape} {count}", default_width=640, default_height=480)
    window.connect("destroy", Gtk.main_quit)
    scrolled = Gtk.ScrolledWindow()
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
    if shape == "flat":
        for number in range(count):
            box.add(widget(number))
    else:
        fill(box, 0, count)
    scrolled.add(box)
    window.add(scrolled)
    window.show_all()
    Gtk.main()


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]))
