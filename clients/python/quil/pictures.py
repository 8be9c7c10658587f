"""Pictures, as the runtime takes them."""
from __future__ import annotations

import base64
import os
import struct
from typing import Optional, Union

from .observation import Rectangle


class Picture(bytes):
    """A PNG; its bytes are the file's."""

    bounds: Optional[Rectangle] = None
    """What it shows, in global screen coordinates, where that is known."""

    @classmethod
    def of(cls, data_url: str, bounds: Optional[Rectangle] = None) -> "Picture":
        picture = cls(base64.b64decode(data_url.partition(",")[2]))
        picture.bounds = bounds
        return picture

    @property
    def size(self) -> "tuple[int, int]":
        """Width and height in pixels."""
        width, height = struct.unpack(">II", self[16:24])
        return width, height

    def save(self, path: "Union[str, os.PathLike[str]]") -> None:
        """Writes it to a file."""
        with open(path, "wb") as file:
            file.write(self)
