#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Compares the instructions and the heap of the workloads with the committed baseline.

    guard.py check WORKLOAD    status 1 when the workload costs more than 5 % over its baseline
    guard.py renew             measures all and writes baseline.json
"""

import argparse
import hashlib
import json
import os
import subprocess
import sys
import tempfile

import callgrind

BASELINE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "baseline.json")
LIMIT = 0.05
MEASURES = ("instructions", "own instructions", "allocations", "allocated bytes")

# All that counts depend on besides the code: nothing of the environment, no slices, whose cache looks at the clock, and
# the same string functions and copying thresholds of the C library on every processor.
TUNABLES = {
    "glibc.cpu.hwcaps": "-AVX_Fast_Unaligned_Load,-AVX2,-AVX512F,-AVX512VL,-ERMS,-FSRM,-SSSE3,-Fast_Unaligned_Copy,"
                        "-SSE4_1,-SSE4_2,-BMI2,-LZCNT,-RTM",
    "glibc.cpu.x86_non_temporal_threshold": "0xc0000",
    "glibc.cpu.x86_rep_movsb_threshold": "0x100000",
    "glibc.cpu.x86_rep_stosb_threshold": "0x100000",
    "glibc.malloc.mmap_threshold": "0x2000000",
    "glibc.malloc.trim_threshold": "0x8000000",
}
ENVIRONMENT = {
    "PATH": "/usr/bin:/bin",
    "LC_ALL": "C",
    "ZV_IPTV_LOG": "none",
    "G_SLICE": "always-malloc",
    "GLIBC_TUNABLES": ":".join(f"{name}={value}" for name, value in TUNABLES.items()),
}


def run(*command):
    return subprocess.run(command, env=ENVIRONMENT, check=True, stdout=subprocess.PIPE, text=True).stdout


def instructions(profile, program):
    """The instructions of a whole profile, and those of the program itself, which contains the library's code."""
    counts = callgrind.by_object(profile)
    return counts.total(), sum(count for file, count in counts.items() if os.path.realpath(file) == program)


def measure(program, workload):
    """Each measure for one round of the workload."""
    with tempfile.TemporaryDirectory() as folder:
        profile = os.path.join(folder, "profile")
        rounds, allocations, size = map(int, run(
            "valgrind", "-q", "--tool=callgrind", "--instr-atstart=no", f"--callgrind-out-file={profile}",
            program, workload).split())
        with open(profile, encoding="utf-8") as file:
            total, own = instructions(file, program)
    measured = {name: round(value / rounds, 1) for name, value in zip(MEASURES, (total, own, allocations, size))}
    if not all(measured.values()):
        raise ValueError(f"{workload} cannot cost nothing: {measured}")
    return measured


def versions(program):
    valgrind = run("valgrind", "--version").strip().replace("-", " ")
    return run(program, "--versions").splitlines() + [valgrind]


def measure_once(program, workload):
    """The measures, of an earlier run if that was one of the same program with the same versions."""
    origin = [program, *versions(program)]
    for path in (program, __file__, callgrind.__file__):
        with open(path, "rb") as file:
            origin.append(hashlib.sha256(file.read()).hexdigest())
    kept = f"{program}.{workload}.json"
    try:
        with open(kept, encoding="utf-8") as file:
            earlier = json.load(file)
    except FileNotFoundError:
        earlier = {}
    if earlier.get("origin") == origin:
        return earlier["measured"]
    measured = measure(program, workload)
    with open(f"{kept}.new", "w", encoding="utf-8") as file:
        json.dump({"origin": origin, "measured": measured}, file)
    os.replace(f"{kept}.new", kept)
    return measured


def compare(measured, baseline):
    """Messages about figures over the limit, and about figures equally far below the baseline."""
    over, under = [], []
    for name in MEASURES:
        now, then = measured[name], baseline[name]
        if now > then * (1 + LIMIT):
            over.append(f"{name}: {now:.1f} a round, {then:.1f} in the baseline: {now / then - 1:+.1%}"
                        if then else f"{name}: {now:.1f} a round, none in the baseline")
        elif now < then * (1 - LIMIT):
            under.append(f"{name}: {now:.1f} a round, {then:.1f} in the baseline: {now / then - 1:+.1%}")
    return over, under


def check(program, workload, baseline):
    measured = measure_once(program, workload)
    for name in MEASURES:
        print(f"{name}: {measured[name]:.1f}")
    renew = f"renew the baseline: {os.path.abspath(__file__)} --program {program} renew"
    over, under = compare(measured, baseline["workloads"][workload])
    if over or under:
        here = versions(program)
        if here != baseline["versions"]:
            print("The versions are not those of the baseline; the difference may be theirs. If the own instructions "
                  "are the same, it is.")
            print(f"here: {', '.join(here)}; baseline: {', '.join(baseline['versions'])}")
    for line in over:
        print(f"OVER THE LIMIT of {LIMIT:+.0%}: {line}")
    for line in under:
        print(f"cheaper than the baseline: {line}")
    if over:
        print(f"If {workload} has to cost that much, say why in the commit and {renew}")
    elif under:
        print(f"So that {workload} stays as cheap, {renew}")
    return not over


def renew(program):
    baseline = {
        "versions": versions(program),
        "workloads": {name: measure(program, name) for name in run(program).split()},
    }
    with open(BASELINE, "w", encoding="utf-8") as file:
        json.dump(baseline, file, indent=2)
        file.write("\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True, help="cost_workloads of the release build")
    commands = parser.add_subparsers(dest="command", required=True)
    commands.add_parser("check").add_argument("workload")
    commands.add_parser("renew")
    arguments = parser.parse_args()
    program = os.path.realpath(arguments.program)
    if arguments.command == "renew":
        renew(program)
        return 0
    with open(BASELINE, encoding="utf-8") as file:
        baseline = json.load(file)
    return 0 if check(program, arguments.workload, baseline) else 1


if __name__ == "__main__":
    sys.exit(main())
