"""The tests of the protocol, which are written for the simulated desktop, on the Mac backend: the
same desktops and the same answers, but for what only the simulated desktop has."""
import glob
import importlib
import os
import sys
import unittest

import mac_tools  # noqa: F401  (the backend takes the place of quil-sim)

PROTOCOL = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "protocol")
ELSEWHERE = {
    # The folders and the ending of bundles are the Mac's own.
    "test_other_bundles_than_the_macs",
    # How quil-sim itself is started and refuses scenarios.
    "test_scenario_must_be_the_one_argument", "test_text_that_is_not_json",
    "test_what_is_wrong_and_where",
    # Rules about the announcement of a walk, which the Mac backend has no call for.
    "test_a_slow_service",
    # Long waits in one step, on the simulated clock.
    "test_times_that_no_double_holds",
    # A rule about the start of a thread, which the Mac backend does itself.
    "test_recordings_leave_nothing_behind",
    # Makes a call fail that the Mac backend puts together from others.
    "test_a_window_that_does_not_come",
}


def flat(suite):
    for entry in suite:
        yield from flat(entry) if isinstance(entry, unittest.TestSuite) else [entry]


def load_tests(loader, _tests, _pattern):
    sys.path.insert(0, PROTOCOL)
    # The clients have their own tests, which are about them and not about a backend.
    paths = [path for path in sorted(glob.glob(os.path.join(PROTOCOL, "test_*.py")))
             if not os.path.basename(path).startswith("test_client")]
    found = [test for path in paths
             for test in flat(loader.loadTestsFromModule(
                 importlib.import_module(os.path.basename(path)[:-3])))]
    names = {test.id().split(".")[-1] for test in found}
    assert ELSEWHERE <= names, ELSEWHERE - names
    return unittest.TestSuite(t for t in found if t.id().split(".")[-1] not in ELSEWHERE)


if __name__ == "__main__":
    unittest.main()
