# SPDX-License-Identifier: MIT
"""Packets and captions by iterators that wait."""
import ctypes
import gc
import threading
import time

import pytest
from conftest import SLOWNESS, wait_for

import zviptv

AUDIO, VIDEO, DVB, TELETEXT, CAPTION = 0x101, 0x100, 0x103, 0x104, 0x105


def address(view):
    """Where the bytes of a view are."""
    class Buffer(ctypes.Structure):
        _fields_ = [("buf", ctypes.c_void_p), ("obj", ctypes.py_object), ("len", ctypes.c_ssize_t),
                    ("itemsize", ctypes.c_ssize_t), ("readonly", ctypes.c_int), ("ndim", ctypes.c_int),
                    ("format", ctypes.c_char_p), ("shape", ctypes.c_void_p), ("strides", ctypes.c_void_p),
                    ("suboffsets", ctypes.c_void_p), ("internal", ctypes.c_void_p)]
    buffer = Buffer()
    ctypes.pythonapi.PyObject_GetBuffer(ctypes.py_object(view), ctypes.byref(buffer), 0)
    found = buffer.buf
    ctypes.pythonapi.PyBuffer_Release(ctypes.byref(buffer))
    return found


def test_packets_of_a_pid(tv):
    with tv.pes(pid=AUDIO) as packets:
        for number, packet in enumerate(packets):
            assert (packet.pid, packet.kind, packet.stream_id) == (AUDIO, zviptv.PesKind.AUDIO, 0xC0)
            assert packet.has_header and packet.pts > 0 and packet.dts is None
            assert bytes(packet.data[:4]) == b"\x00\x00\x01\xc0" and packet.length == len(packet.data) - 6
            assert bytes(packet.payload[:2]) == b"\xff\xfd"  # a frame of MPEG audio
            if number == 4:
                break
    assert repr(packet) == f"<PesPacket pid=257 kind=AUDIO pts={packet.pts} size={len(packet.data)}>"


@pytest.mark.parametrize(("options", "pids"), [
    ({"pid": VIDEO}, {VIDEO}),
    ({"pid": [VIDEO, AUDIO]}, {VIDEO, AUDIO}),
    ({"kind": zviptv.PesKind.VIDEO}, {VIDEO}),
    ({"kind": {zviptv.PesKind.VIDEO, zviptv.PesKind.AUDIO}}, {VIDEO, 0x101, 0x102}),
    ({"pid": AUDIO, "kind": zviptv.PesKind.AUDIO}, {AUDIO}),
])
def test_filters(tv, options, pids):
    found = set()
    with tv.pes(**options) as packets:
        begin = time.monotonic()
        while found != pids or time.monotonic() < begin + 0.5:
            found.add(packets.get(20).pid)
            assert found <= pids
    assert packets.counters.packets > 0


def test_a_payload_is_not_copied_and_keeps_the_message(tv):
    with tv.pes(pid=AUDIO) as packets:
        packet = packets.get(10)
    payload, data = packet.payload, packet.data
    assert payload.obj is packet and data.obj is packet and memoryview(packet).obj is packet
    assert address(payload) == address(data) + len(data) - len(payload) == address(packet.payload)
    assert payload.readonly and payload.format == "B" and payload.contiguous
    text = bytes(payload)
    del packet, data, packets
    tv.close()
    gc.collect()
    assert bytes(payload) == text and len(text) > 1000


def test_captions(tv):
    with tv.captions() as captions:
        data = captions.get(20)
    assert data.kind in (zviptv.PesKind.TELETEXT, zviptv.PesKind.CAPTION)
    assert data.data.obj is data and len(data.data) > 0
    assert captions.counters.bytes >= len(data.data)


def test_the_service_is_asked_once_while_there_are_streams(television, tv):
    with tv.pes(pid=AUDIO) as first, tv.pes(pid=VIDEO) as second:
        assert first.get(10).pid == AUDIO and second.get(10).pid == VIDEO
    television.expect("requestPESCB", on=False)
    requests = [request.arguments["on"] for request in television.requests if request.function == "requestPESCB"]
    assert requests == [True, False]


def test_a_dropped_stream_ends_its_subscription(television, tv):
    stream = tv.pes()
    stream.get(10)
    del stream
    television.expect("requestPESCB", on=False)


def test_continues_after_a_restart(television, tv):
    with tv.pes(pid=AUDIO) as packets:
        packets.get(10)
        television.die(for_=0.2)
        wait_for(lambda: not tv.is_available)
        tv.wait_until_available(10 * SLOWNESS)
        for _ in range(3):
            packets.get(10 * SLOWNESS)


def test_a_slow_reader_gets_the_latest_packets(tv):
    with tv.pes(limit=3) as packets:
        wait_for(lambda: packets.counters.packets >= 13)
    counters = packets.counters
    assert counters.dropped == counters.packets - 3 >= 10
    assert len([packet for packet in packets]) == 3  # what had arrived before the end


def test_get_times_out(tv):
    with tv.pes(pid=0x1ffe) as packets:
        begin = time.monotonic()
        with pytest.raises(TimeoutError):
            packets.get(0.2)
        assert 0.19 < time.monotonic() - begin < 2 * SLOWNESS
        with pytest.raises(TimeoutError):
            packets.get(0)


@pytest.mark.parametrize("end", ["stream", "television"])
def test_an_end_wakes_a_reader(television, end):
    tv = zviptv.Television()
    packets = tv.pes(pid=0x1ffe)
    read = []
    thread = threading.Thread(target=lambda: read.append(list(packets)))
    thread.start()
    wait_for(lambda: any(request.function == "requestPESCB" for request in television.requests))
    (packets.end if end == "stream" else tv.close)()
    thread.join(5 * SLOWNESS)
    assert read == [[]]
    with pytest.raises(StopIteration):
        packets.get(1)
    packets.end()
    tv.close()


def test_a_wrong_filter_says_why(tv):
    with pytest.raises(ValueError, match="pid: 70000 is not in the range 0 to 8191"):
        tv.pes([0x101, 70000])
    with pytest.raises(TypeError, match="kind: expected an int, got float"):
        tv.pes(kind=[1.5])


def test_wrong_filters_are_refused(tv):
    for wrong in ({"pid": "x"}, {"pid": 70000}, {"pid": -1}, {"kind": "audio"}, {"limit": -1}):
        with pytest.raises((TypeError, ValueError)):
            tv.pes(**wrong)


def test_malformed_pushes_are_errors(television, tv):
    with tv.errors() as errors, tv.pes():
        television.fault("PESCB=garbage:pesPID", count=1)
        failure = errors.get(10 * SLOWNESS)
    assert isinstance(failure, zviptv.Failure)
    assert (failure.kind, failure.function, failure.key) == (zviptv.FailureKind.MALFORMED_REPLY, "PESCB", "pesPID")
