"""Runs the measurements in their own session and reports them.

usage: report.py BUILD_FOLDER [--quick] [--publish]

Prints a table and writes build/bench/result.json and growth.svg; --publish also updates the table
and the picture of docs/performance.md, unless the machine was busy. --quick is a short trial run,
never published.
"""

import argparse
import datetime
import json
import os
import pathlib
import platform
import shutil
import statistics
import subprocess
import sys
import time

import matplotlib
from matplotlib.figure import Figure

ROOT = pathlib.Path(__file__).resolve().parents[1]
OUTPUT = ROOT / "build" / "bench"
DOCUMENT = ROOT / "docs" / "performance.md"
PICTURE = ROOT / "docs" / "performance-growth.svg"
BEGIN = "<!-- measured: begin -->\n"
END = "<!-- measured: end -->\n"
# Repetitions and idle seconds.
FULL = (21, 60)
QUICK = (5, 16)
LOOK_SECONDS = 2
# With a larger share of the cores busy, the numbers mean little.
MAX_BUSY_SHARE = 1 / 4

CALLS = "its platform calls alone"
COPIES = "lower-cased copies"
# The row's name in the output, what it is, what it is compared with, and the largest allowed ratio.
COMPARISONS = (
    ("pass_none", "pass, 500 windows, 100 patterns, no match", CALLS, 1.05),
    ("pass_50", "pass, 500 windows, 100 patterns, 50 matches", CALLS, 1.10),
    ("identity_60", "identity, 100 patterns, title of 60 units", COPIES, 1 / 20),
    ("identity_near", "identity, 100 patterns, title of 60 units, near misses", COPIES, 1 / 20),
    ("file_100", "reading a file of 100 entries", "open, read, close", 1.5),
    ("file_10mb", "reading a 10 MB file: 100 entries, then lines that cannot count",
     "open, read, close, convert", 3),
    ("menu_500", "menu of 500 windows", CALLS, 1.2),
    ("start", "start to icon", "bare program", 1.5),
    ("idle_time", "processor time, 50 windows pinned", "bare loop", 1.2),
    ("idle_memory", "private bytes, 50 windows pinned", "bare program", 1.5),
)
MIN_FIT = 0.99
HEAD = ("", "Morvane", "compared with", "ratio: median (range)", "of the minima", "goal", "")


def first_line(*command):
    result = subprocess.run(command, capture_output=True, text=True, check=True)
    return result.stdout.splitlines()[0]


def processor():
    lines = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines()
    return next((line.split(":", 1)[1].strip() for line in lines if line.startswith("model name")),
                "unknown processor")


def conditions(repetitions, busy):
    """What the measurement was taken on."""
    system = platform.freedesktop_os_release()["PRETTY_NAME"]
    kernel = ".".join(platform.release().split(".")[:2])
    wine = first_line("env", "WINEDEBUG=-all", "wine", "--version")
    compiler = first_line("x86_64-w64-mingw32-g++-posix", "--version")
    return (f"Measured on {datetime.date.today().isoformat()} on {processor()} "
            f"({os.cpu_count()} cores), {system}, Linux {kernel}, {wine}, compiled by {compiler}; "
            f"{repetitions} repetitions, {busy:.2f} cores busy before.")


def processor_times():
    """Idle and total time of the machine's cores since boot."""
    line = pathlib.Path("/proc/stat").read_text(encoding="utf-8").splitlines()[0]
    times = [int(field) for field in line.split()[1:9]]
    return times[3] + times[4], sum(times)


def busy_cores():
    """How many cores are busy right now; the load average lags by minutes."""
    resting_before, all_before = processor_times()
    time.sleep(LOOK_SECONDS)
    resting, total = processor_times()
    return os.cpu_count() * (1 - (resting - resting_before) / (total - all_before))


def measure(build, plan):
    """The measuring program's output, by row."""
    programs = {"MORVANE_TEST_PROGRAM": "Morvane.exe", "MORVANE_TEST_ACTOR": "window_actor.exe",
                "MORVANE_BENCH_BARE": "morvane_bare.exe"}
    paths = {name: "Z:" + str((build / file).resolve()).replace("/", "\\")
             for name, file in programs.items()}
    command = [ROOT / "tests/session/wine_session.sh", "run", "wine", build / "morvane_bench.exe",
               *map(str, plan)]
    # The whole session on one core, so that no request waits for another core to wake up: the cost
    # of that varies and can exceed the request's own.
    core = max(os.sched_getaffinity(0))
    process = subprocess.run(
        command, env={**os.environ, **paths}, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
        text=True, preexec_fn=lambda: os.sched_setaffinity(0, {core}), check=False)
    if process.returncode != 0:
        sys.exit(f"bench: the measuring program ended with {process.returncode}")
    records = [json.loads(line) for line in process.stdout.splitlines()]
    return {record.pop("row"): record for record in records}


def in_time(microseconds):
    for size, unit in ((1e6, "s"), (1e3, "ms"), (1, "µs"), (1e-3, "ns")):
        if microseconds >= size:
            break
    return f"{microseconds / size:.3g} {unit}"


def verdict(met):
    return "met" if met else "MISSED"


def comparison_row(key, what, with_what, goal, record, idle_seconds):
    ours, bare = record["ours"], record["bare"]
    if key == "idle_time":
        sides = [f"{in_time(sum(side))} in {idle_seconds} s" for side in (ours, bare)]
    elif key == "idle_memory":
        sides = [f"{statistics.median(side) / 1024:,.0f} KiB" for side in (ours, bare)]
    else:
        sides = [in_time(statistics.median(side)) for side in (ours, bare)]
    ratios = [mine / other for mine, other in zip(ours, bare)]
    mark = verdict(statistics.median(ratios) <= goal)
    # A disturbance only ever lengthens a time: the shortest are the least disturbed.
    least = min(ours) / min(bare)
    sign, unit, digits = "≤", "×", 2
    if goal < 1:
        ratios, least, goal = [1 / ratio for ratio in ratios], 1 / least, 1 / goal
        sign, unit, digits = "≥", "× faster", 0
    middle, low, high, least, goal = (
        f"{number:.{digits}f}"
        for number in (statistics.median(ratios), min(ratios), max(ratios), least, goal))
    return (what, sides[0], f"{sides[1]}: {with_what}", f"{middle} ({low} to {high}) {unit}",
            f"{least} {unit}", f"{sign} {goal} {unit}", mark)


def growth(measured):
    """The medians by the number of windows, and the slope, intercept and R² of their line."""
    medians = {int(key.removeprefix("windows_")): statistics.median(record["ours"])
               for key, record in measured.items() if key.startswith("windows_")}
    points = list(medians), list(medians.values())
    return medians, *statistics.linear_regression(*points), statistics.correlation(*points) ** 2


def table(measured, idle_seconds, program_bytes):
    """The rows of the table, as strings."""
    for key, *words in COMPARISONS:
        yield comparison_row(key, *words, measured[key], idle_seconds)
    _, slope, _, fit = growth(measured)
    yield ("growth with the number of windows", f"{in_time(slope)} per window", "a straight line",
           f"R² {fit:.4f}", "–", f"R² ≥ {MIN_FIT}", verdict(fit >= MIN_FIT))
    # The tests hold it to its limit.
    yield ("Morvane.exe", f"{program_bytes:,} bytes", *["–"] * 5)


def draw_growth(measured, path):
    medians, slope, intercept, fit = growth(measured)
    milliseconds = {side: [[time / 1000 for time in measured[f"windows_{count}"][side]]
                           for count in medians] for side in ("ours", "bare")}
    middles = [median / 1000 for median in medians.values()]
    below = [middle - min(times) for middle, times in zip(middles, milliseconds["ours"])]
    above = [max(times) - middle for middle, times in zip(middles, milliseconds["ours"])]
    # Text stays text, and the same numbers give the same file.
    matplotlib.rcParams.update({"svg.fonttype": "none", "svg.hashsalt": "morvane"})
    figure = Figure(figsize=(7, 4))
    axes = figure.subplots()
    ends = (0, max(medians))
    axes.plot(ends, [(intercept + slope * end) / 1000 for end in ends], color="0.6", linewidth=1,
              label=f"straight line, R² {fit:.4f}")
    axes.errorbar(list(medians), middles, yerr=[below, above], fmt="o", markersize=4, capsize=3,
                  color="#b02020", label="a pass: median, minimum and maximum")
    axes.plot(list(medians), list(map(statistics.median, milliseconds["bare"])), "x", color="0.2",
              label="its platform calls alone: median")
    axes.set(xlabel="windows of another program", ylabel="milliseconds")
    axes.set_xlim(left=0)
    axes.set_ylim(bottom=0)
    axes.legend()
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None, "Creator": None})


def publish(rows, where):
    lines = ["| " + " | ".join(row) + " |" for row in rows]
    part = "\n".join([where, "", *lines])
    head, rest = DOCUMENT.read_text(encoding="utf-8").split(BEGIN)
    tail = rest.split(END)[1]
    DOCUMENT.write_text(f"{head}{BEGIN}\n{part}\n\n{END}{tail}", encoding="utf-8")
    shutil.copyfile(OUTPUT / "growth.svg", PICTURE)
    print(f"published in {DOCUMENT.relative_to(ROOT)}")


def main():
    parser = argparse.ArgumentParser(prog="./dev bench")
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--quick", action="store_true", help="a short trial run")
    parser.add_argument("--publish", action="store_true", help="refreshes docs/performance.md")
    arguments = parser.parse_args()
    if arguments.quick and arguments.publish:
        parser.error("a quick run is not published")

    OUTPUT.mkdir(parents=True, exist_ok=True)
    plan = QUICK if arguments.quick else FULL
    busy = busy_cores()
    measured = measure(arguments.build, plan)
    where = conditions(plan[0], busy)
    (OUTPUT / "result.json").write_text(
        json.dumps({"where": where, "rows": measured}, indent=1) + "\n", encoding="utf-8")
    draw_growth(measured, OUTPUT / "growth.svg")
    size = (arguments.build / "Morvane.exe").stat().st_size
    rows = [HEAD, *table(measured, plan[1], size)]
    widths = [max(map(len, column)) for column in zip(*rows)]
    for row in rows:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())
    print(where)
    if arguments.publish:
        if busy > os.cpu_count() * MAX_BUSY_SHARE:
            sys.exit("bench: not published, the machine was busy")
        publish([HEAD, ["---"] * len(HEAD), *rows[1:]], where)


if __name__ == "__main__":
    main()
