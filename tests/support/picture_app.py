"""A window whose every pixel is known, for tests that take its picture.

usage: picture_app.py TITLE WIDTH HEIGHT [transparent|shaped]
"""
import struct
import sys


def pixel(x, y, kind):
    """Red, green, blue and alpha that the program paints, the colours multiplied by alpha."""
    alpha = (255, 170, 85, 0)[(x // 10 + y // 10) % 4] if kind == "transparent" else 255
    red, green, blue = 255 * (x // 7 % 2), (x * 37 + y * 11) % 256, 255 * (y // 5 % 2)
    return tuple(value * alpha // 255 for value in (red, green, blue)) + (alpha,)


def divided(red, green, blue, alpha):
    """The pixel as picture files have it, the colours not multiplied by alpha."""
    return bytes((value * 255 + alpha // 2) // alpha if alpha else 0
                 for value in (red, green, blue)) + bytes([alpha])


def shape(width, height):
    """x, y, width and height of the only part that a shaped window has."""
    return 20, 10, width - 50, height - 30


def expected(width, height, kind=""):
    """The picture of the window at two pixels a point, four bytes each."""
    left, top, columns, rows = shape(width, height)
    exists = lambda x, y: (kind != "shaped" or
                           left <= x < left + columns and top <= y < top + rows)
    lines = []
    for y in range(height):
        lines += 2 * [b"".join(2 * (divided(*pixel(x, y, kind)) if exists(x, y) else bytes(4))
                               for x in range(width))]
    return b"".join(lines)


def main(title, width, height, kind=""):
    from PyQt5.QtCore import Qt
    from PyQt5.QtGui import QImage, QPainter, QRegion
    from PyQt5.QtWidgets import QApplication, QWidget
    data = b"".join(struct.pack("=I", alpha << 24 | red << 16 | green << 8 | blue)
                    for y in range(height) for x in range(width)
                    for red, green, blue, alpha in [pixel(x, y, kind)])
    image = QImage(data, width, height, QImage.Format_ARGB32_Premultiplied)

    class Window(QWidget):
        def paintEvent(self, _):
            painter = QPainter(self)
            painter.setCompositionMode(QPainter.CompositionMode_Source)
            painter.drawImage(0, 0, image)

    application = QApplication(sys.argv[:1])
    window = Window()
    window.setWindowTitle(title)
    window.setFixedSize(width, height)
    if kind == "transparent":
        window.setAttribute(Qt.WA_TranslucentBackground)
    if kind == "shaped":
        window.setMask(QRegion(*shape(width, height)))
    window.show()
    application.exec()


if __name__ == "__main__":
    main(sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), *sys.argv[4:])
