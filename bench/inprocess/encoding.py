# SPDX-License-Identifier: MIT
"""The measurements of inprocess.sh, as rows of text and as data of plots."""

import statistics

from markdown import render

TITLES = {"memcpy": "memcpy", "memcpy_heap": "memcpy into the heap's memory", "peer_encode": "encode",
          "peer_decode": "decode", "helper_encode": "helper bus: encode", "helper_decode": "helper bus: decode",
          "gio_write": "GIO: write", "gio_read": "GIO: read"}
SERIES = tuple(TITLES)
LARGE = "1/1048576"


def rounds_by_name(result):
    """The CPU time of a round in ns, once for each repetition."""
    times = {}
    for run in result["benchmarks"]:
        if run["run_type"] == "iteration":
            times.setdefault(run["name"], []).append(run["cpu_time"])
    return times


def heap_by_name(result):
    """The allocations of a round."""
    return {run["name"]: {figure: run[figure] for figure in ("allocations", "allocated_bytes")}
            for run in result["benchmarks"]}


def large_ratio(times, name):
    """The ratio of the median to that of a memcpy of 1 MiB."""
    return statistics.median(times[f"{name}/{LARGE}"]) / statistics.median(times[f"memcpy/{LARGE}"])


def growths(times):
    """How the cost grows: 1 if it is linear in the entries, and proportional to memcpy in the bytes."""
    def median(name, shape):
        return statistics.median(times[f"{name}/{shape}"])

    def entry(name, few, many):
        return (median(name, f"{many}/16") - median(name, f"{few}/16")) / (many - few)

    def factor(name, size):
        return median(name, f"1/{size}") / median("memcpy", f"1/{size}")

    found = {}
    for name in ("peer_encode", "peer_decode"):
        title = TITLES[name]
        found[f"{title}: a further entry with 100 to 1,000, compared with 10 to 100"] = (
            entry(name, 100, 1000) / entry(name, 10, 100))
        found[f"{title}: factor to memcpy at 8 MiB, compared with 1 MiB"] = (
            factor(name, 8 << 20) / factor(name, 1 << 20))
    return found


def quartiles(values):
    lower, median, upper = statistics.quantiles(values, n=4)
    return median, (upper - lower) / median


def size_text(size):
    for unit, factor in (("MiB", 1 << 20), ("KiB", 1 << 10)):
        if size >= factor:
            return f"{size // factor} {unit}"
    return f"{size} B"


def time_text(nanoseconds):
    for unit, factor in (("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= factor:
            return f"{nanoseconds / factor:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def ratio_text(ratio):
    return f"{ratio:,.0f}" if ratio >= 100 else f"{ratio:.3g}"


def times_table(times, first, shapes, label):
    def row(shape):
        base = statistics.median(times[f"memcpy/{shape}"])
        cells = [label(shape), time_text(base)]
        for name in SERIES[1:]:
            median = statistics.median(times[f"{name}/{shape}"])
            cells.append(f"{time_text(median)} ({ratio_text(median / base)})")
        return cells
    return [first, *TITLES.values()], [row(shape) for shape in shapes]


def rate_table(times, shapes):
    """Bytes per second."""
    def row(shape):
        size = int(shape.split("/")[1])
        return [size_text(size)] + [f"{size / statistics.median(times[f'{name}/{shape}']):.3g}" for name in SERIES]
    return ["GB/s, value of", *TITLES.values()], [row(shape) for shape in shapes]


def heap_table(heap, shapes):
    def row(shape):
        entries, size = map(int, shape.split("/"))
        runs = [heap[f"{name}/{shape}"] for name in SERIES[2:]]
        return [f"{entries} × {size_text(size)}"] + [f"{run['allocations']:.0f} ({run['allocated_bytes']:.0f} B)"
                                                     for run in runs]
    return ["entries × bytes of a value", *list(TITLES.values())[2:]], [row(shape) for shape in shapes]


def workload_table(times, heap):
    def row(name):
        median, spread = quartiles(times[name])
        run = heap[name]
        return [f"`{name.split('/')[1]}`", time_text(median), f"{spread:.1%}", f"{run['allocations']:.0f}",
                f"{run['allocated_bytes']:.0f}"]
    names = sorted(name for name in times if name.startswith("workload/"))
    header = ["workload", "median", "interquartile range", "allocations", "bytes allocated"]
    return header, [row(name) for name in names]


def large_table(times):
    """Values of 1 MiB. The ratio is that of the medians; half of the times of a row are in its interquartile range."""
    base = statistics.median(times[f"memcpy/{LARGE}"])

    def row(name):
        median, spread = quartiles(times[f"{name}/{LARGE}"])
        return [TITLES[name], time_text(median), f"{median / base:.2f}", f"{spread:.1%}"]
    return ["value of 1 MiB", "median", "factor to memcpy", "interquartile range"], [row(name) for name in SERIES]


def shapes_of(times):
    """The measured messages, as <entries>/<bytes>: those with one entry, and those with a growing number of entries."""
    shapes = [name.removeprefix("memcpy/") for name in times if name.startswith("memcpy/")]
    return (sorted((shape for shape in shapes if shape.startswith("1/")), key=lambda shape: int(shape[2:])),
            sorted((shape for shape in shapes if shape.endswith("/16")), key=lambda shape: int(shape[:-3])))


def text(times, heap):
    by_size, by_entries = shapes_of(times)
    repetitions = max(len(values) for values in times.values())
    parts = (large_table(times),
             times_table(times, "value of", by_size, lambda shape: size_text(int(shape[2:]))),
             rate_table(times, by_size),
             times_table(times, "entries of 16 bytes", by_entries, lambda shape: shape[:-3]),
             heap_table(heap, by_entries + by_size[2:]),
             workload_table(times, heap))
    note = f"Medians of {repetitions} repetitions in random order, CPU time; in brackets the ratio to memcpy."
    return "\n\n".join([note, *(render(*part) for part in parts)])


def write_plots(times, folder):
    """The data of inprocess.gnuplot."""
    for name, shapes, column in zip(("bytes", "entries"), shapes_of(times), (1, 0), strict=True):
        lines = []
        for shape in shapes:
            medians = (f"{statistics.median(times[f'{series}/{shape}']):.1f}" for series in SERIES)
            lines.append(" ".join([shape.split("/")[column], *medians]))
        (folder / f"inprocess-{name}.dat").write_text("\n".join(lines) + "\n")
