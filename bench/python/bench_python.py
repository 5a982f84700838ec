#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Calls a second in Python, compared with the C++ layer in blocks that take turns; printed as a table."""

import argparse
import contextlib
import json
import os
import pathlib
import statistics
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent / "bus"))
from blocks import alternate  # noqa: E402 - the folder is not a package
from processes import Bench, Process  # noqa: E402

PYTHON = "/usr/bin/python3"
CLIENTS = {"C++ layer": None, "Python": "wait", "Python, asyncio": "asyncio"}
CALLS = 500


class Client(Process):
    def ask(self, line):
        self.send_line(line)
        return json.loads(self.hear())


def measure(bench, build, rounds):
    """By what is measured and by client: operations a second, and processor time of one."""
    environment = {**bench.environment, "PYTHONPATH": str(build / "python/package"), "PYTHONDONTWRITEBYTECODE": "1"}
    with contextlib.ExitStack() as stack:
        clients = {}
        for name, form in CLIENTS.items():
            command = [PYTHON, HERE / "client.py", form] if form else [build / "bench/python/bench_layer"]
            clients[name] = stack.enter_context(Client(command, bench.credit, environment))

        def call(name):
            found = clients[name].ask(f"call {CALLS}")
            return CALLS / found["seconds"], found["cpu"] / CALLS

        return {"calls": alternate(CLIENTS, rounds, call)}


def table(results):
    lines = ["| | client | a second | ratio to the C++ layer | processor time of the client |", "|---|---|---|---|---|"]
    for what, clients in results.items():
        base = [rate for rate, _ in clients["C++ layer"]]
        for name, blocks in clients.items():
            rate = statistics.median(rate for rate, _ in blocks)
            ratio = statistics.median(own / other for (own, _), other in zip(blocks, base, strict=True))
            processor = statistics.median(cpu for _, cpu in blocks)
            lines.append(f"| {what} | {name} | {rate:,.0f} | {ratio:.2f} | {processor * 1e6:.0f} µs |")
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path, help="the folder of the build, with benchmarks, tools and Python")
    parser.add_argument("--rounds", type=int, default=30, help="blocks of each client")
    options = parser.parse_args()
    with Bench(options.build / "bench/bus") as bench:
        print(table(measure(bench, options.build.resolve(), options.rounds)))
    print(f"\nload {os.getloadavg()[0]:.1f} of {os.cpu_count()} processors")


if __name__ == "__main__":
    main()
