# SPDX-License-Identifier: MIT
"""Calls the service with zviptvctl."""

import json
import os
import shlex
import subprocess


class Service:
    """The service as one application sees it: one zviptvctl batch makes all calls."""

    def __init__(self, program, asked=None):
        self._program = program
        self._batch = subprocess.Popen([program, "batch"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.asked = set() if asked is None else asked

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._batch.communicate()

    def another_application(self):
        """Another application, which has requested nothing yet."""
        return Service(self._program, self.asked)

    def methods(self):
        """Names of all methods with the numbers of their arguments."""
        return {(one["name"], len(one["in"])) for one in self._run("methods")["methods"]}

    def __getattr__(self, method):
        """service.GetAudio(1) calls the method; the answer is the dictionary that zviptvctl prints."""
        def call(*arguments):
            texts = [str(argument).lower() if isinstance(argument, bool) else str(argument)
                     for argument in arguments]
            self.asked.add((method, len(texts)))
            return self._run("call", method, *texts)
        return call

    def _run(self, *arguments):
        self._batch.stdin.write(shlex.join(arguments) + "\n")
        self._batch.stdin.flush()
        answer = json.loads(self._batch.stdout.readline())
        error = answer.pop("error", "")
        if answer.pop("exitCode") > 1:  # 1: the service refused
            raise RuntimeError(f"zviptvctl {answer['command']}: {error}")
        del answer["command"]
        return answer

    def subscribe(self, command, out, lines):
        """Starts `zviptvctl pes` or `zviptvctl caption`: payloads go to `out`, a line for each packet to `lines`."""
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
