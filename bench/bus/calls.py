"""Calls: round trips, processor time, instructions."""

import re
import statistics
import subprocess
import tempfile

from blocks import over_generations, quantile, summaries
from processes import mortal
from variants import BASELINE, METHODS

QUANTILES = [0.01, 0.05, *(part / 100 for part in range(10, 100, 5)), 0.975, 0.99, 0.995, 0.999]


def p50(block):
    return statistics.median(block["ns"])


def distribution(blocks):
    """Of all calls of all blocks."""
    ordered = sorted(ns for block in blocks for ns in block["ns"])
    return {str(part): quantile(ordered, part) for part in QUANTILES}


def measure_calls(bench, variants, form, calls):
    figures = {"p50": p50, "cpu": lambda block: block["cpu"] / len(block["ns"])}
    measured = {"form": form, "calls_a_block": calls}
    for method in METHODS:
        results = over_generations(bench, variants, form,
                                   lambda variant, clients: clients[0].ask(f"call {method} {calls}"))
        measured[method] = summaries(results, figures)
        for variant, blocks in results.items():
            measured[method][variant.key]["distribution"] = distribution(blocks)
    return measured


def instructions(bench, variant, method, count):
    """Of a whole process that makes so many calls."""
    command, environment = bench.command(variant)
    with tempfile.TemporaryDirectory() as folder:
        valgrind = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={folder}/out"]
        run = subprocess.run(mortal([*valgrind, *command, 1]), input=f"repeat {method} {count}\n", text=True,
                             env=environment, capture_output=True, check=False, timeout=300)
    collected = re.search(r"Collected : (\d+)", run.stderr)
    if run.returncode != 0 or not collected:
        raise RuntimeError(f"callgrind with {variant.title}: {run.stderr}")
    return int(collected[1])


def measure_instructions(bench, variants, methods, few, many, runs):
    """A call's instructions: what more calls add, so that neither start nor end counts. Medians of several runs: how
    often threads wait for each other is not always the same."""
    def of_call(variant, method):
        return statistics.median(instructions(bench, variant, method, many) - instructions(bench, variant, method, few)
                                 for _ in range(runs)) / (many - few)

    measured = {"calls": many - few, "runs": runs}
    for method in methods:
        a_call = {variant.key: of_call(variant, method) for variant in variants if not variant.journal}
        measured[method] = {key: {"instructions": own, "ratio": own / a_call[BASELINE.key]}
                            for key, own in a_call.items()}
    return measured
