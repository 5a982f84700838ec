# SPDX-License-Identifier: MIT
"""The tables of the results, as rows of text."""

from bus.variants import BASELINE, LIBRARY, METHODS, PACKETS


def number(value, digits=1):
    """Three significant digits, with a thousands separator."""
    return f"{value:,.{0 if abs(value) >= 100 else digits if abs(value) >= 10 else 2}f}"


def between(figure, unit=1.0):
    return f"{number(figure['median'] / unit)} ({number(figure['low'] / unit)}–{number(figure['high'] / unit)})"


def ratio_text(found):
    return f"{found['median']:.3f} ({found['low']:.3f}–{found['high']:.3f})"


def ratio(figure):
    return ratio_text(figure["to"][BASELINE.key])


def variants_of(bus, part):
    return [(key, title) for key, title in bus["variants"].items() if key in part]


def where(results):
    machine = results["machine"]
    rows = [["date", machine["date"]], ["revision", f"`{machine['revision']}`"], ["compiler", machine["compiler"]],
            ["processor", f"{machine['processor']}, {machine['cores']} cores"],
            ["kernel", machine["kernel"]], ["load at the start", str(machine["load"])],
            ["system log", results["bus"]["journal"]]]
    rows += [[f"`{package}`", version] for package, version in machine["versions"].items()]
    return ["machine", ""], rows


def calls(results, method):
    part = results["bus"]["call"][method]
    rows = [[title, between(part[key]["p50"], 1e3), ratio(part[key]["p50"]), between(part[key]["p99"], 1e3),
             ratio(part[key]["p99"]), between(part[key]["cpu"], 1e3), ratio(part[key]["cpu"])]
            for key, title in variants_of(results["bus"], part)]
    return [METHODS[method], "p50, µs", "p50, ratio", "p99, µs", "p99, ratio", "processor, µs per call",
            "processor, ratio"], rows


def others(results, method):
    """The processor time of the other processes for a call."""
    part = results["bus"]["call"][method]
    rows = [[title, between(part[key]["cpu"], 1e3), *(between(part[key]["others"][other], 1e3)
                                                      if part[key]["others"][other]["median"] else "–"
                                                      for other in ("daemon", "service", "journal"))]
            for key, title in variants_of(results["bus"], part)]
    return [f"processor, µs per call of {METHODS[method]}", "client", "daemon", "service", "journal"], rows


def instructions(results):
    part = results["bus"]["instructions"]
    methods = [method for method in METHODS if method in part]
    rows = [[title, *(text for method in methods for text in (f"{part[method][key]['instructions']:,.0f}",
                                                               f"{part[method][key]['ratio']:.3f}"))]
            for key, title in variants_of(results["bus"], part[methods[0]])]
    return ["instructions per call", *(text for method in methods for text in (METHODS[method], "ratio"))], rows


def owners(results):
    part = results["bus"]["instructions"]
    titles = results["bus"]["variants"]
    names = ("client", "library", "bus library", "C and C++")
    rows = [[f"{METHODS[method]}, {titles[key]}", *(f"{part[method][key]['owners'].get(name, 0):,.0f}" for name in names)]
            for method in METHODS if method in part for key in (LIBRARY.key, BASELINE.key)]
    return ["instructions per call", "the program", "this library", "GLib and GIO", "the C and C++ libraries"], rows


def received(part, variants):
    """The figures for one size of packets and one number of receivers."""
    rows = [[title, number(part[key]["messages"]["median"]), between(part[key]["bytes"], 1e6),
             ratio(part[key]["bytes"]), between(part[key]["cpu_a_mb"], 1e-6), ratio(part[key]["cpu_a_mb"]),
             number(part[key]["peak_kib"]["median"] / 1024), f"{part[key]['peak_kib']['to'][BASELINE.key]['median']:.2f}"]
            for key, title in variants]
    return ["packets/s", "MB/s", "MB/s, ratio", "processor, µs per MB", "processor, ratio", "peak, MiB",
            "peak, ratio"], rows


def pushes(results, size):
    part = results["bus"]["push"][str(size)]
    header, rows = received(part, variants_of(results["bus"], part))
    return [f"packets of {PACKETS[size]}", *header], rows


def crowds(results, size):
    rows = []
    for count, part in results["bus"]["crowd"][str(size)].items():
        header, found = received(part, variants_of(results["bus"], part))
        rows += [[f"{row[0]}, {count}", *row[1:]] for row in found]
    return [f"packets of {PACKETS[size]}, receiving processes", *header], rows


def callbacks(results):
    rows = [[count, between(one["wall"], 1e3), between(one["cpu"], 1e3)]
            for count, one in results["bus"]["callbacks"]["callbacks"].items()]
    return ["callbacks", "µs per packet of 4 KiB", "processor, µs per packet"], rows


def starts(results):
    part = results["bus"]["starts"]
    rows = [[title, between(part[key]["start"], 1e6), ratio(part[key]["start"])]
            for key, title in variants_of(results["bus"], part)]
    return ["new process", "ms to the first answered call", "ratio"], rows


def objects(results):
    rows = [[f"`{name}`", between(one["first"], 1e6), between(one["further"], 1e6), f"{one['heap']['median']:,.0f}",
             "not reported by the daemon" if one["matches"]["median"] < 0 else f"{one['matches']['median']:.0f}"]
            for name, one in results["bus"]["objects"].items()]
    return ["object", "first object, ms", "further object, ms", "added heap, bytes", "added match rules"], rows


def growth(results):
    part = results["bus"]["growth"]
    line = part["line"]
    rows = [[f"{point['calls']:,}", number(point["p50"] / 1e3), number(point["round"] / 1e3), f"{point['heap']:,}",
             f"{point['rss_kib']:,}"] for point in (line[0], line[len(line) // 2], line[-1])]
    return ["calls", "p50 of a call, µs", "subscribing and unsubscribing, µs", "heap, bytes", "resident, KiB"], rows


def python(results):
    """The Python package and zviptvctl batch, compared with the C++ layer."""
    part = results["python"]
    rows = [[what, name, ratio_text(rate), ratio_text(found["cpu"][name]) if name in found["cpu"] else "–"]
            for what, found in part["compared"].items() for name, rate in found["rate"].items()]
    beyond = part["batch"]
    rows.append(["a command beyond the call, ms", "`zviptvctl batch`",
                 f"{beyond['median'] * 1e3:.3f} ({beyond['low'] * 1e3:.3f}–{beyond['high'] * 1e3:.3f})", "–"])
    rows.append([f"{part['rounds']} rounds on {part['date']}", f"revision `{part['revision']}`",
                 f"load at the start {part['load']}", ""])
    return ["", "client", "rate, ratio to the C++ layer", "processor time, ratio"], rows


def age(results):
    """The old process compared with new ones."""
    part = results["bus"]["growth"]
    figures = {"p50": "p50 of a call", "round": "subscribing and unsubscribing", "rss_kib": "resident memory",
               "heap": "heap"}
    rows = [[title, ratio_text(part["old to new"][figure]), ratio_text(part["other new to new"][figure])]
            for figure, title in figures.items()]
    return ["ratio to a new process", "old process", "another new process"], rows
