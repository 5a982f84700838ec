# SPDX-License-Identifier: MIT
"""Every function in both forms."""
import asyncio
import dataclasses
import datetime

import pytest
from functions import FUNCTIONS, REFUSED

import zviptv


def check(holds, call):
    if holds is REFUSED:
        with pytest.raises(zviptv.Failure) as caught:
            call()
        assert caught.value.kind is zviptv.FailureKind.REFUSED
        return
    value = call()
    assert value is None if holds is None else holds(value), value


@pytest.mark.parametrize(("endpoint", "name", "arguments", "holds"), FUNCTIONS, ids=[row[1] for row in FUNCTIONS])
def test_waits_for_the_answer_and_is_a_coroutine(playing, endpoint, name, arguments, holds):
    check(holds, lambda: getattr(getattr(playing, endpoint), name)(*arguments))

    async def call():
        async with zviptv.aio.Television() as tv:
            return await getattr(getattr(tv, endpoint), name)(*arguments)

    check(holds, lambda: asyncio.run(call()))


@pytest.mark.parametrize("package", [zviptv, zviptv.aio])
def test_the_table_has_all_functions(package):
    found = {(endpoint.lower(), name) for endpoint in ("Player", "Broadcast", "Guide")
             for name in vars(getattr(package, endpoint)) if not name.startswith("_")}
    assert found == {(row[0], row[1]) for row in FUNCTIONS}


def test_requests_carry_the_arguments(television, tv):
    tv.player.set_audio_format(zviptv.AudioCoding.MPEG, False)
    television.expect("SetAudioFormat", encodeType=1, isPreferred=False)
    tv.broadcast.set_unlocked_info(zviptv.ParentalLock.UNLOCKED_ALL)
    television.expect("SetUnlockedInfo", ratingInfo=3)
    tv.player.set_app_id("größe")
    television.expect("SetAppID", AppID="größe")


def test_unlocks_a_locked_programme(television, tv):
    television.lock("programme")
    assert tv.broadcast.get_rating_lock_state() is True
    tv.broadcast.un_mute_by_rating_pin()
    assert tv.broadcast.get_rating_lock_state() is False


def test_options_reach_the_service(television, monkeypatch):
    monkeypatch.delenv("DBUS_SYSTEM_BUS_ADDRESS")
    with zviptv.Television(television.address, application_id="org.example.named") as tv:
        tv.player.mute_audio(True)
    television.expect("SetAppID", AppID="org.example.named")


def test_times_in_other_zones_are_the_same_times(playing):
    zone = datetime.timezone(datetime.timedelta(hours=9))
    start = datetime.datetime(2026, 3, 29, 7, 0, tzinfo=zone)
    assert playing.guide.get_program_list_size(1, start, datetime.timedelta(hours=4)) == 3


@pytest.mark.parametrize(("call", "error", "text"), [
    (lambda tv: tv.player.set_current_ttx(-1), ValueError, "index: -1 is not in the range 0 to 4294967295"),
    (lambda tv: tv.player.set_current_ttx(2**70), ValueError, "is not in the range 0 to 4294967295"),
    (lambda tv: tv.guide.get_present_program(2**64), ValueError, "in_id: 18446744073709551616 is not in the range"),
    (lambda tv: tv.player.set_current_ttx("1"), TypeError, "index: expected an int, got str"),
    (lambda tv: tv.player.mute_audio("off"), TypeError, "on: expected a bool, got str"),
    (lambda tv: tv.player.set_app_id(b"x"), TypeError, "app_id: expected a str, got bytes"),
    (lambda tv: tv.player.set_app_id("\ud800"), UnicodeEncodeError, "surrogates"),
    (lambda tv: tv.guide.get_program_list(1, datetime.datetime(2026, 3, 28), datetime.timedelta(1)), ValueError, "no time zone"),
    (lambda tv: tv.guide.get_program_list(1, 5, datetime.timedelta(1)), TypeError, "start_time: expected a datetime, got int"),
])
def test_wrong_arguments_are_refused(television, tv, call, error, text):
    with pytest.raises(error, match=text):
        call(tv)
    assert [r for r in television.requests if r.function in ("SetCurrentTTX", "MuteAudio", "SetAppID")] == []


def test_a_text_that_cannot_be_sent_is_a_failure(tv):
    with pytest.raises(zviptv.Failure) as caught:
        tv.player.set_app_id("a\0b")
    assert (caught.value.kind, caught.value.key) == (zviptv.FailureKind.INVALID_ARGUMENT, "AppID")


def test_records_are_values():
    track = zviptv.DualSound(zviptv.MultiSound.MAIN, 1)
    assert track == zviptv.DualSound(zviptv.MultiSound.MAIN, 1) and hash(track) == hash(dataclasses.replace(track))
    with pytest.raises(dataclasses.FrozenInstanceError):
        track.mode = zviptv.MultiSound.SUB


def test_a_number_without_a_name_is_kept():
    state = zviptv.SourceState(17)
    assert (state, state.name, state.value) == (17, "UNKNOWN_17", 17)
    assert zviptv.SourceState(-1) is zviptv.SourceState.UNKNOWN
    with pytest.raises(ValueError):
        zviptv.SourceState("playing")


def test_all_names_are_exported_to_type_checkers_and_help():
    public = {name for name in vars(zviptv) if not name.startswith("_")} - {"testing"}
    assert set(zviptv.__all__) == public


@pytest.mark.parametrize("name", zviptv.__all__)
def test_help_describes_each_class_and_its_properties(name):
    described = getattr(zviptv, name)
    if name in ("EPOCH", "aio"):
        return
    assert described.__doc__
    members = getattr(described, "__dict__", {}).values()
    properties = [member for member in members if isinstance(member, property)]
    assert all(member.__doc__ for member in properties)
