# SPDX-License-Identifier: MIT
"""Calls the service with zviptvctl."""

import json
import os
import subprocess


class Service:
    def __init__(self, program):
        self._program = program
        self.asked = set()

    def methods(self):
        """Names of all methods with the numbers of their arguments."""
        listed = json.loads(self._run("methods", "--json"))["methods"]
        return {(one["name"], len(one["in"])) for one in listed}

    def __getattr__(self, method):
        """service.GetAudio(1) calls the method; the answer is the dictionary that zviptvctl prints."""
        def call(*arguments):
            texts = [str(argument).lower() if isinstance(argument, bool) else str(argument)
                     for argument in arguments]
            self.asked.add((method, len(texts)))
            return json.loads(self._run("call", "--json", method, *texts))
        return call

    def _run(self, *arguments):
        done = subprocess.run([self._program, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              timeout=60, check=False)
        if done.returncode > 1:  # 1: the service refused
            raise RuntimeError(f"zviptvctl {' '.join(arguments)}: {done.returncode}, {done.stderr.decode()}")
        return done.stdout

    def subscribe(self, command, out, lines):
        """Starts `zviptvctl pes` or `zviptvctl caption`, which write payloads and a line a packet."""
        with open(lines, "wb") as stdout:
            return subprocess.Popen([self._program, command, "--json", "--out", out], stdout=stdout,
                                    stderr=subprocess.PIPE, env=os.environ)


class Findings:
    """Counts comparisons, and reports those that fail."""

    def __init__(self):
        self.made = 0
        self.failed = 0

    def same(self, what, got, expected):
        self.check(what, got == expected, f"got {got!r}, expected {expected!r}")

    def check(self, what, holds, detail=""):
        self.made += 1
        if not holds:
            self.failed += 1
            print(f"FAILED {what}: {detail}", flush=True)
