# SPDX-License-Identifier: MIT
"""Arguments that are out of range, or of another type."""
import asyncio
import math

import pytest
from conftest import wait_for

import zviptv

NO_SECONDS = [-1, -0.001, math.nan, -math.inf, 10**400]
NO_NUMBERS = ["1", None, [1], object()]
STREAMS = ["pes", "captions", "caption_texts", "watch", "availability", "errors"]


@pytest.mark.parametrize("stream", STREAMS)
def test_a_limit_is_a_number_of_items(television, tv, stream):
    subscribe = getattr(tv, stream)
    for limit in (-1, 2**63, -2**70):
        with pytest.raises(ValueError) as caught:
            subscribe(limit=limit)
        assert str(caught.value) == f"limit: {limit} is not in the range 0 to 9223372036854775807"
    for limit, kind in ((1.0, "float"), ("1", "str"), (None, "NoneType"), (math.nan, "float")):
        with pytest.raises(TypeError) as caught:
            subscribe(limit=limit)
        assert str(caught.value) == f"limit: expected an int, got {kind}"
    subscribe(limit=2**63 - 1).end()
    subscribe(limit=True).end()


def test_a_limit_of_zero_keeps_all_items(playing):
    with playing.pes(limit=0) as packets:
        wait_for(lambda: packets.counters.packets >= 100)
        packets.end()
        assert packets.counters.dropped == 0
        assert sum(1 for _ in packets) == packets.counters.packets


@pytest.mark.parametrize("timeout", NO_SECONDS)
def test_a_time_is_not_negative(television, tv, timeout):
    expected = f"timeout: {timeout} is not a valid number of seconds; use 0 or more" if timeout != 10**400 else "timeout: "
    with tv.errors() as errors, pytest.raises(ValueError) as caught:
        errors.get(timeout)
    assert str(caught.value).startswith(expected)
    with pytest.raises(ValueError, match="timeout: "):
        tv.wait_until_available(timeout)
    with pytest.raises(ValueError, match="interval: .* is not a valid number of seconds; use 0 or more"):
        tv.watch(interval=timeout)

    async def call():
        async with zviptv.aio.Television() as other:
            await other.player.get_stc_count(timeout=timeout)

    with pytest.raises(ValueError, match="timeout: "):
        asyncio.run(call())


@pytest.mark.parametrize("timeout", NO_NUMBERS)
def test_a_time_is_a_number(television, tv, timeout):
    kind = type(timeout).__name__
    with pytest.raises(TypeError, match=f"interval: expected a number of seconds, got {kind}"):
        tv.watch(interval=timeout)

    async def call():
        async with zviptv.aio.Television() as other:
            await other.player.get_stc_count(timeout=timeout)

    with pytest.raises(TypeError, match=f"timeout: expected a number of seconds, got {kind}"):
        asyncio.run(call())
    if timeout is not None:
        with tv.errors() as errors, pytest.raises(TypeError, match=f"timeout: expected a number of seconds, got {kind}"):
            errors.get(timeout)


def test_a_time_may_be_zero_or_infinite(television, tv):
    with tv.availability() as changes:
        assert changes.get(10) is True
        with pytest.raises(TimeoutError):
            changes.get(0)
        with pytest.raises(TimeoutError):
            changes.get(False)
    tv.wait_until_available(math.inf)
    tv.watch(interval=0).end()
    tv.watch(interval=math.inf).end()

    async def call():
        async with zviptv.aio.Television() as other:
            await other.player.get_stc_count(timeout=0)

    with pytest.raises(zviptv.Failure) as caught:
        asyncio.run(call())
    assert caught.value.kind is zviptv.FailureKind.TIMED_OUT


@pytest.mark.parametrize("pid", [-1, 0x2000, 2**64])
def test_a_pid_has_13_bits(television, tv, pid):
    for given in (pid, [0x100, pid]):
        with pytest.raises(ValueError) as caught:
            tv.pes(pid=given)
        assert str(caught.value) == f"pid: {pid} is not in the range 0 to 8191"
    tv.pes(pid=[0, 0x1fff]).end()


def test_a_filter_has_integers(television, tv):
    for given, kind in ((1.5, "float"), (math.nan, "float"), ("257", "str"), ([None], "NoneType")):
        with pytest.raises(TypeError) as caught:
            tv.pes(pid=given)
        assert str(caught.value) == f"pid: expected an int, got {kind}"
        with pytest.raises(TypeError, match=f"kind: expected an int, got {kind}"):
            tv.pes(kind=given)


@pytest.mark.parametrize(("use", "expected"), [
    (lambda tv: tv.broadcast.get_audio(-1), "index: -1 is not in the range 0 to 4294967295"),
    (lambda tv: tv.broadcast.get_audio(2**32), "index: 4294967296 is not in the range 0 to 4294967295"),
    (lambda tv: tv.broadcast.get_audio(1.0), "index: expected an int, got float"),
    (lambda tv: tv.watch(service_id=-1), "service_id: -1 is not in the range 0 to 18446744073709551615"),
    (lambda tv: tv.watch(service_id=2**64), "service_id: 18446744073709551616 is not in the range 0 to 18446744073709551615"),
    (lambda tv: tv.watch(service_id=0.5), "service_id: expected an int, got float"),
    (lambda tv: tv.caption_texts(pages=99), "pages: 99 is not in the range 100 to 899"),
    (lambda tv: tv.caption_texts(pages=[900]), "pages: 900 is not in the range 100 to 899"),
    (lambda tv: tv.caption_texts(languages={0: "deu"}), "languages: 0 is not in the range 100 to 899"),
    (lambda tv: zviptv.Television(profile=-1), "profile: -1 is not in the range 0 to 4294967295"),
    (lambda tv: zviptv.Television(id=2**16), "id: 65536 is not in the range 0 to 65535"),
    (lambda tv: zviptv.Television(5), "bus_address: expected a str, got int"),
    (lambda tv: zviptv.Television(application_id=b"name"), "application_id: expected a str, got bytes"),
])
def test_a_wrong_argument_is_named(television, tv, use, expected):
    with pytest.raises((TypeError, ValueError)) as caught:
        use(tv)
    assert str(caught.value) == expected


@pytest.mark.parametrize("time", [-1, math.nan, math.inf, 1_000_001])
def test_times_of_the_test_kit_are_limited(television, time):
    for name, use in (("within", lambda: television.expect("MuteAudio", within=time)),
                      ("for_", lambda: television.expect_no("MuteAudio", for_=time)),
                      ("within", lambda: television.scenario("0 pause", within=time))):
        with pytest.raises(ValueError) as caught:
            use()
        assert str(caught.value) == f"{name}: {time} is not a number of seconds from 0 to 1000000"


def test_numbers_of_the_test_kit_fit_their_type(television):
    with pytest.raises(ValueError, match="^fault add: -1 not in range 0 to 4294967295"):
        television.fault("MuteAudio=drop", count=-1)
