#!/usr/bin/env python3
"""Records what a person does with mouse and keyboard, and does it again.

usage: replay.py record QUIL FILE [--seconds N]
       replay.py play QUIL FILE [--pauses FACTOR]

QUIL is the runtime's executable; arguments for it may follow in the same word ("quil-sim form.json").

record  writes one line of JSON to FILE for each thing the person does, as it comes from the runtime,
        until Ctrl+C or for so many seconds. FILE then holds what the person typed: keep it to yourself.
play    does what FILE says, with the pauses that the person made, times FACTOR (default 1; 0.5 is
        twice as fast; 0 leaves them out and types texts in one go). The screen has to look as it did:
        a click goes to a place, not to what was there.

A click goes through desktop_click, a turn of the wheel through desktop_scroll, text through
desktop_type, other keys through desktop_keypress. Exit status: 0 when all went well, 1 when the
runtime refused something, 2 when the command line or FILE is wrong, 130 after Ctrl+C in a play.
"""
import argparse
import contextlib
import json
import shlex
import signal
import subprocess
import sys
import time

WAIT_MS = 250  # for one record; so long a recording goes on after Ctrl+C at most
STOP_COMBO = "ctrl+keycode-8"  # Ctrl+C, as it is recorded
LONGEST_PAUSE = 24 * 60 * 60  # in seconds


class Refused(Exception):
    """The runtime answered with an error, or not at all."""


class Wrong(Exception):
    """The file is not a recording."""


class Runtime:
    """The runtime as a child process; one JSON line each way."""

    def __init__(self, command):
        try:
            # In a process group of its own, so that Ctrl+C reaches us alone.
            self.process = subprocess.Popen(shlex.split(command), stdin=subprocess.PIPE,
                                            stdout=subprocess.PIPE, start_new_session=True)
        except (OSError, ValueError, IndexError) as error:
            raise Refused(f"the runtime cannot be started: {error}") from error
        self.id = 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        with contextlib.suppress(OSError):
            self.process.stdin.close()
        self.process.wait()

    def result(self, method, **params):
        """Sends a request; the result of its answer."""
        self.id += 1
        line = json.dumps({"id": self.id, "method": method, "params": params})
        try:
            self.process.stdin.write(line.encode() + b"\n")
            self.process.stdin.flush()
            answer = json.loads(self.process.stdout.readline())
            if "error" not in answer:
                return answer["result"]
            message = answer["error"]["message"]
        except (OSError, ValueError, KeyError, TypeError) as error:
            raise Refused(f"{method}: the runtime gave no answer") from error
        raise Refused(f"{method}: {message}")


def record(runtime, path, seconds):
    """Writes records until Ctrl+C, or for so long; returns how many."""
    interrupted = []
    signal.signal(signal.SIGINT, lambda *_: interrupted.append(True))
    runtime.result("startInputRecording")
    with open(path, "w", encoding="utf-8") as file:
        print("recording; Ctrl+C ends it", file=sys.stderr, flush=True)
        count = 0
        held_back = None  # it may be the Ctrl+C
        end = time.monotonic() + seconds if seconds is not None else float("inf")

        def write(event):
            nonlocal count
            count += 1
            file.write(json.dumps(event, ensure_ascii=False) + "\n")
            file.flush()

        def take(event):
            nonlocal held_back
            if held_back:
                write(held_back)
            held_back = event

        while not interrupted and time.monotonic() < end:
            event = runtime.result("nextInputEvent", timeoutMs=WAIT_MS)["event"]
            if event:
                take(event)
        for event in runtime.result("stopInputRecording")["events"]:
            take(event)
        if held_back and not (interrupted and held_back["params"].get("combo") == STOP_COMBO):
            write(held_back)
    return count


def of(kind, value):
    """The value, which has to be of that type."""
    if type(value) is not kind:
        raise Wrong(f"{value!r} is not of the type {kind.__name__}")
    return value


def request_for(event):
    """The method and parameters that do again what was recorded; nothing when there is nothing to
    do (a sideways turn of the wheel, of which only the place is known)."""
    action, params = event["action"], event["params"]
    if action == "click":
        return "desktop_click", {"point": event["target"]["point"]}
    if action == "scroll":
        return of(int, params["amount"]) and ("desktop_scroll", {
            "amount": params["amount"], "point": event["target"]["point"]})
    if action == "type":
        return "desktop_type", {"text": of(str, params["text"])}
    if action == "keypress":
        return "desktop_keypress", {"combo": of(str, params["combo"])}
    raise Wrong(f"unknown action {action!r}")


def read(path):
    """The file's steps, each the number of its line, its time in ms and its request."""
    steps = []
    with open(path, "rb") as file:
        for number, line in enumerate(file, 1):
            if not line.strip():
                continue
            try:
                event = json.loads(line)
                request, at = request_for(event), float(of(int, event["at"]))
                json.dumps(request, allow_nan=False)  # the runtime reads no such numbers
            except (ValueError, KeyError, TypeError, OverflowError, RecursionError,
                    Wrong) as error:
                raise Wrong(f"{path}, line {number}: not a record "
                            f"({type(error).__name__}: {error})") from error
            if request:
                steps.append((number, at, request))
    return steps


def joined(steps):
    """The same steps with texts that follow each other in one."""
    merged = []
    for number, at, (method, params) in steps:
        if method == "desktop_type" and merged and merged[-1][2][0] == method:
            merged[-1][2][1]["text"] += params["text"]
        else:
            merged.append((number, at, (method, dict(params))))
    return merged


def play(runtime, path, pauses):
    """Does what the file says; returns how many steps that were."""
    steps = read(path)
    begin = time.monotonic()
    for number, at, (method, params) in joined(steps) if pauses == 0 else steps:
        due = begin + (at - steps[0][1]) / 1000 * pauses
        time.sleep(min(max(0, due - time.monotonic()), LONGEST_PAUSE))
        try:
            runtime.result(method, **params)
        except Refused as error:
            raise Refused(f"{path}, line {number}: {error}") from error
    return len(steps)


def not_negative(text):
    number = float(text)
    if not 0 <= number < float("inf"):
        raise argparse.ArgumentTypeError("must be a number of 0 or more")
    return number


def main():
    parser = argparse.ArgumentParser(
        description=__doc__.partition("\nusage")[0], epilog=__doc__.partition("\n\n")[2],
        formatter_class=argparse.RawDescriptionHelpFormatter)
    commands = parser.add_subparsers(dest="command", required=True)
    for name in ("record", "play"):
        command = commands.add_parser(name)
        command.add_argument("runtime", metavar="QUIL")
        command.add_argument("file", metavar="FILE")
        if name == "record":
            command.add_argument("--seconds", type=not_negative)
        else:
            command.add_argument("--pauses", type=not_negative, default=1.0, metavar="FACTOR")
    arguments = parser.parse_args()
    try:
        with Runtime(arguments.runtime) as runtime:
            if arguments.command == "record":
                count = record(runtime, arguments.file, arguments.seconds)
                print(f"{count} records in {arguments.file}", file=sys.stderr)
            else:
                count = play(runtime, arguments.file, arguments.pauses)
                print(f"{count} steps done", file=sys.stderr)
    except Refused as error:
        print(f"replay: {error}", file=sys.stderr)
        return 1
    except (OSError, Wrong) as error:
        print(f"replay: {error}", file=sys.stderr)
        return 2
    except KeyboardInterrupt:
        return 130
    return 0


if __name__ == "__main__":
    sys.exit(main())
