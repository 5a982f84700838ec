# SPDX-License-Identifier: MIT
"""Source state, clocks and picture: before, while and after the stream plays."""

import time

STARTING, PLAYING, ENDED = 1, 2, 3
PATIENCE = 60
TICKS = 90000


def before(service, subject, findings):
    """Before the first packet is played, clocks and formats are unknown."""
    findings.same("state before", service.GetSourceState(), {"result": True, "state": STARTING})
    findings.same("STC before", service.GetSTCCount()["result"], False)
    findings.same("first PTS before", service.GetFirstPTS()["result"], False)
    findings.same("resolution before", service.GetResolution()["result"], False)
    for index in range(len(subject.audio)):
        track = service.GetAudio(index)["audio"]
        findings.same("audio details before", (track["sampleRate"], track["channels"]), (0, 0))


def wait_for(service, state, findings):
    end = time.monotonic() + PATIENCE
    while service.GetSourceState()["state"] < state and time.monotonic() < end:
        time.sleep(0.1)
    findings.check(f"state {state} is reached", service.GetSourceState()["state"] >= state)


def while_playing(service, subject, speed, findings):
    """Checks that the STC runs as fast as the stream. It advances at most by the time from the start of the first call
    to the end of the second one and, while the stream plays, at least by the time between the calls."""
    wait_for(service, PLAYING, findings)
    begun = time.monotonic()
    first = service.GetSTCCount()
    answered = time.monotonic()
    time.sleep(0.3)
    asked = time.monotonic()
    second = service.GetSTCCount()
    done = time.monotonic()
    state = service.GetSourceState()["state"]  # on a slow machine, the stream may have ended
    findings.check("state while playing", state in (PLAYING, ENDED), str(state))
    findings.same("STC while playing", (first["result"], second["result"]), (bool(subject.clock()),) * 2)
    if subject.clock():
        went = (second["stc"] - first["stc"]) % (1 << 33) / TICKS
        least, most = (asked - answered) * speed if state == PLAYING else 0, (done - begun) * speed
        findings.check("pace of the STC", least - 0.001 <= went <= most + 0.001, f"{least} <= {went} <= {most}")


def service_time(service, speed, findings):
    """Checks that the service's time runs as fast as the stream, even after its end. The bounds are as above."""
    begun = time.monotonic()
    first = service.GetFirstPTS()["now"]
    answered = time.monotonic()
    time.sleep(0.1)
    asked = time.monotonic()
    second = service.GetFirstPTS()["now"]
    least, most = (asked - answered) * speed, (time.monotonic() - begun) * speed
    went = (second - first) / 1000
    findings.check("pace of the service's time", least - 0.001 <= went <= most + 0.001, f"{least} <= {went} <= {most}")


def after(service, subject, speed, findings):
    findings.same("state after", service.GetSourceState(), {"result": True, "state": ENDED})
    stc, again = service.GetSTCCount(), service.GetSTCCount()
    findings.same("two STCs after the end", stc, again)
    findings.same("STC after", stc["result"], subject.clock() is not None)
    if subject.clock():
        _, last, tolerance = subject.clock()
        findings.check("last STC", abs(stc["stc"] - last) <= tolerance, f"{stc['stc']}, expected {last}")
    first = service.GetFirstPTS()
    findings.same("first PTS", first["pts"] if first["result"] else None, subject.first_pts())
    findings.same("time base", (first["a"], first["b"]), (TICKS, 1))
    if first["result"]:
        service_time(service, speed, findings)
    picture(service, subject, findings)


def picture(service, subject, findings):
    expected = subject.resolution()
    answer = service.GetResolution()
    findings.same("resolution", answer["result"], expected is not None)
    if expected:
        kind = next((kind for kind, lines in enumerate((576, 720, 1088, 2176), 1) if expected["height"] <= lines), 5)
        findings.same("resolution class", answer["res"], kind)
        findings.same("resolution record", answer["info"], expected)
    else:
        findings.same("resolution class", answer["res"], 0)
