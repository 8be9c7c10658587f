"""Conversations with the Mac backend on the substitutes of its frameworks: as with quil-sim, but that
the process must end well. A broken rule of the platform ends it before (violation), objects that are
left behind at the end (3)."""
import os

import quil_host

FAKE = os.environ.get("QUIL_MAC_FAKE") or os.path.join(os.environ["QUIL_BUILD_DIR"],
                                                       "quil-mac-fake")
# Lost memory ends the process with an error, and freed memory is used again soon.
os.environ["ASAN_OPTIONS"] = ("detect_leaks=1:quarantine_size_mb=1:"
                              "thread_local_quarantine_size_kb=64")
os.environ["TSAN_OPTIONS"] = "halt_on_error=1:atexit_sleep_ms=0"
quil_host.executable = lambda name: FAKE

import simulated  # noqa: E402  (after the executable is chosen)

_start = quil_host.Host.__init__


def _start_on_a_desktop(host, program="quil", *arguments, env=None):
    empty = os.path.join(simulated.EXAMPLES, "calculator.json")
    _start(host, program, *(arguments or [empty]), env=env)


def _end(host, *details):
    running = host.process.poll() is None
    try:
        if running and details[:1] in ((), (None,)):
            _, status, errors = host.close()
            # What a framework itself logs is no fault of ours.
            assert status == 0, (status, errors.decode())
    finally:
        if host.process.poll() is None:
            host.process.kill()
        host.process.wait()
        for stream in (host.process.stdin, host.process.stdout, host.process.stderr):
            stream.close()


quil_host.Host.__init__ = _start_on_a_desktop
quil_host.Host.__exit__ = _end
