#!/usr/bin/env python3
"""report.py FOLDER: the tables of what inprocess.sh has measured, and the data of its plots."""

import json
import os
import re
import statistics
import sys

SERIES = ("memcpy", "memcpy_new", "peer_encode", "peer_decode", "helper_encode", "helper_decode", "gio")
TITLES = ("memcpy", "memcpy into new memory", "encode", "decode", "helper bus: encode", "helper bus: decode",
          "GIO's part, both ways")
LARGE = "1/1048576"


def load(folder, name):
    with open(os.path.join(folder, name), encoding="utf-8") as file:
        return json.load(file)


def rounds_by_name(result):
    """The CPU time of a round in ns, once for each repetition."""
    times = {}
    for run in result["benchmarks"]:
        if run["run_type"] == "iteration":
            times.setdefault(run["name"], []).append(run["cpu_time"])
    return times


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


def table(head, rows):
    yield "| " + " | ".join(head) + " |"
    yield "|---" + "|--:" * (len(head) - 1) + "|"
    for row in rows:
        yield "| " + " | ".join(row) + " |"


def times_table(times, first, shapes, label):
    def row(shape):
        base = statistics.median(times[f"memcpy/{shape}"])
        cells = [label(shape), time_text(base)]
        for name in SERIES[1:]:
            median = statistics.median(times[f"{name}/{shape}"])
            cells.append(f"{time_text(median)} ({ratio_text(median / base)})")
        return cells
    return table((first,) + TITLES, map(row, shapes))


def rate_table(times, shapes):
    """Bytes a second."""
    def row(shape):
        size = int(shape.split("/")[1])
        return [size_text(size)] + [f"{size / statistics.median(times[f'{name}/{shape}']):.3g}" for name in SERIES]
    return table(("GB a second, value of",) + TITLES, map(row, shapes))


def heap_table(heap, shapes):
    def row(shape):
        entries, size = map(int, shape.split("/"))
        cells = [f"{entries} × {size_text(size)}"]
        for name in SERIES[2:]:
            run = heap[f"{name}/{shape}"]
            cells.append(f"{run['allocations']:.0f} ({run['allocated_bytes']:.0f} B)")
        return cells
    return table(("entries × bytes of a value",) + TITLES[2:], map(row, shapes))


def workload_table(times, heap):
    def row(name):
        median, spread = quartiles(times[name])
        run = heap[name]
        return [f"`{name.split('/')[1]}`", time_text(median), f"{spread:.1%}", f"{run['allocations']:.0f}",
                f"{run['allocated_bytes']:.0f}"]
    return table(("workload", "median", "between the quartiles", "allocations", "bytes allocated"),
                 (row(name) for name in times if name.startswith("workload/")))


def large_table(times):
    """The target: 1 MiB within three copies. The ratio is of each repetition to the copies' median."""
    base = statistics.median(times[f"memcpy/{LARGE}"])

    def row(name, title):
        median, spread = quartiles(times[f"{name}/{LARGE}"])
        return [title, time_text(median), f"{median / base:.2f}", f"{spread:.1%}"]
    return table(("value of 1 MiB", "median", "times memcpy", "between the quartiles"), map(row, SERIES, TITLES))


def write_plot(folder, times, name, shapes, column):
    with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
        for shape in shapes:
            medians = (f"{statistics.median(times[f'{series}/{shape}']):.1f}" for series in SERIES)
            print(shape.split("/")[column], *medians, file=file)


def circumstances(result):
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        model = re.search(r"model name\s*: (.*)", file.read())
    context = result["context"]
    runs = max(run["repetitions"] for run in result["benchmarks"])
    yield (f"{model[1] if model else 'unknown processor'}, {context['num_cpus']} processors, {context['date'][:10]}; "
           f"load {context['load_avg'][0]:.1f} at the start; medians of {runs} repetitions in random order, CPU time; "
           "in brackets the ratio to memcpy.")


def main(folder):
    result = load(folder, "inprocess.json")
    times = rounds_by_name(result)
    heap = {run["name"]: run for run in load(folder, "inprocess-allocations.json")["benchmarks"]}
    shapes = [name.removeprefix("memcpy/") for name in times if name.startswith("memcpy/")]
    by_size = sorted((shape for shape in shapes if shape.startswith("1/")), key=lambda shape: int(shape[2:]))
    by_entries = sorted((shape for shape in shapes if shape.endswith("/16")), key=lambda shape: int(shape[:-3]))
    parts = (
        circumstances(result),
        large_table(times),
        times_table(times, "value of", by_size, lambda shape: size_text(int(shape[2:]))),
        rate_table(times, by_size),
        times_table(times, "entries of 16 bytes", by_entries, lambda shape: shape[:-3]),
        heap_table(heap, by_entries + by_size[2:]),
        workload_table(times, heap),
    )
    text = "\n\n".join("\n".join(part) for part in parts) + "\n"
    with open(os.path.join(folder, "inprocess.md"), "w", encoding="utf-8") as file:
        file.write(text)
    write_plot(folder, times, "inprocess-bytes.dat", by_size, 1)
    write_plot(folder, times, "inprocess-entries.dat", by_entries, 0)
    print(os.path.join(folder, "inprocess.md"))


if __name__ == "__main__":
    main(sys.argv[1])
