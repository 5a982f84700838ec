#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Runs all benchmarks of a build, prints their tables and draws their pictures.

Writes results.json, summary.json, tables.md and the pictures to the folder of the build. --docs also writes the tables
into docs/explanation/performance.md, and the summary and the pictures into docs/explanation/performance.
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


def require_repeatable():
    if not machine.is_committed():
        sys.exit("cannot update the page: the sources have uncommitted changes, so the page could not name their "
                 "revision; commit them first, or measure without --docs")
    if reason := processes.why_no_journal():
        sys.exit(f"cannot update the page: measuring the cost of the system's log {reason}")


def refuse_when_busy():
    """No option overrides this: the figures of a busy machine are not reliable."""
    print("Waiting until the machine is idle, for at most two minutes", file=sys.stderr, flush=True)
    load = machine.busy(120)
    if load is not None:
        sys.exit(f"cannot update the page: the load of {load:.1f} exceeds half of the {os.cpu_count()} processors; "
                 "wait until the machine is idle, or measure without --docs")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path, help="the folder of the build")
    parser.add_argument("--quick", action="store_true", help="measures for a minute, too short for figures to quote")
    parser.add_argument("--docs", action="store_true", help="updates docs/explanation/performance.md")
    options = parser.parse_args()
    if options.quick and options.docs:
        parser.error("--docs cannot be used with --quick, whose figures are not reliable")
    if options.docs:
        report.check(report.PAGE)
        require_repeatable()
        refuse_when_busy()
    out = options.build
    results = {"machine": machine.describe(options.build), "quick": options.quick,
               "inprocess": run_inprocess(options.build, out, options.quick),
               "bus": run_bus(options.build, out, options.quick),
               "python": report.committed()["python"]}  # which bench/python/bench_python.py measures
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
