"""What tests of observed trees need: programs to observe, and what libatspi sees of them."""
import glob
import os
import shutil
import subprocess
import tempfile

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi

from desktop_tools import CHROMIUM, PYTHON, SUPPORT, Program, firefox, output, until
from quil_host import Failure

GALLERY = os.path.join(SUPPORT, "gallery")
ATK_WRAPPER = "/usr/share/java/java-atk-wrapper.jar"
FIREFOX_PREFERENCES = {
    "accessibility.force_disabled": "-1", "browser.shell.checkDefaultBrowser": "false",
    "browser.aboutwelcome.enabled": "false", "datareporting.policy.dataSubmissionEnabled": "false",
    "dom.disable_open_during_load": "false", "browser.startup.homepage_override.mstone": '"ignore"',
    "toolkit.telemetry.reportingpolicy.firstRun": "false"}


def gallery(test, toolkit, *rows, scale=1):
    """One of each widget of a toolkit or browser (tests/support/gallery), in a program that tells what is
    done to it; a page tells it by its title."""
    folder = test.enterContext(tempfile.TemporaryDirectory(ignore_cleanup_errors=True))
    page = "file://" + os.path.join(GALLERY, "gallery.html")
    variable = "GDK_SCALE" if toolkit.startswith("gtk") else "QT_SCALE_FACTOR"
    command = [PYTHON, "-B", os.path.join(GALLERY, "gallery.py"), toolkit, *rows]
    if toolkit == "swing":
        output("javac", "-d", folder, os.path.join(GALLERY, "Gallery.java"))
        command = ["java", f"-Dsun.java2d.uiScale={scale}", "-cp", folder + ":" + ATK_WRAPPER,
                   "-Djavax.accessibility.assistive_technologies=org.GNOME.Accessibility.AtkWrapper", "Gallery"]
    elif toolkit == "chromium":
        command = [*CHROMIUM, f"--user-data-dir={folder}", f"--force-device-scale-factor={scale}",
                   "--window-size=560,480", "--window-position=90,70", page]
    elif toolkit == "firefox":
        with open(f"{folder}/user.js", "w") as file:
            for name, value in {**FIREFOX_PREFERENCES, "layout.css.devPixelsPerPx": f'"{scale}"'}.items():
                file.write(f'user_pref("{name}", {value});\n')
        command = [*firefox(folder), "--width", "600", "--height", "500", page]
    is_page = toolkit in ("chromium", "firefox")
    return Program(test, *command, talks=not is_page, has_window=not is_page,
                   env=dict(os.environ, **{variable: str(scale)}))


def missing_for(toolkit):
    """What is not installed of what the toolkit's gallery needs; None when nothing is."""
    if toolkit == "swing":
        has_bridge = os.path.exists(ATK_WRAPPER) and glob.glob("/usr/lib/*/jni/libatk-wrapper.so")
        has_java = shutil.which("java") and shutil.which("javac") and has_bridge
        return None if has_java else "default-jdk and libatk-wrapper-java-jni"
    if toolkit.startswith("qml"):
        version = toolkit[-1]
        check = f"import PyQt{version}.QtQuick, PyQt{version}.QtQml"
        found = subprocess.run([PYTHON, "-c", check], capture_output=True).returncode == 0
        return None if found else f"python3-pyqt{version}.qtquick"
    is_missing = toolkit in ("chromium", "firefox") and not shutil.which(toolkit)
    return toolkit if is_missing else None


def observe(host, program, condition=lambda state: True):
    """The tree, once the program (None for any) is in front, as wanted, and changes no more."""
    revision = None

    def look():
        nonlocal revision
        before, state = revision, host.result("desktop_ax_get_state")
        revision = state["revision"]
        is_whole = len(state["nodes"]) > 5 and condition(state)
        is_front = not program or state.get("target", {}).get("pid") == program.pid
        return state if is_front and is_whole and before == revision else None

    return until(look, "the program's tree", 60)


def find(state, role, name=None):
    found = [node for node in state["nodes"]
             if node["role"] == role and name in (None, node.get("name", ""))]
    if not found:
        raise AssertionError(f"no {role} {name} in\n{state['axText']}")
    return found[0]


def request_on(host, program, method, role, name=None, parameter="token", **more):
    """Sends a request that names an element, as hosts do: observes again when the tree has changed
    meanwhile."""
    def try_it():
        token = find(observe(host, program), role, name)["token"]
        error = host.request(method, **{parameter: token}, **more).get("error", {})
        if error and error["code"] != "COMPUTER_CONTROL_STALE_SNAPSHOT":
            raise Failure(error)
        return not error

    until(try_it, f"{method} of {role} {name}")


def walk(accessible, token="e0"):
    """What libatspi sees: (token, name, description, size or None), parents first."""
    extents = None
    states = accessible.get_state_set()
    if states.contains(Atspi.StateType.SHOWING) and "Component" in accessible.get_interfaces():
        rect = Atspi.Component.get_extents(accessible, Atspi.CoordType.SCREEN)
        if rect.width > 0 and rect.height > 0:
            extents = (rect.x, rect.y, rect.width, rect.height)
    yield token, accessible.get_name(), accessible.get_description(), extents
    for position in range(accessible.get_child_count()):
        yield from walk(accessible.get_child_at_index(position), f"{token}.{position}")


def window_of(program):
    desktop = Atspi.get_desktop(0)
    for position in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(position)
        if application and application.get_process_id() == program.pid:
            return application.get_child_at_index(0)
    raise AssertionError("libatspi does not see the program")


def bounds(node):
    return tuple(node["bounds"][key] for key in ("x", "y", "width", "height"))
