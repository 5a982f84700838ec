#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the Python package and `zviptvctl batch`, compared with the C++ layer, in alternating blocks.

Prints the table. --docs also writes it into docs/explanation/performance.md, and its data into the page's summary.
"""

import argparse
import contextlib
import json
import pathlib
import sys
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path += [str(HERE.parent / "bus"), str(HERE.parent)]
import machine  # noqa: E402 - the folders are no packages
import report  # noqa: E402
import summary  # noqa: E402
from blocks import alternate, quotients, spread  # noqa: E402
from markdown import render  # noqa: E402
from processes import Bench, Process  # noqa: E402
from tables import python as table  # noqa: E402

PYTHON = "/usr/bin/python3"
BASE = "C++ layer"
CLIENTS = {BASE: None, "Python": "wait", "Python, asyncio": "asyncio"}
CALLS = 500
BATCH = "`zviptvctl batch`"
PACKETS = {"packets of 188 B": (188, 100, 20), "packets of 64 KiB": (65536, 8, 40)}  # size, packets per batch, batches


class Client(Process):
    def ask(self, line):
        self.send_line(line)
        return json.loads(self.hear())


class Batch(Process):
    """zviptvctl batch, which gets all its commands at once."""

    def __init__(self, program, credit, environment):
        super().__init__(["sh", "-c", 'exec "$0" batch', program], credit, environment)

    def seconds_of(self, commands):
        begin = time.monotonic()
        self.tell("\n".join(["mute audio on"] * commands))
        answers = [self.hear(), *(self.process.stdout.readline().decode() for _ in range(commands - 1))]
        seconds = time.monotonic() - begin
        if any(json.loads(answer)["exitCode"] != 0 for answer in answers):
            raise RuntimeError(f"zviptvctl batch: a command failed: {answers[0]}")
        return seconds


def call_block(clients, name):
    """The time of a call in seconds, and its processor time."""
    if name == BATCH:
        return {"seconds": clients[name].seconds_of(CALLS) / CALLS}
    return {what: value / CALLS for what, value in clients[name].ask(f"call {CALLS}").items()}


def packet_block(bench, client, shape):
    """The time of a packet in seconds, and its processor time. Before and after it, nobody is subscribed."""
    size, batch, batches = shape
    count = batch * batches
    client.tell(f"receive {count} {size} {batch}")
    await_subscribers(bench, 1)
    bench.service.tell(f"push {count} {size} {batch}")
    found = json.loads(client.hear())
    await_subscribers(bench, 0)
    return {"seconds": found["seconds"] / (count - 1), "cpu": found["cpu"] / count}


def await_subscribers(bench, number):
    bench.service.tell(f"await {number}")
    bench.service.hear()


def ratios(blocks, figure):
    """The spread of the ratios to the C++ layer, by client."""
    base = [block[figure] for block in blocks[BASE]]
    return {name: spread(quotients([block[figure] for block in own], base))
            for name, own in blocks.items() if figure in own[0]}


def compare(blocks):
    rates = {name: [{"rate": 1 / block["seconds"]} for block in own] for name, own in blocks.items()}
    return {"rate": ratios(rates, "rate"), "cpu": ratios(blocks, "cpu")}


def measure(build, rounds):
    """The figures of the table."""
    with Bench(build / "bench/bus") as bench, contextlib.ExitStack() as stack:
        environment = {**bench.environment, "PYTHONPATH": str(build / "python/package"), "PYTHONDONTWRITEBYTECODE": "1"}
        clients = {}
        for name, form in CLIENTS.items():
            command = [PYTHON, HERE / "client.py", form] if form else [build / "bench/python/bench_layer"]
            clients[name] = stack.enter_context(Client(command, bench.credit, environment))
        clients[BATCH] = stack.enter_context(Batch(build / "tools/ctl/zviptvctl", bench.credit, environment))
        calls = alternate(clients, rounds, lambda name: call_block(clients, name))
        found = {"calls": compare(calls), **{
            title: compare(alternate(CLIENTS, rounds, lambda name, shape=shape: packet_block(bench, clients[name], shape)))
            for title, shape in PACKETS.items()}}
        beyond = [own["seconds"] - base["seconds"] for own, base in zip(calls[BATCH], calls[BASE], strict=True)]
    return {"compared": found, "batch": spread(beyond)}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path, help="the folder of the build, with benchmarks, tools and Python")
    parser.add_argument("--rounds", type=int, default=40, help="blocks of each client")
    parser.add_argument("--docs", action="store_true", help="updates docs/explanation/performance.md")
    options = parser.parse_args()
    if options.docs and not machine.is_committed():
        sys.exit("cannot update the page: the sources have uncommitted changes; commit them first, or measure without --docs")
    where = machine.describe(options.build)
    found = {**measure(options.build.resolve(), options.rounds), "rounds": options.rounds,
             **{name: where[name] for name in ("revision", "date", "load")}}
    print(render(*table({"python": found})))
    if options.docs:
        file = report.PAGE.with_suffix("") / "summary.json"
        results = {**json.loads(file.read_text()), "python": found}
        file.write_text(summary.as_json(results) + "\n")
        report.fill(report.PAGE, results, [])


if __name__ == "__main__":
    main()
