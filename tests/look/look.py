#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Plays a transport stream on the simulator, and compares the answers of all methods and every PES packet with the
results of independent readers: ffprobe, and the modules in this folder, which share no code with the simulator.

usage: look.py --sim ZVIPTV-SIM --ctl ZVIPTVCTL --guide XMLTV [--programme N] STREAM|--make KIND --keep FOLDER

With --make, made_streams.sh first makes a stream with codings that the other streams do not contain. The stream is kept
in FOLDER until the scripts that make it change.

The exit status is 77 if the stream does not exist.
"""

import argparse
import hashlib
import json
import os
import pickle
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

from seen import check_requests
from ctl import Findings
from subject import Subject
from xmltv import Guide

PLAYING_TIME = 3  # seconds; prepare() computes the speed from it
PATIENCE = 100  # seconds for the whole run of the simulator
SKIPPED = 77


def arguments():
    parser = argparse.ArgumentParser()
    parser.add_argument("--sim", required=True)
    parser.add_argument("--ctl", required=True)
    parser.add_argument("--guide", required=True)
    parser.add_argument("--programme", type=int)
    parser.add_argument("--make")
    parser.add_argument("--keep", default=".")
    parser.add_argument("stream", nargs="?")
    return parser.parse_args()


def beside(name):
    """A file of this folder."""
    return os.path.join(os.path.dirname(os.path.abspath(__file__)), name)


def made(kind, folder):
    """The path of the stream of this kind."""
    scripts = hashlib.sha256()
    for name in ("made_streams.sh", "dress.py"):
        with open(beside(name), "rb") as file:
            scripts.update(file.read())
    path = os.path.join(folder, f"{kind}-{scripts.hexdigest()}.ts")
    if not os.path.exists(path):
        unfinished = f"{path}.{os.getpid()}.ts"
        subprocess.run([beside("made_streams.sh"), kind, unfinished], check=True)
        os.replace(unfinished, path)
    return path


def write_guides(source, number, names, folder):
    """A guide for this service, and another one with every second programme.

    If no channel has the service's number, the first one gets it."""
    tree = ElementTree.parse(source)
    root = tree.getroot()
    if number not in Guide(source, names).services:
        first = root.find("channel").get("id")
        root.find("channel").set("id", str(number))
        for programme in root.iter("programme"):
            if programme.get("channel") == first:
                programme.set("channel", str(number))
    paths = [f"{folder}/guide.xml", f"{folder}/another.xml"]
    tree.write(paths[0], encoding="utf-8")
    for programme in root.findall("programme")[::2]:
        root.remove(programme)
    tree.write(paths[1], encoding="utf-8")
    return paths


def rated_programme(guide, number):
    return next(one for one in guide.services[number] if one["rating"] and one["rating"]["minimum_age"])


def prepare(given, folder):
    """The parameters of inside.py."""
    subject = Subject(given.stream, given.programme)
    with open(f"{folder}/subject.pickle", "wb") as file:
        pickle.dump(subject, file)
    number = subject.programme.number
    guide, another = write_guides(given.guide, number, subject.probe.names, folder)
    rated = rated_programme(Guide(guide, subject.probe.names), number)
    return {"programme": number, "ctl": given.ctl, "guide": guide, "another guide": another,
            "now": rated["start_time"] + 60, "age": rated["rating"]["minimum_age"], "folder": folder,
            "speed": min(max(subject.seconds() / PLAYING_TIME, 0.01), 1000)}


def simulate(given, parameters, folder):
    """Runs the simulator with inside.py as its command. Returns its exit status and the events that it printed."""
    with open(f"{folder}/parameters.json", "w", encoding="utf-8") as file:
        json.dump(parameters, file)
    command = [given.sim, "--ts", given.stream, "--program", str(parameters["programme"]),
               "--guide", parameters["guide"], "--time", str(parameters["now"]),
               "--rating-limit", str(parameters["age"] - 1), "--lock-service", "--wait-for", "2",
               "--speed", str(parameters["speed"]), "--json",
               "--", sys.executable, beside("inside.py"), f"{folder}/parameters.json"]
    with subprocess.Popen(command, stdout=subprocess.PIPE) as simulator:
        try:
            output, _ = simulator.communicate(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            print(f"FAILED: the simulator has not ended after {PATIENCE} s")
            simulator.terminate()  # this ends inside.py, too
            output, _ = simulator.communicate()
    lines = output.decode().splitlines()
    for line in lines:
        if not line.startswith("{"):
            print(line)
    return simulator.returncode, [json.loads(line) for line in lines if line.startswith("{")]


def main():
    given = arguments()
    if given.make:
        given.stream = made(given.make, given.keep)
    if not os.path.exists(given.stream):
        print(f"skipped: {given.stream} does not exist; set the CMake variable ZVIPTV_MEDIA_DIR")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        status, shown = simulate(given, prepare(given, folder), folder)
    findings = Findings()
    check_requests([one for one in shown if one.get("event") == "request"], findings)
    return status or (1 if findings.failed else 0)


if __name__ == "__main__":
    sys.exit(main())
