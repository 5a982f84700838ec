# SPDX-License-Identifier: MIT
"""Alternating blocks, and their statistics.

In every round each variant runs one block, in an order that is random for each round, so that no variant always follows
the same one. The order is the same in every run. A ratio compares two blocks of one round. The result is the median of
all rounds.

The system often keeps the threads of a process on the same processors from one block to the next, which determines how
fast they are. Therefore there are several generations of processes, each with its share of the rounds.
"""

import math
import random
import statistics

from variants import BASELINE, SDBUSCPP


def alternate(variants, rounds, block, seed=0):
    """Calls block(variant) for all variants in each round. Returns lists of results by variant. The first round is a
    warm-up and does not count."""
    variants = list(variants)
    results = {variant: [] for variant in variants}
    draw = random.Random(seed)
    for number in range(rounds + 1):
        for variant in draw.sample(variants, len(variants)):
            result = block(variant)
            if number > 0:
                results[variant].append(result)
    return results


def over_generations(bench, variants, form, block, number=1):
    """Calls block(variant, clients) like alternate, with `number` new clients of each variant in every generation. The
    form is the number of generations and of their rounds. Returns a list of results for each generation, by variant.
    """
    generations, rounds = form
    results = {variant: [] for variant in variants}
    for generation in range(generations):
        with bench.clients(variants, number) as clients:
            blocks = alternate(variants, rounds, lambda one: block(one, clients[one]), generation)
        for variant in variants:
            results[variant].append(blocks[variant])
    return results


def flat(generations):
    return [result for generation in generations for result in generation]


def quantile(ordered, part):
    return ordered[min(len(ordered) - 1, int(part * len(ordered)))]


def spread(values):
    """The median and the quartiles."""
    ordered = sorted(values)
    return {"median": statistics.median(ordered), "low": quantile(ordered, 0.25), "high": quantile(ordered, 0.75)}


def certainty(generations):
    """The interval in which the median lies with a probability of at least 95 %, from the order of the generations'
    medians. The blocks of one generation are not independent, so only generations count. None for fewer than six."""
    ordered = sorted(statistics.median(generation) for generation in generations)
    number, outside, chance = len(ordered), 0, 0.0
    while (chance := chance + 2 * math.comb(number, outside) / 2**number) <= 0.05:
        outside += 1
    return [ordered[outside - 1], ordered[-outside]] if outside > 0 else None


def quotients(own, others):
    if not all(others):
        raise RuntimeError("a block took no time: a ratio to it is undefined")
    return [mine / other for mine, other in zip(own, others, strict=True)]


def ratios(own, others):
    """The spread of the ratios of pairs of blocks, and the certainty of their median. The lists are by generation."""
    found = [quotients(*generation) for generation in zip(own, others, strict=True)]
    return {**spread(flat(found)), "certain": certainty(found)}


def summaries(results, figures):
    """By variant's key: for each figure, which a function computes from the result of a block, its spread, the spreads
    of its ratios, and the figures of the single blocks."""
    summary = {variant.key: {} for variant in results}
    for name, figure in figures.items():
        values = {variant: [[figure(result) for result in blocks] for blocks in generations]
                  for variant, generations in results.items()}
        bases = [base for base in (BASELINE, SDBUSCPP) if base in values]
        for variant, own in values.items():
            summary[variant.key][name] = {**spread(flat(own)), "blocks": own,
                                          "to": {base.key: ratios(own, values[base]) for base in bases}}
    return summary
