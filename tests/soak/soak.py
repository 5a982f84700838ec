#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The soak: applications call and receive pushes for minutes while the service dies and comes back at random.

Prints a report and writes samples.csv, report.json and soak.svg. Ends with status 1 when an application died, got
damaged data or an exception, or grew, when calls failed that the service's end does not explain, or when a part of
the time went by without an answered call or without a packet.
"""

import argparse
import json
import os
import pathlib
import random
import signal
import statistics
import subprocess
import sys
import threading
import time

import dense_stream

BUS_CONFIG = """<busconfig><type>system</type><listen>unix:path={folder}/bus</listen><auth>EXTERNAL</auth>
<policy context="default"><allow user="*"/><allow own="*"/><allow send_destination="*" eavesdrop="true"/>
<allow eavesdrop="true"/></policy></busconfig>"""
WARM_UP = 0.1  # of the time; growth is measured from its end
MEMORY_LIMIT = 1.10  # growth of the clients' mean memory that is still called flat
PARTS = 10  # of the time; in each of them applications are served
SHORTEST_PART = 6  # seconds: the service may be away for two of them
FAILURES_PER_RESTART = 5  # calls of one application that may fail when the service goes: those before it is told
FIGURES = ("calls", "refused", "absent", "exceptions", "packets", "damaged", "losses")


def run(command, **options):
    """A process that ends with this one, even if this one is killed."""
    return subprocess.Popen(["setpriv", "--pdeathsig", "KILL", *command], **options)


class Client:
    """One application, and its latest figures."""

    def __init__(self, program, environment, errors):
        self.figures = dict.fromkeys(FIGURES, 0)
        self.process = run([program], env=environment, stdout=subprocess.PIPE, stderr=errors, text=True)
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    def _read(self):
        for line in self.process.stdout:
            self.figures = json.loads(line)

    def end(self):
        """The exit status."""
        self.process.terminate()
        self.reader.join()
        return self.process.wait()


def resident(pid):
    with open(f"/proc/{pid}/status") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("VmRSS:"))


def descriptors(pid):
    return len(os.listdir(f"/proc/{pid}/fd"))


class Service:
    """The simulator, which is stopped and started again at random times."""

    def __init__(self, command, environment, errors, rng):
        self.command, self.environment, self.errors, self.rng = command, environment, errors, rng
        self.restarts = {"SIGKILL": 0, "SIGTERM": 0}
        self.process = None
        self.start()

    def start(self):
        self.process = run(self.command, env=self.environment, stdout=subprocess.DEVNULL, stderr=self.errors)
        self.change = time.monotonic() + self.rng.uniform(2, 12)

    def end(self, how=signal.SIGTERM):
        self.process.send_signal(how)
        self.process.wait()
        self.process = None

    def advance(self):
        if time.monotonic() < self.change:
            return
        if self.process is None:
            self.start()
            return
        if self.process.poll() is not None:
            sys.exit(f"the service ended by itself with status {self.process.returncode}")
        how = self.rng.choice((signal.SIGKILL, signal.SIGTERM))
        self.end(how)
        self.restarts[how.name] += 1
        self.change = time.monotonic() + self.rng.uniform(0, 2)


def start_bus(folder):
    config = folder / "bus.conf"
    config.write_text(BUS_CONFIG.format(folder=folder))
    bus = run(["dbus-daemon", f"--config-file={config}", "--nofork", "--nopidfile", "--print-address=1"],
              stdout=subprocess.PIPE, text=True)
    if not bus.stdout.readline():
        sys.exit("dbus-daemon did not start")
    return bus


def sample(begin, clients, service):
    memory = [resident(client.process.pid) for client in clients]
    files = [descriptors(client.process.pid) for client in clients]
    total = {name: sum(client.figures[name] for client in clients) for name in FIGURES}
    return {"seconds": round(time.monotonic() - begin, 1), "rss_mean_kib": round(statistics.mean(memory)),
            "rss_max_kib": max(memory), "fds_mean": statistics.mean(files), "fds_max": max(files),
            "service_rss_kib": resident(service.process.pid) if service.process else 0,
            "restarts": sum(service.restarts.values()), **total}


def soak(options, folder):
    rng = random.Random(options.seed)
    stream = folder / "dense.ts"
    dense_stream.write(stream, 10)
    environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=f"unix:path={folder}/bus", ZV_IPTV_LOG="none",
                       G_DEBUG="fatal-criticals")
    samples = []
    with open(folder / "errors.log", "w") as errors:
        bus = start_bus(folder)
        service = Service([options.sim, "--bus", "system", "--ts", str(stream), "--loop", "--pes", "video",
                           "--guide", options.guide, "--time", "1774735200", "--quiet"], environment, errors, rng)
        clients = [Client(options.client, environment, errors) for _ in range(options.clients)]
        begin = time.monotonic()
        try:
            while time.monotonic() < begin + options.minutes * 60:
                time.sleep(0.1)
                service.advance()
                if any(client.process.poll() is not None for client in clients):
                    break
                if not samples or time.monotonic() - begin >= samples[-1]["seconds"] + 1:
                    samples.append(sample(begin, clients, service))
        finally:
            statuses = [client.end() for client in clients]
            if service.process:
                service.end()
            bus.terminate()
            bus.wait()
    total = {name: sum(client.figures[name] for client in clients) for name in FIGURES}
    return samples, statuses, service.restarts, total


def mean(samples, name):
    return statistics.mean(entry[name] for entry in samples)


def working_calls(entry):
    return entry["calls"] - entry["refused"] - entry["absent"] - entry["exceptions"]


def idle_parts(samples):
    """The problems of the run, with their times."""
    end = samples[-1]["seconds"]
    parts = max(1, min(PARTS, int(end / SHORTEST_PART)))
    marks = [min(samples, key=lambda entry: abs(entry["seconds"] - end * i / parts)) for i in range(parts + 1)]
    for start, stop in zip(marks, marks[1:]):
        when = f"between second {start['seconds']:g} and {stop['seconds']:g}"
        if working_calls(stop) <= working_calls(start):
            yield f"no call was answered {when}"
        if stop["packets"] <= start["packets"]:
            yield f"no packet came {when}"


def judge(samples, statuses, restarts, total, any_memory):
    """The report, and the problems."""
    warm = samples[int(len(samples) * WARM_UP):]
    span = max(1, len(warm) // 10)
    first, last = warm[:span], warm[-span:]
    report = {"minutes": round(samples[-1]["seconds"] / 60, 1), "clients": len(statuses), **total,
              "restarts": restarts,
              "rss_mean_kib": [round(mean(part, "rss_mean_kib")) for part in (first, last)],
              "fds_mean": [round(mean(part, "fds_mean"), 1) for part in (first, last)],
              "rss_max_kib": max(entry["rss_max_kib"] for entry in samples),
              "service_rss_max_kib": max(entry["service_rss_kib"] for entry in samples)}
    wrong = [f"application {number} ended with status {status}" for number, status in enumerate(statuses) if status]
    wrong += [f"{total[name]} {name}" for name in ("exceptions", "damaged") if total[name]]
    wrong += idle_parts(samples)
    failures = total["refused"] + total["absent"]
    if failures > FAILURES_PER_RESTART * len(statuses) * (sum(restarts.values()) + 1):
        wrong.append(f"{failures} calls failed over {sum(restarts.values())} restarts of the service")
    if not any_memory and report["rss_mean_kib"][1] > report["rss_mean_kib"][0] * MEMORY_LIMIT:
        wrong.append("the memory of the applications grew")
    if report["fds_mean"][1] > report["fds_mean"][0] + 1:
        wrong.append("the descriptors of the applications grew")
    return report, wrong


def draw(folder):
    script = pathlib.Path(__file__).with_name("soak.gnuplot")
    subprocess.run(["gnuplot", "-e", f"samples='{folder}/samples.csv'; picture='{folder}/soak.svg'", str(script)],
                   check=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("minutes", type=float)
    parser.add_argument("--clients", type=int, default=8)
    parser.add_argument("--seed", type=int, default=int(time.time()))
    parser.add_argument("--no-plot", action="store_true")
    parser.add_argument("--any-memory", action="store_true", help="for sanitizers, which keep what was freed")
    for name in ("sim", "client", "guide", "out"):
        parser.add_argument("--" + name, required=True)
    options = parser.parse_args()
    folder = pathlib.Path(options.out).resolve()
    folder.mkdir(parents=True, exist_ok=True)
    print(f"{options.clients} applications for {options.minutes:g} minutes, seed {options.seed}", flush=True)
    samples, *outcome = soak(options, folder)
    with open(folder / "samples.csv", "w") as file:
        for entry in [samples[0].keys(), *(entry.values() for entry in samples)]:
            file.write(",".join(map(str, entry)) + "\n")
    if not options.no_plot:
        draw(folder)
    report, wrong = judge(samples, *outcome, options.any_memory)
    (folder / "report.json").write_text(json.dumps(report, indent=2) + "\n")
    for name, value in report.items():
        print(f"{name:20} {value}")
    print(f"written: {folder}/report.json, samples.csv" + ("" if options.no_plot else ", soak.svg"))
    sys.exit("\n".join(wrong) if wrong else 0)


if __name__ == "__main__":
    main()
