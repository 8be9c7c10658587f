"""Desktop entries of a test's own, which the runtime sees as applications of the user."""
import os
import shutil

from desktop_tools import PYTHON, SUPPORT, DesktopTest
from quil_host import Host

FOLDER = os.path.join(os.environ["XDG_DATA_HOME"], "applications")
# As entries, services and shells have it, wherever this is: its path may have blanks and quotes.
WINDOW_APP = f'{PYTHON} -B "{SUPPORT}/window_app.py"'


class EntriesTest(DesktopTest):
    def setUp(self):
        # A locale that no system has; the names of entries need none.
        self.host = self.enterContext(Host(env=dict(os.environ, LANG="de_AQ.UTF-8")))
        os.makedirs(FOLDER)
        self.addCleanup(shutil.rmtree, FOLDER)

    def install(self, name, **keys):
        """Adds an entry with these keys; its file."""
        path = os.path.normpath(os.path.join(FOLDER, name))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w") as file:
            file.write("[Desktop Entry]\nType=Application\n")
            file.writelines(f"{key}={value}\n" for key, value in keys.items())
        return path

    def script(self, name, *lines):
        """Adds an executable file with these lines; its path."""
        path = os.path.join(FOLDER, name)
        with open(path, "w") as file:
            file.write("\n".join(lines) + "\n")
        os.chmod(path, 0o755)
        return path

    def launch(self, app):
        self.assertTrue(self.host.result("desktop_launch_app", appId=app)["ok"])
