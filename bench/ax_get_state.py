#!/usr/bin/python3
"""How long desktop_ax_get_state takes on GTK 3 windows of several sizes, compared with a walk that
makes one synchronous call at a time; requests per second of ping; peak memory.

usage: scripts/with-desktop /usr/bin/python3 bench/ax_get_state.py [BUILD_DIRECTORY]

Runs of both kinds alternate, so that whatever else the machine does slows both; the medians are
compared.
"""
import os
import statistics
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
BUILD = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else os.path.join(HERE, "../build/release"))
os.environ["QUIL_BUILD_DIR"] = BUILD
sys.path.insert(0, os.path.join(HERE, "../tests/support"))
from desktop_tools import PYTHON, output, until  # noqa: E402
from quil_host import Host  # noqa: E402

SIZES = (250, 1000, 4000)
RUNS = 5
PINGS = 2000
TICKS = os.sysconf("SC_CLK_TCK")


def processor_seconds(pid):
    with open(f"/proc/{pid}/stat") as stat:
        fields = stat.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / TICKS


def peak_memory(pid):
    """VmHWM in MiB."""
    with open(f"/proc/{pid}/status") as status:
        line = next(line for line in status if line.startswith("VmHWM"))
    return int(line.split()[1]) / 1024


def measure(host, shape, size):
    title = f"{shape} {size}"
    program = subprocess.Popen([PYTHON, "-B", os.path.join(HERE, "gtk3_elements.py"), shape, str(size)])
    try:
        until(lambda: host.result("desktop_target")["target"].get("windowTitle") == title, title)
        until(lambda: len(host.result("desktop_ax_get_state")["nodes"]) >= min(size, 4000), title)
        observed, walked, application, runtime = [], [], [], []
        for _ in range(RUNS):
            before = [processor_seconds(pid) for pid in (program.pid, host.process.pid)]
            seconds, result = host.timed("desktop_ax_get_state")
            after = [processor_seconds(pid) for pid in (program.pid, host.process.pid)]
            nodes = result()["nodes"]
            observed.append(seconds)
            application.append(after[0] - before[0])
            runtime.append(after[1] - before[1])
            walked.append(output(os.path.join(BUILD, "bench/one_call_at_a_time"), str(program.pid)).split())
        count = int(walked[0][0])
        ours = statistics.median(observed)
        theirs = statistics.median(float(seconds) for _, seconds in walked)
        print(f"{title:12} {count:5} elements, {len(nodes):5} recorded: {ours:6.3f} s"
              f" (application {statistics.median(application):5.2f} s, runtime"
              f" {statistics.median(runtime):5.2f} s of processor);"
              f" one call at a time {theirs:6.3f} s: {theirs / ours:5.1f} times faster", flush=True)
    finally:
        program.kill()
        program.wait()


def main():
    print(f"load average {os.getloadavg()[0]:.1f} on {os.cpu_count()} processors")
    with Host() as host:
        host.result("ping")
        seconds = 0.0
        for _ in range(PINGS):
            elapsed, result = host.timed("ping")
            seconds += elapsed
            result()
        print(f"ping: {PINGS / seconds:.0f} requests per second")
        for shape in ("flat", "nested"):
            for size in SIZES:
                measure(host, shape, size)
        print(f"peak memory of the runtime: {peak_memory(host.process.pid):.1f} MiB")


if __name__ == "__main__":
    main()
