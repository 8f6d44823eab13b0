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
import subprocess
import sys
import time

import picture
import rows

ROOT = pathlib.Path(__file__).resolve().parents[1]
OUTPUT = ROOT / "build" / "bench"
DOCUMENT = ROOT / "docs" / "performance.md"
PICTURE = ROOT / "docs" / "performance-growth.svg"
BEGIN = "<!-- measured: begin -->\n"
END = "<!-- measured: end -->\n"
# Repetitions and idle seconds.
FULL = (21, 60)
QUICK = (5, 15)
LOOK_SECONDS = 2
# With a larger share of the cores busy, the numbers mean little.
MAX_BUSY_SHARE = 1 / 4


def first_line(*command):
    result = subprocess.run(command, capture_output=True, text=True, check=True)
    return result.stdout.splitlines()[0]


def machine():
    """What the measurement was taken on."""
    processor = "unknown processor"
    for line in pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines():
        if line.startswith("model name"):
            processor = line.split(":", 1)[1].strip()
            break
    system = platform.freedesktop_os_release()["PRETTY_NAME"]
    return {
        "processor": processor,
        "cores": os.cpu_count(),
        "system": f"{system}, Linux {'.'.join(platform.release().split('.')[:2])}",
        "wine": first_line("env", "WINEDEBUG=-all", "wine", "--version"),
        "compiler": first_line("x86_64-w64-mingw32-g++-posix", "--version"),
    }


def windows_path(path):
    return "Z:" + str(path.resolve()).replace("/", "\\")


def processor_times():
    """Idle and total time of the machine's cores since boot."""
    fields = pathlib.Path("/proc/stat").read_text(encoding="utf-8").splitlines()[0].split()[1:9]
    user, nice, system, idle, waiting, *others = map(int, fields)
    resting = idle + waiting
    return resting, user + nice + system + resting + sum(others)


def busy_cores():
    """How many cores are busy right now; the load average lags by minutes."""
    resting_before, all_before = processor_times()
    time.sleep(LOOK_SECONDS)
    resting, total = processor_times()
    return os.cpu_count() * (1 - (resting - resting_before) / (total - all_before))


def measure(build, plan):
    """The measuring program's output, by row."""
    environment = dict(os.environ)
    environment["MORVANE_TEST_PROGRAM"] = windows_path(build / "Morvane.exe")
    environment["MORVANE_TEST_ACTOR"] = windows_path(build / "window_actor.exe")
    environment["MORVANE_BENCH_BARE"] = windows_path(build / "morvane_bare.exe")
    command = [ROOT / "tests/session/wine_session.sh", "run", "wine", build / "morvane_bench.exe",
               *map(str, plan)]
    # The whole session on one core, so that no request waits for another core to wake up: the cost of
    # that varies and can exceed the request's own.
    core = max(os.sched_getaffinity(0))
    process = subprocess.run(
        command, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True,
        preexec_fn=lambda: os.sched_setaffinity(0, {core}), check=False)
    if process.returncode != 0:
        sys.exit(f"bench: the measuring program ended with {process.returncode}")
    measured = {}
    for line in process.stdout.splitlines():
        record = json.loads(line)
        measured[record.pop("row")] = record
    return measured


def conditions_in_words(result):
    at = result["machine"]
    return (f"Measured on {result['date']} on {at['processor']} ({at['cores']} cores), "
            f"{at['system']}, {at['wine']}, compiled by {at['compiler']}; "
            f"{result['repetitions']} repetitions, {result['busy_cores']:.2f} cores busy before.")


def outcome_in_words(report):
    missed = [row[0] for row in report if row[-1] == rows.verdict(False)]
    return "Missed: " + "; ".join(missed) + "." if missed else "All goals met."


def document_part(result, report):
    lines = [conditions_in_words(result), ""]
    lines.append("| | Morvane | compared with | ratio: median (range) | of the minima | goal | |")
    lines.append("|---|---|---|---|---|---|---|")
    lines += ["| " + " | ".join(row) + " |" for row in report]
    lines += ["", outcome_in_words(report)]
    return "\n".join(lines) + "\n"


def is_busy(result):
    return result["busy_cores"] > result["machine"]["cores"] * MAX_BUSY_SHARE


def print_table(result, report):
    head = ("", "Morvane", "compared with", "ratio: median (range)", "of the minima", "goal", "")
    widths = [max(len(row[column]) for row in [head, *report]) for column in range(len(head))]
    for row in [head, *report]:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())
    print(conditions_in_words(result))
    print(outcome_in_words(report))
    if is_busy(result):
        print("The machine was busy: the numbers mean little.")


def publish(result, report):
    text = DOCUMENT.read_text(encoding="utf-8")
    head, rest = text.split(BEGIN)
    tail = rest.split(END)[1]
    part = document_part(result, report)
    DOCUMENT.write_text(head + BEGIN + "\n" + part + "\n" + END + tail, encoding="utf-8")
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
    result = {
        "date": datetime.date.today().isoformat(),
        "repetitions": plan[0],
        "busy_cores": busy,
        "machine": machine(),
        "program_bytes": (arguments.build / "Morvane.exe").stat().st_size,
        "rows": measured,
    }
    (OUTPUT / "result.json").write_text(json.dumps(result, indent=1) + "\n", encoding="utf-8")
    picture.draw_growth(measured, OUTPUT / "growth.svg")
    report = rows.report(result)
    print_table(result, report)
    if arguments.publish:
        if is_busy(result):
            sys.exit("bench: not published, the machine was busy")
        publish(result, report)


if __name__ == "__main__":
    main()
