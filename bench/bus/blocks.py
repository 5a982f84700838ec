"""Alternating blocks and what is made of them.

Every round gives each variant one block; each round begins with the next variant, so that none always follows the same
one. A ratio is that of two blocks of one round, and the median of the rounds is what is told.

Where the system puts the threads of a process, and so how fast it is, often stays as it was from one block to the next.
So there are several generations of processes, each with its share of the rounds.
"""

import statistics

from variants import BASELINE


def alternate(variants, rounds, block):
    """block(variant) for all variants, round after round; lists of results by variant. One round warms up."""
    variants = list(variants)
    results = {variant: [] for variant in variants}
    for number in range(rounds + 1):
        first = number % len(variants)
        for variant in variants[first:] + variants[:first]:
            result = block(variant)
            if number > 0:
                results[variant].append(result)
    return results


def over_generations(bench, variants, form, block, number=1):
    """block(variant, clients) as above, with `number` new clients of each variant in every generation. The form is the
    number of the generations and of their rounds."""
    generations, rounds = form
    results = {variant: [] for variant in variants}
    for _ in range(generations):
        with bench.clients(variants, number) as clients:
            for variant, blocks in alternate(variants, rounds, lambda one: block(one, clients[one])).items():
                results[variant] += blocks
    return results


def quantile(ordered, part):
    return ordered[min(len(ordered) - 1, int(part * len(ordered)))]


def spread(values):
    """The median, and where the middle half lies."""
    ordered = sorted(values)
    return {"median": statistics.median(ordered), "low": quantile(ordered, 0.25), "high": quantile(ordered, 0.75)}


def summaries(results, figures):
    """By variant's key: for each figure, made of one block's result, its spread and that of its ratios."""
    summary = {variant.key: {} for variant in results}
    for name, figure in figures.items():
        values = {variant: [figure(result) for result in blocks] for variant, blocks in results.items()}
        for variant, own in values.items():
            summary[variant.key][name] = spread(own)
            if BASELINE in values:
                ratios = [mine / other for mine, other in zip(own, values[BASELINE]) if other]
                summary[variant.key][name]["ratio"] = spread(ratios) if ratios else None
    return summary
