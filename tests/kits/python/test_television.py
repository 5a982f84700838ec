# SPDX-License-Identifier: MIT
"""Tests the fixture as its users do."""
import os
import statistics
import threading
import time

import pytest
from zviptv.testing import ExpectationFailed, TelevisionError


def test_every_verb_controls_the_television(television):
    television.pause()
    assert television.properties["Paused"]
    television.play()
    assert not television.properties["Paused"]
    television.speed(2.5)
    assert television.properties["Speed"] == 2.5
    television.speed(1)
    television.seek(1.5)
    assert television.properties["Position"] >= 1.5
    television.lock("service")
    assert television.properties["ServiceLocked"]
    television.unlock("service")
    assert not television.properties["ServiceLocked"]
    television.time(1774735300)
    assert 0 <= television.properties["GuideTime"] - 1774735300 < 60
    television.mute("video", True)
    assert television.properties["VideoMutedBy"] == "control"
    television.select("audio", 1)
    assert television.properties["Audio"] == 1
    television.programme(1)
    television.load(os.environ["ZVIPTV_SAMPLES"] + "/sample.ts")
    television.fault("MuteAudio=drop", count=3, for_=60)
    television.fault("GetAudio=error")
    assert [fault["fault"] for fault in television.properties["Faults"]] == ["MuteAudio=drop,count=3,for=60",
                                                                             "GetAudio=error"]
    assert television.properties["Faults"][0]["count"] == 3
    television.remove_fault("MuteAudio=drop")
    assert len(television.properties["Faults"]) == 1
    television.clear_faults()
    assert television.properties["Faults"] == []
    television.restart()
    assert television.properties["Running"]


def test_requests_are_decoded(television, ctl):
    ctl("mute", "audio", "on")
    ctl("call", "SetDigitalDualSound", "MAIN")
    ctl("call", "SetAppID", "org.example.application")
    muted, sound, name = [request for request in television.requests if request.function != "GetDigitalDualSound"]
    assert (muted.function, muted.arguments, muted.endpoint) == ("MuteAudio", {"onoff": True}, "PLAYERCONTROL")
    assert (muted.result, muted.answer, muted.fault) == (1, "done", "")
    assert muted.application.startswith(":1.") and muted.time > 0
    assert sound.arguments == {"mode": "MAIN"}
    assert name.arguments == {"AppID": "org.example.application"}


def test_every_test_starts_in_the_initial_state(television):
    assert television.requests == []
    assert television.properties["Faults"] == []


def test_dead_service_comes_back(television, ctl):
    television.die(for_=0.05)
    assert ctl("mute", "audio", "on").returncode != 0
    while not television.properties["Running"]:
        time.sleep(0.01)
    assert ctl("mute", "audio", "on").returncode == 0
    assert "the service has died" in television.conversation
    assert "the service is back" in television.conversation


def test_expectation_is_met_by_an_earlier_request_once(television, ctl):
    ctl("mute", "audio", "on")
    assert television.expect("MuteAudio", onoff=True).arguments == {"onoff": True}
    with pytest.raises(ExpectationFailed, match="has met an earlier expectation"):
        television.expect("MuteAudio", within=0.05)


def test_expectation_waits(television, ctl):
    application = threading.Timer(0.2, ctl, ["mute", "audio", "on"])
    application.start()
    television.expect("MuteAudio", onoff=1, within=30)
    application.join()


@pytest.mark.parametrize("value", [True, 1, "1", "on", "true"])
def test_values_are_compared_by_their_meaning(television, ctl, value):
    ctl("mute", "audio", "on")
    television.expect("MuteAudio", onoff=value)
    ctl("call", "SetDigitalDualSound", "SUB")
    television.expect("SetDigitalDualSound", mode=2)


def test_unmet_expectation_names_near_misses(television, ctl):
    with pytest.raises(ExpectationFailed, match="^MuteVideo did not come within 0.05 s: no request came$"):
        television.expect("MuteVideo", within=0.05)
    ctl("mute", "audio", "off")
    with pytest.raises(ExpectationFailed, match=r"^MuteAudio onoff=True did not come within 0.1 s: instead came "
                                                r"MuteAudio onoff=False after [0-9.]+ s$"):
        television.expect("MuteAudio", onoff=True, within=0.1)
    with pytest.raises(ExpectationFailed, match="^MuteVideo did not come within 0.05 s: other requests came: Mut"):
        television.expect("MuteVideo", within=0.05)


def test_unexpected_request_is_reported(television, ctl):
    television.expect_no("MuteAudio", for_=0.05)
    ctl("mute", "audio", "off")
    television.expect_no("MuteAudio", onoff=True, for_=0.05)
    with pytest.raises(ExpectationFailed, match="^MuteAudio onoff=False was not expected, but came after"):
        television.expect_no("MuteAudio")


def test_wrong_words_are_refused(television):
    with pytest.raises(ValueError, match="^unknown function 'MuteAduio'; use MuteAudio"):
        television.expect("MuteAduio")
    with pytest.raises(ValueError, match="^MuteAudio has no argument 'colour'; use onoff$"):
        television.expect("MuteAudio", colour=1)
    with pytest.raises(ValueError, match="^GetSTCCount has no arguments$"):
        television.expect("GetSTCCount", colour=1)
    with pytest.raises(ValueError, match="^SetDigitalDualSound: 'MIAN' is not a value of mode; use STEREO, MAIN"):
        television.expect("SetDigitalDualSound", mode="MIAN")
    with pytest.raises(ValueError, match="^MuteAudio: 2 is not a value of onoff; use True or False$"):
        television.expect("MuteAudio", onoff=2)
    with pytest.raises(ValueError, match="^SetCurrentTTX: 'one' is not a value of index; use a number$"):
        television.expect("SetCurrentTTX", index="one")
    with pytest.raises(TelevisionError, match="^'door' is not programme or service$"):
        television.lock("door")
    assert "lock door  'door' is not programme or service" in television.conversation


def test_scenario_runs_beside_the_application(television, ctl):
    with television.scenario("""
        after MuteAudio lock programme
        after MuteAudio expect MuteAudio onoff=0 within 30
        """):
        ctl("mute", "audio", "on")
        ctl("mute", "audio", "off")
    assert television.properties["ProgrammeLocked"]


def test_unmet_scenario_is_reported(television):
    with pytest.raises(ExpectationFailed) as failure:
        television.scenario("expect MuteAudio within 0.1").wait()
    assert str(failure.value) == ("scenario scenario: 0 of 1 expectation met\n"
                                  "  not met  scenario:1:1: expect MuteAudio within 0.1: not seen within 0.1 s; "
                                  "no request came\n")
    with pytest.raises(ExpectationFailed, match="before the test ended"):
        television.scenario("after MuteAudio lock programme\nexpect MuteVideo within 9", within=0.1).wait()
    with pytest.raises(TelevisionError, match="^scenario:1:8: lock: 'door' is not programme or service"):
        television.scenario("1 lock door")


def test_scenario_finds_files_in_its_folder(television, tmp_path):
    (tmp_path / "pause.scenario").write_text("0 pause\n", encoding="utf-8")
    television.scenario("include pause.scenario", folder=str(tmp_path)).wait()
    assert television.properties["Paused"]


def test_reset_takes_less_than_50_milliseconds(television, ctl):
    milliseconds = []
    ctl("mute", "audio", "on")
    for _ in range(21):
        television.fault("GetAudio=drop")
        television.seek(4)
        start = time.monotonic()
        television.reset()
        milliseconds.append(1000 * (time.monotonic() - start))
    quarter, median, _ = statistics.quantiles(milliseconds, n=4)
    print(f"a reset takes {median:.1f} ms (median of 21)")
    assert quarter < 50 * int(os.environ["ZVIPTV_SLOWNESS"])  # other processes delay some of them
