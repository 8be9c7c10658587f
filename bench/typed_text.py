#!/usr/bin/env python3
"""Characters per second that arrive exactly, beside xdotool with its usual delay and with none.

usage: bench/typed_text.py [BUILD_FOLDER] [ROUNDS]     (build/release and 20 when not said)

Each toolkit gets a private desktop of its own (its name in QUIL_BENCH_TOOLKIT inside of it). Each
round types a text of 500 characters into an empty text area, by each of the three in turn, and asks
the area until the text is there, or for some seconds; xdotool's usual delay is measured in a quarter
of the rounds. Times are those until the whole text was there, or else until the tool was done.
"""
import os
import statistics
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tests", "support"))

# Without line breaks and tabs, which xdotool does not type as those keys.
ASCII = "The quick brown fox jumps over the lazy dog; 0123456789 times, 100 % sure! (Really?) "
MIXED = ("The quick brown FOX (über) jumps — «naïve» façade, señor! ΑΒΓαβγδ Привет, мир. ¡~^`¨´ "
         "日本語の文字列 漢字仮名交じり 한국어 문장 … “quoted” ‘marks’ €100 ½ × 3 ≠ 4 "
         "👩‍💻 👍🏽 🇩🇪 e\u0302 ﬁn @#$%&*()_+{}|:\"<>?-=[]\\;',./ ₿ 𝒳 \u200bﷺ ")
TOOLKITS = ("gtk3", "gtk4", "qt5", "qt6")
LENGTH = 500
SETTLE_SECONDS = 3


def arrived(app, text):
    """Whether the text is there, at once or within a while."""
    end = time.monotonic() + SETTLE_SECONDS
    while app.ask("text") != text:
        if time.monotonic() > end:
            return False
    return True


def measure(app, text, kinds, rounds):
    results = {kind: [] for kind in kinds}
    for number in range(rounds):
        for kind, enter in kinds.items():
            if kind == "xdotool, usual delay" and number % 4:
                continue
            app.ask("clear")
            began = time.monotonic()
            enter(text)
            done = time.monotonic()
            is_exact = arrived(app, text)
            results[kind].append(((time.monotonic() if is_exact else done) - began, is_exact))
    return results


def report(toolkit, name, results):
    for kind, runs in results.items():
        seconds = [duration for duration, _ in runs]
        exact = sum(is_exact for _, is_exact in runs)
        rate = LENGTH * exact / sum(seconds)
        print(f"{toolkit:5} {name:6} {kind:22} exact {exact:2} of {len(runs):2}   "
              f"median {statistics.median(seconds):.3f} s   longest {max(seconds):.3f} s   "
              f"{rate:6.0f} exact characters/s", flush=True)


def main():
    from desktop_tools import Cleanups, text_window
    from quil_host import Host

    def xdotool(*options):
        return lambda text: subprocess.run(["xdotool", "type", *options, "--", text], check=True)

    cleanups = Cleanups()
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 20
    with Host() as host:
        kinds = {"quil": lambda text: host.result("desktop_type", text=text),
                 "xdotool, usual delay": xdotool(), "xdotool, no delay": xdotool("--delay", "0")}
        toolkit = os.environ["QUIL_BENCH_TOOLKIT"]
        app = text_window(cleanups, toolkit)
        for name, line in (("ASCII", ASCII), ("mixed", MIXED)):
            text = (line * LENGTH)[:LENGTH]
            report(toolkit, name, measure(app, text, kinds, rounds))
    cleanups.close()


if __name__ == "__main__":
    os.environ["QUIL_BUILD_DIR"] = os.path.abspath(
        sys.argv[1] if len(sys.argv) > 1 else os.path.join(ROOT, "build", "release"))
    if "QUIL_BENCH_TOOLKIT" in os.environ:
        main()
        sys.exit()
    for name in TOOLKITS:
        subprocess.run([os.path.join(ROOT, "scripts", "with-desktop"), sys.executable, "-B",
                        *sys.argv], env=os.environ | {"QUIL_BENCH_TOOLKIT": name}, check=True)
