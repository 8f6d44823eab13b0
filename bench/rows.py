"""Turns the numbers of a run into the rows of the table."""

import re
import statistics
from typing import NamedTuple


class Comparison(NamedTuple):
    """A row that shows the ratio to something measured in alternation."""

    key: str
    what: str
    bare: str
    goal: float = None  # the largest allowed ratio; None: no goal


CALLS = "its platform calls alone"
COMPARISONS = (
    Comparison("pass_none", "pass, 500 windows, 100 patterns, no match", CALLS, 1.05),
    Comparison("pass_near", "pass, 500 windows, 100 patterns, near misses", CALLS, 1.10),
    Comparison("pass_50", "pass, 500 windows, 100 patterns, 50 matches", CALLS, 1.10),
    Comparison("identity_20", "identity, 100 patterns, title of 20 units",
               "lower-cased copies", 1 / 20),
    Comparison("identity_60", "identity, 100 patterns, title of 60 units",
               "lower-cased copies", 1 / 20),
    Comparison("identity_500", "identity, 100 patterns, title of 500 units",
               "lower-cased copies", 1 / 20),
    Comparison("identity_none", "identity, 100 patterns, title of 60 units, no match",
               "lower-cased copies", 1 / 20),
    Comparison("identity_near", "identity, 100 patterns, title of 60 units, near misses",
               "lower-cased copies", 1 / 20),
    Comparison("file_100", "reading a file of 100 entries", "open, read, close", 1.5),
    Comparison("file_10mb_lines",
               "reading a 10 MB file: 100 entries, then lines that cannot count",
               "open, read, close, convert", 3),
    Comparison("file_10mb_switches", "reading a 10 MB file: 100 entries, then lines with an @",
               "open, read, close, convert", 3),
    Comparison("file_10mb_comments", "reading a 10 MB file: 10 entries, then comments",
               "open, read, close, convert", 3),
    Comparison("file_10mb_one_line", "reading a 10 MB file: one line",
               "open, read, close, convert", 3),
    Comparison("menu_500", "menu of 500 windows", CALLS, 1.2),
    Comparison("start", "start to icon", "bare program", 1.5),
    Comparison("idle_time", "processor time, 50 windows pinned", "bare loop", 1.2),
    Comparison("idle_memory", "private bytes, 50 windows pinned", "bare program", 1.5),
)
MAX_PATTERN_COST = 1.10
MIN_FIT = 0.99
TIME_UNITS = ((1e6, "s"), (1e3, "ms"), (1, "µs"), (1e-3, "ns"))


def in_time(microseconds):
    for size, unit in TIME_UNITS:
        if microseconds >= size:
            break
    return f"{microseconds / size:.3g} {unit}"


def in_kilobytes(count):
    return f"{count / 1024:,.0f} KiB"


def verdict(met):
    return "met" if met else "MISSED"


def spread(values, digits=2):
    """Median, minimum and maximum."""
    return (f"{statistics.median(values):.{digits}f} "
            f"({min(values):.{digits}f} to {max(values):.{digits}f})")


def ratios(ours, bare):
    return [mine / other for mine, other in zip(ours, bare)]


def ratio_of_least(record):
    """A disturbance only ever lengthens a time: the shortest are the least disturbed."""
    return f"{min(record['ours']) / min(record['bare']):.2f}"


def comparison_row(comparison, record):
    quotients = ratios(record["ours"], record["bare"])
    median = statistics.median(quotients)
    shown = in_kilobytes if comparison.key == "idle_memory" else in_time
    ours, bare = (shown(statistics.median(record[side])) for side in ("ours", "bare"))
    if comparison.key == "idle_time":
        ours, bare = (f"{in_time(sum(record[side]))} in {record['seconds'][0]:.0f} s"
                      for side in ("ours", "bare"))
    goal = mark = "–" if comparison.goal is None else ""
    if comparison.goal is not None:
        goal = (f"≤ {comparison.goal:.2f} ×" if comparison.goal >= 1
                else f"≥ {1 / comparison.goal:.0f} × faster")
        mark = verdict(median <= comparison.goal)
    if comparison.goal is not None and comparison.goal < 1:
        ratio = spread([1 / quotient for quotient in quotients], 0) + " × faster"
        least = f"{min(record['bare']) / min(record['ours']):.0f} × faster"
    else:
        ratio = spread(quotients) + " ×"
        least = f"{ratio_of_least(record)} ×"
    return (comparison.what, ours, f"{bare}: {comparison.bare}", ratio, least, goal, mark)


def window_counts(measured):
    """The numbers of windows that passes were measured with, ascending."""
    found = (re.fullmatch(r"windows_(\d+)", key) for key in measured)
    return sorted(int(match.group(1)) for match in found if match)


def straight_line(points):
    """Slope, intercept and coefficient of determination of the least-squares line."""
    xs, ys = zip(*points)
    slope, intercept = statistics.linear_regression(xs, ys)
    return slope, intercept, statistics.correlation(xs, ys) ** 2


def growth_points(measured, side="ours"):
    return [(count, statistics.median(measured[f"windows_{count}"][side]))
            for count in window_counts(measured)]


def growth_rows(measured):
    points = growth_points(measured)
    slope, _, fit = straight_line(points)
    for count, median in points:
        record = measured[f"windows_{count}"]
        yield (f"pass, {count} windows, no match", in_time(median),
               f"{in_time(statistics.median(record['bare']))}: {CALLS}",
               spread(ratios(record["ours"], record["bare"])) + " ×",
               f"{ratio_of_least(record)} ×", "–", "–")
    yield ("growth with the number of windows", f"{in_time(slope)} per window", "a straight line",
           f"R² {fit:.4f}", "–", f"R² ≥ {MIN_FIT}", verdict(fit >= MIN_FIT))


def pattern_rows(measured):
    times = measured["patterns"]
    for count in ("10", "100"):
        quotients = ratios(times[count], times["1"])
        yield (f"pass, 500 windows, {count} patterns", in_time(statistics.median(times[count])),
               f"{in_time(statistics.median(times['1']))}: 1 pattern", spread(quotients) + " ×",
               f"{min(times[count]) / min(times['1']):.2f} ×", f"≤ {MAX_PATTERN_COST:.2f} ×",
               verdict(statistics.median(quotients) <= MAX_PATTERN_COST))


def allocation_rows(measured):
    counts = window_counts(measured)
    fewest, most = (measured[f"windows_{count}"]["allocations"][0]
                    for count in (counts[0], counts[-1]))
    unmatched = (most - fewest) / (counts[-1] - counts[0])
    yield ("allocations for each window without a match", f"{unmatched:g}",
           f"{fewest:g} for the file of 100 entries", "–", "–", "0", verdict(unmatched <= 0))
    matched = (measured["allocations_50"]["allocations"][0] - fewest) / 50
    yield ("allocations for each window with a match", f"{matched:g}", "–", "–", "–", "≤ 1",
           verdict(matched <= 1))


def report(result):
    """The rows of the table, as strings."""
    measured = result["rows"]
    table = [comparison_row(comparison, measured[comparison.key])
             for comparison in COMPARISONS]
    table += growth_rows(measured)
    table += pattern_rows(measured)
    table += allocation_rows(measured)
    # The tests hold it to its limit.
    table.append(("Morvane.exe", f"{result['program_bytes']:,} bytes", *["–"] * 5))
    return table
