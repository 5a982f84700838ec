# SPDX-License-Identifier: MIT
"""Calls: round trips, processor time, instructions."""

import collections
import pathlib
import statistics
import subprocess
import sys
import tempfile

from blocks import flat, over_generations, quantile, spread, summaries
from processes import child
from variants import BASELINE, METHODS

sys.path.append(str(pathlib.Path(__file__).parents[2] / "tests/cost"))
import callgrind  # noqa: E402 - the reader of profiles is the guard's

# Prefixes of file names; all other files belong to the C and C++ libraries.
OWNERS = {"client": ("bench_client",), "library": ("libzv-iptv-service-api",), "bus library": (
    "libgio", "libglib", "libgobject", "libdbus", "libsystemd", "libsdbus")}

QUANTILES = [0.01, 0.05, *(part / 100 for part in range(10, 100, 5)), 0.975, 0.99, 0.995, 0.999]


def p50(block):
    return statistics.median(block["ns"])


def p99(block):
    return quantile(sorted(block["ns"]), 0.99)


def distribution(blocks):
    """The distribution of all calls of all blocks."""
    ordered = sorted(ns for block in blocks for ns in block["ns"])
    return {str(part): quantile(ordered, part) for part in QUANTILES}


def call_block(bench, client, method, calls):
    """One block, and the processor time of the other processes per call."""
    before = bench.processor_times(client)
    block = client.ask(f"call {method} {calls}")
    block["others"] = {name: (after - before[name]) / calls for name, after in bench.processor_times(client).items()}
    return block


def measure_calls(bench, variants, form, calls):
    figures = {"p50": p50, "p99": p99, "cpu": lambda block: block["cpu"] / len(block["ns"])}
    measured = {"form": form, "calls_a_block": calls}
    for method in METHODS:
        results = over_generations(bench, variants, form, lambda variant, clients: call_block(
            bench, clients[0], method, calls))
        measured[method] = summaries(results, figures)
        for variant, generations in results.items():
            blocks = flat(generations)
            measured[method][variant.key]["distribution"] = distribution(blocks)
            measured[method][variant.key]["others"] = {name: spread([block["others"][name] for block in blocks])
                                                       for name in blocks[0]["others"]}
    return measured


def profile(bench, variant, method, count):
    """The instructions of a whole process that makes `calls` calls, by the files that contain their code."""
    command, environment = bench.command(variant)
    with tempfile.TemporaryDirectory() as folder:
        out = pathlib.Path(folder, "out")
        valgrind = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={out}"]
        subprocess.run(child([*valgrind, *command, 1]), input=f"repeat {method} {count}\n", text=True, env=environment,
                       capture_output=True, check=True, timeout=300)
        with out.open() as lines:
            return callgrind.by_object(lines)


def owner(file):
    """The owner of the code in a file."""
    name = pathlib.Path(file or "").name
    return next((own for own, beginnings in OWNERS.items() if name.startswith(beginnings)), "C and C++")


def by_owner(bench, variant, method, few, many):
    """The instructions of a call by owner: the difference between two numbers of calls, without start and end."""
    counts = collections.Counter()
    for sign, calls in ((1, many), (-1, few)):
        for file, count in profile(bench, variant, method, calls).items():
            counts[owner(file)] += sign * count / (many - few)
    return counts


def measure_instructions(bench, variants, methods, few, many, runs):
    """Medians of several runs, because the number of times that threads wait for each other varies."""
    def of_call(variant, method):
        found = sorted((by_owner(bench, variant, method, few, many) for _ in range(runs)), key=lambda run: run.total())
        return found[len(found) // 2]

    measured = {"calls": many - few, "runs": runs}
    for method in methods:
        a_call = {variant.key: of_call(variant, method) for variant in variants if not variant.journal}
        measured[method] = {key: {"instructions": own.total(), "ratio": own.total() / a_call[BASELINE.key].total(),
                                  "owners": own} for key, own in a_call.items()}
    return measured
