"""Desktop entries of a test's own, which the runtime sees as applications of the user."""
import os
import shutil
import unittest

from quil_host import Host

FOLDER = os.path.join(os.environ["XDG_DATA_HOME"], "applications")


class EntriesTest(unittest.TestCase):
    def setUp(self):
        # A locale that the system lacks; the names of entries need none.
        self.host = self.enterContext(Host(env=dict(os.environ, LANG="de_DE.UTF-8")))
        os.makedirs(FOLDER)
        self.addCleanup(shutil.rmtree, FOLDER)

    def install(self, name, text):
        """Adds an entry that says this; its file."""
        path = os.path.join(FOLDER, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w") as file:
            file.write("[Desktop Entry]\nType=Application\n" + text)
        return path
