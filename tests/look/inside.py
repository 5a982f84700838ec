#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Runs as the simulator's command: calls every method and compares each answer with that of independent readers.

usage: inside.py PARAMETERS.json   (written by look.py)
"""

import json
import os
import pickle
import sys

import check_clock
import check_data
import check_guide
import check_lock
import check_tracks
from ctl import Findings, Service

CALLBACKS = {("SubscribeForPES", 2), ("UnSubscribeForPES", 1), ("SubscribeForCaption", 2), ("UnsubscribeForCaption", 1)}


def play(service, subject, parameters, findings):
    """Checks the service from before the first packet to the end of the stream, with two subscribers from the start."""
    check_clock.before(service, subject, findings)
    pes = check_data.Subscriber(service, "pes", parameters["folder"])
    captions = check_data.Subscriber(service, "caption", parameters["folder"])
    check_clock.while_playing(service, subject, parameters["speed"], findings)
    check_clock.wait_for(service, check_clock.ENDED, findings)
    check_data.check_pes(subject, pes.end(sum(len(subject.packets(pid)) for pid in subject.pes), findings), findings)
    count = sum(len(subject.caption_data(pid)) for pid in subject.pes)
    check_data.check_captions(subject, captions.end(count, findings), findings)
    check_data.check_against_probe(subject, findings)
    check_clock.after(service, subject, parameters["speed"], findings)


def set_invisible_state(service, findings):
    """Calls the methods whose effect no getter reports. look.py checks the requests that the service received."""
    for on in (True, False):
        findings.same("muting audio", service.MuteAudio(on), {"result": True})
        findings.same("muting video", service.MuteVideo(on), {"result": True})
    findings.same("naming the application", service.SetAppID("org.example.look"), {"result": True})


def check(service, subject, parameters, findings):
    """Calls every method."""
    play(service, subject, parameters, findings)
    check_tracks.check_audio(service, subject, findings)
    check_tracks.check_subtitles(service, subject, findings)
    check_tracks.check_isdb(service, subject, findings)
    check_tracks.check_captions(service, subject, findings)
    set_invisible_state(service, findings)
    check_lock.check_lock(service, parameters["age"], findings)
    names = subject.probe.names
    check_guide.check_guide(service, parameters["guide"], names, parameters["now"], findings)
    check_guide.check_another(service, parameters["another guide"], names, findings)

    methods = service.methods()
    findings.same("number of methods", len(methods), 54)
    findings.same("methods that were not called", methods - service.asked - CALLBACKS, set())


def main():
    with open(sys.argv[1], encoding="utf-8") as file:
        parameters = json.load(file)
    os.environ["ZV_IPTV_LOG"] = "none"
    with open(f"{parameters['folder']}/subject.pickle", "rb") as file:
        subject = pickle.load(file)
    findings = Findings()
    with Service(parameters["ctl"]) as service:
        check(service, subject, parameters, findings)
    print(f"{findings.made} comparisons, {findings.failed} failed", file=sys.stderr)
    return 1 if findings.failed else 0


if __name__ == "__main__":
    sys.exit(main())
