#!/usr/bin/python3
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
sys.path[:0] = [str(HERE.parent / "bus"), str(HERE.parent)]  # before installed modules of the same names
import machine  # noqa: E402 - the folders are no packages
import report  # noqa: E402
import summary  # noqa: E402
from blocks import alternate, ratios, spread  # noqa: E402
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
        self.send_line("\n".join(["mute audio on"] * commands))
        answers = [self.hear(), *(self.process.stdout.readline().decode() for _ in range(commands - 1))]
        seconds = time.monotonic() - begin
        if any(json.loads(answer)["exitCode"] != 0 for answer in answers):
            raise RuntimeError(f"zviptvctl batch: a command failed: {answers[0]}")
        return seconds


def call_block(clients, name, calls):
    """The time of a call in seconds, and its processor time."""
    if name == BATCH:
        return {"seconds": clients[name].seconds_of(calls) / calls}
    return {what: value / calls for what, value in clients[name].ask(f"call {calls}").items()}


def packet_block(bench, client, shape, part):
    """The time of a packet in seconds, and its processor time. Before and after it, nobody is subscribed."""
    size, batch, batches = shape
    count = batch * batches // part
    client.send_line(f"receive {count} {size} {batch}")
    await_subscribers(bench, 1)
    bench.service.send_line(f"push {count} {size} {batch}")
    found = json.loads(client.hear())
    await_subscribers(bench, 0)
    return {"seconds": found["seconds"] / (count - 1), "cpu": found["cpu"] / count}


def await_subscribers(bench, number):
    bench.service.send_line(f"await {number}")
    bench.service.hear()


@contextlib.contextmanager
def clients_of(bench, build):
    """New processes of all clients, by their names."""
    environment = {**bench.environment, "PYTHONPATH": str(build / "python/package"), "PYTHONDONTWRITEBYTECODE": "1"}
    with contextlib.ExitStack() as stack:
        clients = {BATCH: stack.enter_context(Batch(build / "tools/ctl/zviptvctl", bench.credit, environment))}
        for name, form in CLIENTS.items():
            command = [PYTHON, HERE / "client.py", form] if form else [build / "bench/python/bench_layer"]
            clients[name] = stack.enter_context(Client(command, bench.credit, environment))
        yield clients


def compare(generations):
    """The spreads of the ratios to the C++ layer, by client. A list of blocks by client for each generation."""
    def figures(name, figure):
        return [[figure(block) for block in blocks[name]] for blocks in generations]

    measured = {"rate": lambda block: 1 / block["seconds"], "cpu": lambda block: block["cpu"]}
    return {title: {name: ratios(figures(name, figure), figures(BASE, figure)) for name in generations[0]
                    if title in generations[0][name][0] or title == "rate"} for title, figure in measured.items()}


def measure(build, generations, rounds, part):
    """The figures of the table. A part of 10 is a tenth of the calls and packets."""
    found = {"calls": [], **{title: [] for title in PACKETS}}
    with Bench(build / "bench/bus") as bench:
        for number in range(generations):
            with clients_of(bench, build) as clients:
                found["calls"].append(alternate(
                    [*CLIENTS, BATCH], rounds, lambda name: call_block(clients, name, CALLS // part), number))
                for title, shape in PACKETS.items():
                    found[title].append(alternate(
                        CLIENTS, rounds, lambda name: packet_block(bench, clients[name], shape, part), number))
    beyond = [own["seconds"] - base["seconds"] for blocks in found["calls"]
              for own, base in zip(blocks[BATCH], blocks[BASE], strict=True)]
    return {"compared": {title: compare(blocks) for title, blocks in found.items()}, "batch": spread(beyond)}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("build", type=pathlib.Path, help="the folder of the build, with benchmarks, tools and Python")
    parser.add_argument("--generations", type=int, default=14, help="how often the clients are started")
    parser.add_argument("--rounds", type=int, default=4, help="blocks of each client in a generation")
    parser.add_argument("--part", type=int, default=1, help="divides the number of calls and packets in a block")
    parser.add_argument("--docs", action="store_true", help="updates docs/explanation/performance.md")
    options = parser.parse_args()
    if options.docs and not machine.is_committed():
        sys.exit("cannot update the page: the sources have uncommitted changes; commit them first, or measure without --docs")
    where = machine.describe(options.build)
    found = {**measure(options.build.resolve(), options.generations, options.rounds, options.part),
             "rounds": options.generations * options.rounds, **{name: where[name] for name in ("revision", "date", "load")}}
    print(render(*table({"python": found})))
    if options.docs:
        results = {**report.committed(), "python": found}
        (report.PAGE.with_suffix("") / "summary.json").write_text(summary.as_json(results) + "\n")
        report.fill(report.PAGE, results, [])


if __name__ == "__main__":
    main()
