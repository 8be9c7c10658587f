"""Observed trees against a plain model, with programs of every shape and habit: tests/support/fake_program
offers what tests/support/tree_model.py made up.

QUIL_TREES=NUMBER       so many random trees (default 20)
QUIL_TREE_SEED=NUMBER   the first one's seed (default 1); a failure tells the seed to begin with
"""
import json
import os
import unittest

from desktop_tools import DesktopTest, Program, geometry, until
from quil_host import executable
from tree_model import MAXIMUM_NODES, Generator, Model, rendering, revision

TREES = int(os.environ.get("QUIL_TREES", "20"))
FIRST_SEED = int(os.environ.get("QUIL_TREE_SEED", "1"))
# Calls for one element: its properties, lists, text and so on; and the name of each action.
MOST_CALLS = 14
# Longer lists of GTK 3 are asked entry by entry, so that the program replies meanwhile.
LONG_LIST = 1000
# Elements that may be asked in vain, as the ones before them turn out to fill the walk.
MOST_IN_VAIN = 400


class FakeProgram(Program):
    def __init__(self, test, description):
        super().__init__(test, executable("tests/quil_fake_program"), has_window=False, talks=True)
        self.window = self.command(description)["window"]
        self.origin = None

    def command(self, command):
        """What the program answers: the calls since the last command."""
        return self.ask(json.dumps(command))

    def wait_until_in_front(self, host):
        def is_in_front():
            target = host.result("desktop_target")["target"]
            self.origin = self.command({})["origin"]
            # Below the title bar that the window manager gives it.
            return (self.origin[1] > 0 and target.get("pid") == self.pid and "windowTitle" in target
                    and geometry(self.window)[:2] == tuple(self.origin))
        until(is_in_front, "the fake program in front")


class Trees(DesktopTest):
    maxDiff = 2000

    def check(self, program, description, state):
        model = Model(description)
        nodes = state["nodes"]
        self.assertEqual([node["token"] for node in nodes], [node["token"] for node in model.nodes])
        for node, expected in zip(nodes, model.nodes):
            if "bounds" in expected:
                for key, offset in zip("xy", program.origin):
                    expected["bounds"][key] += offset
            self.assertEqual(node, expected)
        self.assertEqual(state["truncated"], model.truncated)
        self.assertEqual(state["axText"], rendering(nodes))
        self.assertEqual(state["revision"], revision(nodes))

    def check_calls(self, counts, description, is_by_index):
        # Of who manages its descendants, what shows is found by places.
        repeated = [entry for entry in counts["repeated"]
                    if entry[1] not in ("GetExtents", "GetAccessibleAtPoint")]
        self.assertEqual(repeated, [], "asked twice")
        if is_by_index:
            return
        elements = description["elements"]
        lists = [len(element["children"]) for element in elements if element]
        # The bridge of GTK is spared long lists.
        is_spared = description["toolkit"]["name"] == "gtk"
        entries = [length for length in lists if is_spared and length > LONG_LIST]
        self.assertLessEqual(counts["most"], MOST_CALLS + max(entries, default=0))
        asked = min(len(elements), MAXIMUM_NODES) + MOST_IN_VAIN
        self.assertLessEqual(counts["calls"], asked * MOST_CALLS + sum(entries))

    def check_tree(self, seed):
        generator = Generator(seed, largest=5000)
        description = generator.description()
        is_by_index = not description.get("getChildren", True) or any(
            element and ("count" in element or "unlisted" in element or "GetChildren" in element.get("errors", {}))
            for element in description["elements"])
        program = FakeProgram(self, description)
        try:
            program.wait_until_in_front(self.host)
            for _ in range(2):  # the second time, what was learned in the first is used
                self.check(program, description, self.host.result("desktop_ax_get_state"))
                self.check_calls(program.command({}), description, is_by_index)
            program.command({"elements": generator.changes()})
            self.check(program, description, self.host.result("desktop_ax_get_state"))
        except Exception as error:
            elements = description["elements"]
            description["elements"] = f"{len(elements)} elements"
            error.add_note(f"QUIL_TREE_SEED={seed} QUIL_TREES=1: {description}\n{json.dumps(elements)[:5000]}")
            raise
        finally:
            program.end()

    def test_random_trees_are_as_the_model_says(self):
        for seed in range(FIRST_SEED, FIRST_SEED + TREES):
            with self.subTest(seed=seed):
                self.check_tree(seed)


if __name__ == "__main__":
    unittest.main()
