"""The life of a client: what a start costs, and whether anything grows."""

import json
import statistics
import subprocess

from blocks import alternate, spread
from processes import mortal
from variants import LIBRARY

OBJECTS = ("PlayerControl", "BroadcastData", "IPTVDataSubscriber", "IPGUtil")


def probe(bench, name):
    run = subprocess.run(mortal([bench.programs / "bench_start_probe", name]), env=bench.environment,
                         stdout=subprocess.PIPE, check=True, timeout=60)
    return json.loads(run.stdout)


def measure_objects(bench, rounds):
    """Of each of the library's objects, in processes of their own."""
    results = alternate(OBJECTS, rounds, lambda name: probe(bench, name))
    return {name: {figure: statistics.median(one[figure] for one in probes)
                   for figure in ("first", "further", "heap", "matches")} for name, probes in results.items()}


def start_of(bench, variant):
    with bench.clients([variant]) as clients:
        return clients[variant][0].start


def measure_starts(bench, variants, rounds):
    """To the first answered call in a new process, whose loading does not count."""
    results = alternate(variants, rounds, lambda variant: start_of(bench, variant))
    return {variant.key: spread(values) for variant, values in results.items()}


def measure_growth(bench, calls, subscriptions, slices=50):
    """Many calls and subscriptions in one process, which is then compared with a new one."""
    with bench.clients([LIBRARY]) as clients:
        old = clients[LIBRARY][0]
        old.ask("call mute 2000")
        old.ask("rounds 100")
        line = []
        for number in range(slices):
            part = calls // slices
            timed = old.ask(f"call mute {min(part, 1000)}")
            old.ask(f"repeat mute {max(0, part - 1000)}")
            rounds = old.ask(f"rounds {subscriptions // slices}")
            memory = old.ask("memory")
            line.append({"calls": (number + 1) * part, "p50": statistics.median(timed["ns"]),
                         "round": rounds["ns"] / (subscriptions // slices), **memory})
        return {"calls": calls, "subscriptions": subscriptions, "line": line, "ratio": compare(bench, old)}


def compare(bench, old, rounds=40, calls=300):
    """The cost of a call of the old process to that of a new one, in alternating blocks."""
    with bench.clients([LIBRARY]) as clients:
        both = {"old": old, "new": clients[LIBRARY][0]}
        results = alternate(both, rounds, lambda which: both[which].ask(f"call mute {calls}"))
    medians = {which: [statistics.median(block["ns"]) for block in blocks] for which, blocks in results.items()}
    return spread([old_one / new_one for old_one, new_one in zip(medians["old"], medians["new"])])
