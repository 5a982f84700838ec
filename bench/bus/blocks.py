# SPDX-License-Identifier: MIT
"""Alternating blocks and what is made of them.

Every round gives each variant one block, in an order that is drawn anew for each round, so that none always follows the
same one. The draw is the same in every run. A ratio is that of two blocks of one round, and the median of the rounds is
what is told.

Where the system puts the threads of a process, and so how fast it is, often stays as it was from one block to the next.
So there are several generations of processes, each with its share of the rounds.
"""

import math
import random
import statistics

from variants import BASELINE, SDBUSCPP


def alternate(variants, rounds, block, seed=0):
    """block(variant) for all variants, round after round; lists of results by variant. One round warms up."""
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
    """block(variant, clients) as above, with `number` new clients of each variant in every generation. The form is the
    number of the generations and of their rounds. By variant, a list of results for each generation."""
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
    """The median, and where the middle half lies."""
    ordered = sorted(values)
    return {"median": statistics.median(ordered), "low": quantile(ordered, 0.25), "high": quantile(ordered, 0.75)}


def certainty(generations):
    """Where the median lies with a probability of 95 % or more, by the order of the generations' medians: the blocks of
    one generation resemble each other, and so do not count for themselves. None with fewer than six of them."""
    ordered = sorted(statistics.median(generation) for generation in generations)
    number, outside, chance = len(ordered), 0, 0.0
    while (chance := chance + 2 * math.comb(number, outside) / 2**number) <= 0.05:
        outside += 1
    return [ordered[outside - 1], ordered[-outside]] if outside > 0 else None


def quotients(own, others):
    if not all(others):
        raise RuntimeError("a block has cost nothing: there is no ratio to it")
    return [mine / other for mine, other in zip(own, others, strict=True)]


def ratios(own, others):
    """The spread of the ratios of blocks, pair by pair, and how certain their median is. Lists by generation."""
    found = [quotients(*generation) for generation in zip(own, others, strict=True)]
    return {**spread(flat(found)), "certain": certainty(found)}


def summaries(results, figures):
    """By variant's key: for each figure, made of one block's result, its spread, those of its ratios, and the figures
    of the single blocks."""
    summary = {variant.key: {} for variant in results}
    for name, figure in figures.items():
        values = {variant: [[figure(result) for result in blocks] for blocks in generations]
                  for variant, generations in results.items()}
        bases = [base for base in (BASELINE, SDBUSCPP) if base in values]
        for variant, own in values.items():
            summary[variant.key][name] = {**spread(flat(own)), "blocks": own,
                                          "to": {base.key: ratios(own, values[base]) for base in bases}}
    return summary
