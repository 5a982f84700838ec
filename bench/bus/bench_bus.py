#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Measures the library across a bus, compared with the alternatives, and writes the results as JSON."""

import argparse
import json
import pathlib
import sys
import time

import calls
import lives
import pushes
from processes import Bench, why_no_journal
from variants import ALL, BASELINE, LIBRARY, LOGGING, METHODS

# A pair is the number of generations of processes, and of rounds of each.
FULL = {"call": ((14, 5), 250), "instructions": (tuple(METHODS), ALL, 100, 400, 3), "push": (8, 3),
        "crowd": ((3, 2), (4, 16)), "callbacks": 8, "objects": 15, "starts": 20, "growth": (1_000_000, 100_000, (6, 7))}
QUICK = {"call": ((2, 5), 150), "instructions": (("mute",), (LIBRARY, BASELINE), 100, 200, 1), "push": (1, 2),
         "crowd": ((1, 1), (4,)), "callbacks": 2, "objects": 3, "starts": 3, "growth": (20_000, 1_000, (2, 2))}
ONCE = {**QUICK, "call": ((1, 1), 20), "starts": 1}


def parts(bench, variants, form):
    """The measurements, by their names in the results."""
    few = [variant for variant in variants if variant in form["instructions"][1]]
    return {
        "call": lambda: calls.measure_calls(bench, variants, *form["call"]),
        "instructions": lambda: calls.measure_instructions(bench, few, form["instructions"][0],
                                                           *form["instructions"][2:]),
        "push": lambda: pushes.measure_pushes(bench, variants, form["push"]),
        "crowd": lambda: pushes.measure_crowds(bench, variants, *form["crowd"]),
        "callbacks": lambda: pushes.measure_callbacks(bench, form["callbacks"]),
        "objects": lambda: lives.measure_objects(bench, form["objects"]),
        "starts": lambda: lives.measure_starts(bench, variants, form["starts"]),
        "growth": lambda: lives.measure_growth(bench, *form["growth"]),
    }


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("programs", help="the folder of the programs that were built")
    parser.add_argument("out", type=pathlib.Path, help="the file to write")
    parser.add_argument("--quick", action="store_true", help="few and short blocks, for a quick look")
    parser.add_argument("--once", action="store_true", help="one block of each kind, which only tests the programs")
    parser.add_argument("--only", action="append", help="measure only this part; may be repeated")
    options = parser.parse_args()
    no_journal = why_no_journal()
    variants = [variant for variant in ALL if not (variant.journal and no_journal)]
    if no_journal:
        print(f"left out: measuring the library with a system log {no_journal}", file=sys.stderr)
    results = {"quick": options.quick or options.once, "journal": no_journal or "a private systemd-journald",
               "variants": {variant.key: variant.title for variant in variants}}
    with Bench(options.programs) as bench:
        if not no_journal:
            results["journal_lines"] = bench.count_journal_lines(LOGGING)
        wanted = parts(bench, variants, ONCE if options.once else QUICK if options.quick else FULL)
        for name in options.only or wanted:
            start = time.monotonic()
            results[name] = wanted[name]()
            print(f"{name:14} {time.monotonic() - start:6.1f} s", file=sys.stderr, flush=True)
    options.out.write_text(json.dumps(results, indent=1) + "\n")


if __name__ == "__main__":
    main()
