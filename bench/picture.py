"""Draws how the time of a pass grows with the number of windows."""

import statistics

import matplotlib

matplotlib.use("svg")
# Text stays text, and the same numbers give the same file.
matplotlib.rcParams["svg.fonttype"] = "none"
matplotlib.rcParams["svg.hashsalt"] = "morvane"

from matplotlib import pyplot  # noqa: E402  after choosing the back end

import rows  # noqa: E402

MICROSECONDS_PER_MILLISECOND = 1000


def milliseconds(measured, counts, side):
    return [[time / MICROSECONDS_PER_MILLISECOND for time in measured[f"windows_{count}"][side]]
            for count in counts]


def draw_growth(measured, path):
    counts = rows.window_counts(measured)
    ours = milliseconds(measured, counts, "ours")
    bare = milliseconds(measured, counts, "bare")
    medians = [statistics.median(times) for times in ours]
    slope, intercept, fit = rows.straight_line(list(zip(counts, medians)))

    figure, axes = pyplot.subplots(figsize=(7, 4))
    axes.plot([0, counts[-1]], [intercept, intercept + slope * counts[-1]], color="0.6",
              linewidth=1, label=f"straight line, R² {fit:.4f}")
    below = [median - min(times) for median, times in zip(medians, ours)]
    above = [max(times) - median for median, times in zip(medians, ours)]
    axes.errorbar(counts, medians, yerr=[below, above], fmt="o", markersize=4, capsize=3,
                  color="#b02020", label="a pass: median, minimum and maximum")
    axes.plot(counts, [statistics.median(times) for times in bare], "x", color="0.2",
              label="its platform calls alone: median")
    axes.set_xlabel("windows of another program")
    axes.set_ylabel("milliseconds")
    axes.set_xlim(left=0)
    axes.set_ylim(bottom=0)
    axes.legend()
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None, "Creator": None})
    pyplot.close(figure)
