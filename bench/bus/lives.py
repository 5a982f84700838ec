# SPDX-License-Identifier: MIT
"""The life of a client: the cost of a start, and growth."""

import json
import statistics
import subprocess

from blocks import alternate, ratios, spread, summaries
from processes import child
from variants import LIBRARY

OBJECTS = ("PlayerControl", "BroadcastData", "IPTVDataSubscriber", "IPGUtil")


def probe(bench, name):
    run = subprocess.run(child([bench.programs / "bench_start_probe", name]), env=bench.environment,
                         stdout=subprocess.PIPE, check=True, timeout=60)
    return json.loads(run.stdout)


def measure_objects(bench, rounds):
    """Measures each object of the library in a separate process."""
    results = alternate(OBJECTS, rounds, lambda name: probe(bench, name))
    return {name: {figure: spread([one[figure] for one in probes])
                   for figure in ("first", "further", "heap", "matches")} for name, probes in results.items()}


def start_of(bench, variant):
    with bench.clients([variant]) as clients:
        return clients[variant][0].start


def measure_starts(bench, variants, rounds):
    """The time to the first answered call in a new process, without loading the program."""
    results = alternate(variants, rounds, lambda variant: start_of(bench, variant))
    return summaries({variant: [[start] for start in starts] for variant, starts in results.items()},
                     {"start": lambda start: start})


def live(old, calls, subscriptions, slices):
    """Makes many calls and subscriptions in one process, and measures it after each slice."""
    part, rounds = calls // slices, subscriptions // slices
    for number in range(slices):
        timed = old.ask(f"call mute {min(part, 1000)}")
        old.ask(f"repeat mute {max(0, part - 1000)}")
        subscribing = old.ask(f"rounds {rounds}")["ns"]
        yield {"calls": (number + 1) * part, "p50": statistics.median(timed["ns"]), "round": subscribing / rounds,
               **old.ask("memory")}


def measure_growth(bench, calls, subscriptions, form, slices=50):
    """The growth of one process, and how the old process compares with new ones."""
    with bench.clients([LIBRARY]) as clients:
        old = clients[LIBRARY][0]
        old.ask("call mute 2000")
        old.ask("rounds 100")
        line = list(live(old, calls, subscriptions, slices))
        return {"calls": calls, "subscriptions": subscriptions, "line": line, **compare(bench, old, form)}


def compare(bench, old, form, calls=250, subscriptions=50):
    """The ratios of the old process to several successive new ones, and of new ones to each other."""
    def block(client):
        timed = client.ask(f"call mute {calls}")["ns"]
        subscribing = client.ask(f"rounds {subscriptions}")["ns"]
        memory = client.ask("memory")
        return {"p50": statistics.median(timed), "round": subscribing / subscriptions, "rss_kib": memory["rss_kib"],
                "heap": memory["heap"]}

    generations, rounds = form
    results = {which: [] for which in ("old", "new", "other new")}
    for generation in range(generations):
        with bench.clients([LIBRARY], 2) as clients:
            processes = {"old": old, "new": clients[LIBRARY][0], "other new": clients[LIBRARY][1]}
            blocks = alternate(processes, rounds, lambda which: block(processes[which]), generation)
        for which, own in blocks.items():
            results[which].append(own)

    def figures(which, figure):
        return [[one[figure] for one in generation] for generation in results[which]]

    return {f"{which} to new": {figure: ratios(figures(which, figure), figures("new", figure))
                                for figure in ("p50", "round", "rss_kib", "heap")} for which in ("old", "other new")}
