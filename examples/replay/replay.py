#!/usr/bin/env python3
"""Records what the user does with mouse and keyboard, and does it again.

usage: replay.py record QUIL FILE [--seconds N]
       replay.py play QUIL FILE [--pauses FACTOR]

QUIL is the runtime's executable; arguments for it may follow in the same word ("quil-sim form.json").
The client has to be installed, or clients/python be on PYTHONPATH.

record  writes one line of JSON to FILE for each thing the user does, as it comes from the runtime,
        until Ctrl+C or for so many seconds. FILE then holds what the user typed: keep it to yourself.
play    does what FILE says, with the pauses that the user made, times FACTOR (default 1; 0.5 is
        twice as fast; 0 leaves them out and types texts in one go). The screen has to look as it did:
        a click goes to a place, not to what was there.

A click goes through desktop_click, a turn of the wheel through desktop_scroll, text through
desktop_type, other keys through desktop_keypress. Exit status: 0 when all went well, 1 when the
runtime refused something, 2 when the command line or FILE is wrong, 130 after Ctrl+C in a play.
"""
import argparse
import json
import shlex
import signal
import sys

from quil import Desktop, InvalidParameter, QuilError

STOP_COMBO = "ctrl+keycode-8"  # Ctrl+C, as it is recorded


def record(desktop, path, seconds):
    """Writes records until Ctrl+C, or for so long; returns how many."""
    interrupted = []
    with desktop.record() as recording, open(path, "w", encoding="utf-8") as file:
        def interrupt(*_):
            interrupted.append(True)
            recording.end()

        signal.signal(signal.SIGINT, interrupt)
        print("recording; Ctrl+C ends it", file=sys.stderr, flush=True)
        count = 0
        held_back = None  # it may be the Ctrl+C

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

        for event in recording.within(seconds):
            take(event)
        for event in recording.stop():
            take(event)
        if held_back and not (interrupted and held_back["params"].get("combo") == STOP_COMBO):
            write(held_back)
    return count


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
        with Desktop(shlex.split(arguments.runtime)) as desktop:
            if arguments.command == "record":
                count = record(desktop, arguments.file, arguments.seconds)
                print(f"{count} records in {arguments.file}", file=sys.stderr)
            else:
                count = desktop.replay(arguments.file, 1 / arguments.pauses if arguments.pauses else float("inf"))
                print(f"{count} steps done", file=sys.stderr)
    except (OSError, InvalidParameter, ValueError) as error:
        print(f"replay: {getattr(error, 'message', error)}", file=sys.stderr)
        return 2
    except QuilError as error:
        print(f"replay: {error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 130
    return 0


if __name__ == "__main__":
    sys.exit(main())
