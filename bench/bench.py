#!/usr/bin/env python3
"""Runs all benchmarks of a build, prints their tables and draws their pictures.

Everything is written to the folder of the build: results.json, tables.md and the pictures. --docs also takes them into
docs/performance.md.
"""

import argparse
import json
import pathlib
import subprocess
import sys

import machine
import plots
import report

HERE = pathlib.Path(__file__).parent


def run_bus(build, out, quick):
    file = out / "bus.json"
    subprocess.run([sys.executable, "-B", HERE / "bus/bench_bus.py", build / "bench/bus", file,
                    *(["--quick"] if quick else [])], check=True)
    return json.loads(file.read_text())


def run_inprocess(build, out, quick):
    form = ["--benchmark_repetitions=3", "--benchmark_min_time=0.002"] if quick else []
    subprocess.run([HERE / "inprocess/inprocess.sh", build / "bench/inprocess/bench_inprocess", out, *form],
                   stdout=subprocess.DEVNULL, check=True)
    return json.loads((out / "inprocess.json").read_text())


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path, help="the folder of the build")
    parser.add_argument("--quick", action="store_true", help="a look within a minute: short blocks, and few")
    parser.add_argument("--docs", action="store_true", help="takes the figures into docs/performance.md")
    options = parser.parse_args()
    if options.quick and options.docs:
        parser.error("what --quick finds is nothing to write down")
    out = options.build
    results = {"machine": machine.describe(), "quick": options.quick,
               "inprocess": run_inprocess(options.build, out, options.quick),
               "bus": run_bus(options.build, out, options.quick)}
    (out / "results.json").write_text(json.dumps(results, indent=1) + "\n")
    inprocess = (out / "inprocess.md").read_text()
    text = report.text(results, inprocess)
    (out / "tables.md").write_text(text)
    pictures = [*plots.draw(results, out), *sorted(out.glob("inprocess-*.svg"))]
    print(text)
    if options.docs:
        report.fill(report.PAGE, results, inprocess, pictures)
    print(f"written: {out}/results.json, tables.md and {len(pictures)} pictures")


if __name__ == "__main__":
    main()
