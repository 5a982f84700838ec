# SPDX-License-Identifier: MIT
"""What was aimed at, and whether it was reached."""

import math

from bus.variants import BASELINE, LIBRARY, LOGGING, METHODS, SDBUSCPP
from inprocess import encoding


def line(what, found, limit, at_most=True):
    """The found one may have an interval, in which it certainly lies; None if nothing is certain."""
    median, certain = found["median"], found.get("certain", [found["median"]])
    low, high = min(certain or [-math.inf]), max(certain or [math.inf])
    reached = "yes" if (median <= limit) == at_most else "**no**"
    doubt = ", but not certainly" if min(low, median) < limit < max(high, median) else ""
    interval = f" ({low:.3f}–{high:.3f})" if low < high < math.inf else ""
    return [what, f"{'≤' if at_most else '≥'} {limit:g}", f"{median:.3f}{interval}", reached + doubt]


def ratio(figure, base=BASELINE):
    return figure["to"][base.key]


def of_calls(bus):
    for method, title in METHODS.items():
        part = bus["call"][method]
        yield line(f"p50 of {title}, log off", ratio(part[LIBRARY.key]["p50"]), 1.05)
        if LOGGING.key in part:
            yield line(f"p50 of {title}, system log", ratio(part[LOGGING.key]["p50"]), 1.15)
        else:
            yield [f"p50 of {title}, system log", "≤ 1.15", "not measured", "–"]
        yield line(f"processor time of {title}, log off", ratio(part[LIBRARY.key]["cpu"]), 1.10)


def of_pushes(bus):
    rate = bus["push"]["65536"][LIBRARY.key]["bytes"]
    yield line("push of 64 KiB", ratio(rate), 0.95, at_most=False)
    yield line(f"push of 64 KiB, to {SDBUSCPP.title}", ratio(rate, SDBUSCPP), 30, at_most=False)


def of_encoding(times):
    for name in ("peer_encode", "peer_decode", "helper_encode", "helper_decode"):
        yield line(f"{encoding.TITLES[name]} of 1 MiB, to memcpy", {"median": encoding.large_ratio(times, name)}, 3)
    for what, growth in encoding.growths(times).items():
        yield line(what, {"median": growth}, 1.25)


def of_growth(growth):
    titles = {"p50": "a call", "round": "subscribing and unsubscribing", "rss_kib": "resident memory", "heap": "heap"}
    for figure, title in titles.items():
        yield line(f"{title} after all calls and subscriptions, to that of a new process", growth["old to new"][figure],
                   1.05)
    first, last = growth["line"][0], growth["line"][-1]
    for figure in ("rss_kib", "heap"):
        yield line(f"{titles[figure]} after all calls and subscriptions, to that after a fiftieth",
                   {"median": last[figure] / first[figure]}, 1.05)


def targets(results):
    bus = results["bus"]
    rows = [*of_calls(bus), *of_pushes(bus), *of_encoding(results["inprocess"]["times"]), *of_growth(bus["growth"])]
    return [f"ratio to {BASELINE.title}, or as it says", "wanted", "found", "reached"], rows
