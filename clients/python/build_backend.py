"""Builds the wheel, with nothing but the standard library, so that it can be installed from the tree without a network.

With QUIL_WHEEL_RUNTIME, the path of a runtime's executable, the wheel carries it and is for this platform alone;
QUIL_WHEEL_PLATFORM is then the platform's tag.
"""
import base64
import hashlib
import os
import re
import tarfile
import zipfile

HERE = os.path.dirname(os.path.abspath(__file__))


def _project(member):
    with open(os.path.join(HERE, "pyproject.toml"), encoding="utf-8") as file:
        return re.search(rf'^{member} = "(.*)"', file.read(), re.M).group(1)


NAME, VERSION = _project("name"), _project("version")
INFO = f"{NAME}-{VERSION}.dist-info"


def _files():
    for folder, _, names in os.walk(os.path.join(HERE, NAME)):
        for name in sorted(names):
            if name.endswith((".py", ".json", "py.typed")):
                yield os.path.relpath(os.path.join(folder, name), HERE)


def _metadata(tag, pure):
    yield f"{INFO}/METADATA", (f"Metadata-Version: 2.1\nName: {NAME}\nVersion: {VERSION}\nSummary: {_project('description')}\n"
                               f"Requires-Python: {_project('requires-python')}\n")
    yield f"{INFO}/WHEEL", f"Wheel-Version: 1.0\nGenerator: {NAME}\nRoot-Is-Purelib: {str(pure).lower()}\nTag: {tag}\n"
    yield f"{INFO}/entry_points.txt", "[pytest11]\nquil = quil.pytest_plugin\n"


def _write(folder, contents, tag, pure):
    """Writes a wheel of (name, bytes, mode)."""
    name = f"{NAME}-{VERSION}-{tag}.whl"
    record = []
    with zipfile.ZipFile(os.path.join(folder, name), "w", zipfile.ZIP_DEFLATED) as wheel:
        def add(path, data, mode=0o644):
            entry = zipfile.ZipInfo(path)  # of a fixed date, so that equal sources give equal wheels
            entry.external_attr, entry.compress_type = (0o100000 | mode) << 16, zipfile.ZIP_DEFLATED
            wheel.writestr(entry, data)
            digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
            record.append(f"{path},sha256={digest},{len(data)}")
        for path, data, mode in contents:
            add(path, data, mode)
        for path, text in _metadata(tag, pure):
            add(path, text.encode())
        wheel.writestr(zipfile.ZipInfo(f"{INFO}/RECORD"), "\n".join([*record, f"{INFO}/RECORD,,"]) + "\n")
    return name


def _read(path):
    with open(path, "rb") as file:
        return file.read()


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    runtime = os.environ.get("QUIL_WHEEL_RUNTIME")
    contents = [(path, _read(os.path.join(HERE, path)), 0o644) for path in _files()]
    if not runtime:
        return _write(wheel_directory, contents, "py3-none-any", True)
    contents.append((f"{NAME}/bin/quil", _read(runtime), 0o755))
    return _write(wheel_directory, contents, f"py3-none-{os.environ['QUIL_WHEEL_PLATFORM']}", False)


def build_editable(wheel_directory, config_settings=None, metadata_directory=None):
    return _write(wheel_directory, [(f"{NAME}.pth", HERE.encode() + b"\n", 0o644)], "py3-none-any", True)


def build_sdist(sdist_directory, config_settings=None):
    name = f"{NAME}-{VERSION}.tar.gz"
    with tarfile.open(os.path.join(sdist_directory, name), "w:gz", dereference=True) as archive:
        for path in ("pyproject.toml", "build_backend.py", *_files()):
            archive.add(os.path.join(HERE, path), f"{NAME}-{VERSION}/{path}")
    return name
