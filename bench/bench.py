#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs all benchmarks of a build, prints their tables and draws their pictures.

Everything is written to the folder of the build: results.json, summary.json, tables.md and the pictures. --docs also
puts the tables into docs/explanation/performance.md, and the summary and the pictures into the folder beside it.
"""

import argparse
import json
import os
import pathlib
import subprocess
import sys

import machine
import plots
import report
import summary
from bus import processes
from inprocess import encoding

HERE = pathlib.Path(__file__).parent


def run_bus(build, out, quick):
    file = out / "bus.json"
    subprocess.run([sys.executable, "-B", HERE / "bus/bench_bus.py", build / "bench/bus", file,
                    *(["--quick"] if quick else [])], check=True)
    return json.loads(file.read_text())


def run_inprocess(build, out, quick):
    form = ["--benchmark_repetitions=3", "--benchmark_min_time=0.002"] if quick else []
    subprocess.run([HERE / "inprocess/inprocess.sh", build / "bench/inprocess/bench_inprocess", out, *form], check=True)
    return {"times": encoding.rounds_by_name(json.loads((out / "inprocess.json").read_text())),
            "heap": encoding.heap_by_name(json.loads((out / "inprocess-allocations.json").read_text()))}


def refuse_what_nobody_can_measure_again():
    if not machine.is_committed():
        sys.exit("What is measured is not what was committed: commit it first, so that the page can say what it is of. "
                 "Without --docs it is measured all the same.")
    if reason := processes.why_no_journal():
        sys.exit(f"The page also says what the system's log costs, which {reason}.")


def refuse_when_busy():
    """There is no way to force it: what a busy machine finds is no figure."""
    print("Waiting for the machine to come to rest, for at most two minutes", file=sys.stderr, flush=True)
    load = machine.busy(120)
    if load is not None:
        sys.exit(f"The load is {load:.1f}, more than half of the {os.cpu_count()} processors: what this machine would "
                 "find now is nothing to write down. Let it come to rest; without --docs it is measured all the same.")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path, help="the folder of the build")
    parser.add_argument("--quick", action="store_true", help="a look within a minute: short blocks, and few")
    parser.add_argument("--docs", action="store_true", help="takes the figures into docs/explanation/performance.md")
    options = parser.parse_args()
    if options.quick and options.docs:
        parser.error("what --quick finds is nothing to write down")
    if options.docs:
        report.check(report.PAGE)
        refuse_what_nobody_can_measure_again()
        refuse_when_busy()
    out = options.build
    results = {"machine": machine.describe(options.build), "quick": options.quick,
               "inprocess": run_inprocess(options.build, out, options.quick),
               "bus": run_bus(options.build, out, options.quick)}
    (out / "results.json").write_text(json.dumps(results) + "\n")
    found = summary.of(results)
    (out / "summary.json").write_text(summary.as_json(found) + "\n")
    text = report.text(found)
    (out / "tables.md").write_text(text)
    pictures = plots.draw(results, out)
    print(text)
    if options.docs:
        report.fill(report.PAGE, found, [*pictures, out / "summary.json"])
    print(f"written: {out}/results.json, summary.json, tables.md and {len(pictures)} pictures")


if __name__ == "__main__":
    main()
