# SPDX-License-Identifier: MIT
"""The targets, and whether the measurements meet them."""

import math

from bus.variants import BASELINE, LIBRARY, LOGGING, METHODS, SDBUSCPP
from inprocess import encoding


def line(what, found, limit, at_most=True):
    """A row. `found` may contain the interval in which its median lies with 95 % probability; None if it is unknown."""
    median, certain = found["median"], found.get("certain", [found["median"]])
    low, high = min(certain or [-math.inf]), max(certain or [math.inf])
    reached = (median <= limit) == at_most
    if min(low, median) < limit < max(high, median):
        met = "probably" if reached else "**probably not**"
    else:
        met = "yes" if reached else "**no**"
    interval = f" ({low:.3f}–{high:.3f})" if low < high < math.inf else ""
    return [what, f"{'≤' if at_most else '≥'} {limit:g}", f"{median:.3f}{interval}", met]


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
    yield line(f"push of 64 KiB, compared with {SDBUSCPP.title}", ratio(rate, SDBUSCPP), 30, at_most=False)


def of_encoding(times):
    for name in ("peer_encode", "peer_decode", "helper_encode", "helper_decode"):
        yield line(f"{encoding.TITLES[name]} of 1 MiB, compared with memcpy",
                   {"median": encoding.large_ratio(times, name)}, 3)
    for what, growth in encoding.growths(times).items():
        yield line(what, {"median": growth}, 1.25)


def of_growth(growth):
    titles = {"p50": "a call", "round": "subscribing and unsubscribing", "rss_kib": "resident memory", "heap": "heap"}
    for figure, title in titles.items():
        yield line(f"{title} after all calls and subscriptions, compared with a new process",
                   growth["old to new"][figure], 1.05)
    first, last = growth["line"][0], growth["line"][-1]
    for figure in ("rss_kib", "heap"):
        yield line(f"{titles[figure]} after all calls and subscriptions, compared with the first fiftieth",
                   {"median": last[figure] / first[figure]}, 1.05)


def targets(results):
    bus = results["bus"]
    rows = [*of_calls(bus), *of_pushes(bus), *of_encoding(results["inprocess"]["times"]), *of_growth(bus["growth"])]
    return [f"ratio to {BASELINE.title}, unless the row names another base", "limit", "measured", "met"], rows
