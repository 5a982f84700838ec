# SPDX-License-Identifier: MIT
"""Pushes: packets from the service to the receivers."""

import itertools

from blocks import alternate, over_generations, spread, summaries
from variants import CROWD_SIZES, LIBRARY, PACKETS, SDBUSCPP

# By the size of a packet: packets per batch, and batches per block. At most two batches are outstanding.
SHAPES = {188: (100, 20), 4096: (100, 10), 65536: (8, 40), 1048576: (1, 60)}
SLOW_BATCHES = {188: 5, 4096: 1, 65536: 2, 1048576: 6}
CALLBACKS = (1, 2, 4, 8, 16, 32, 64)


def block_of(variant, size, clients=1):
    """The packets of a block and of a batch. A client that copies byte by byte gets fewer batches of the same size, and
    so do several clients at a time."""
    batch, batches = SHAPES[size]
    if variant == SDBUSCPP:
        return batch * SLOW_BATCHES[size], batch
    return batch * (batches if clients == 1 else batches // 4), batch


def inspect(bench, variants):
    """Pushes a single packet of each size, so that the client compares all its bytes."""
    with bench.clients(variants) as clients:
        for variant, size in itertools.product(variants, PACKETS):
            client = clients[variant][0]
            client.ask("subscribe 1")
            bench.push([client], 1, size, 1)
            client.ask("unsubscribe")


def push_block(bench, clients, variant, size):
    """One block. The time is that from the arrival of the first packet to that of the last one."""
    count, batch = block_of(variant, size, len(clients))
    for client in clients:
        client.ask("forget-peak")
        client.ask("subscribe 1")
    heard = bench.push(clients, count, size, batch)
    for client in clients:
        client.ask("unsubscribe")
    seconds = (max(one["last"] for one in heard) - min(one["first"] for one in heard)) / 1e9
    return {"packets_a_second": (count - 1) * len(clients) / seconds, "size": size,
            "cpu_a_packet": sum(one["cpu"] for one in heard) / 1e9 / count / len(clients),
            "peak_kib": max(client.ask("memory")["peak_kib"] for client in clients)}


FIGURES = {"messages": lambda block: block["packets_a_second"],
           "bytes": lambda block: block["packets_a_second"] * block["size"],
           "cpu_a_mb": lambda block: block["cpu_a_packet"] / block["size"] * 1e6,
           "peak_kib": lambda block: block["peak_kib"]}


def pushed(bench, variants, form, size, number=1):
    return summaries(over_generations(bench, variants, form, lambda variant, clients: push_block(
        bench, clients, variant, size), number), FIGURES)


def measure_pushes(bench, variants, form):
    inspect(bench, variants)
    return {"form": form, **{str(size): pushed(bench, variants, form, size) for size in PACKETS}}


def measure_crowds(bench, variants, form, crowds):
    """Measures several processes, each of which gets every packet. Variants with a journal are left out: each process
    would have a private one, and no system has that many."""
    few = [variant for variant in variants if not variant.journal]
    return {"form": form, **{str(size): {str(number): pushed(bench, few, form, size, number) for number in crowds}
                             for size in CROWD_SIZES}}


def measure_callbacks(bench, rounds, size=4096):
    """Measures a growing number of callbacks in one process of the library: time and processor time per message."""
    count, batch = block_of(LIBRARY, size)
    measured = {"rounds": rounds, "size": size, "callbacks": {}}

    def block(number):
        client.ask(f"subscribe {number}")
        heard = bench.push([client], count, size, batch)[0]
        client.ask("unsubscribe")
        return {"wall": (heard["last"] - heard["first"]) / (count - 1), "cpu": heard["cpu"] / count}

    with bench.clients([LIBRARY]) as clients:
        client = clients[LIBRARY][0]
        results = alternate(CALLBACKS, rounds, block)
    for number, blocks in results.items():
        measured["callbacks"][str(number)] = {name: spread([one[name] for one in blocks]) for name in ("wall", "cpu")}
    return measured
