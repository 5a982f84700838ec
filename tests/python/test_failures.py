# SPDX-License-Identifier: MIT
"""Failures of calls, threads and signals."""
import asyncio
import datetime
import os
import pathlib
import pickle
import signal
import subprocess
import sys
import threading
import time

import pytest
from conftest import SLOWNESS, wait_for

import zviptv
from zviptv import FailureKind

INJECTED = "org.corvel.zviptvapi.Error.Injected"


@pytest.mark.parametrize(("fault", "kind", "key", "error_name"), [
    ("GetSTCCount=result:0", FailureKind.REFUSED, "", ""),
    ("GetSTCCount=error", FailureKind.BUS_ERROR, "", INJECTED),
    ("GetSTCCount=missing:stcCount", FailureKind.MALFORMED_REPLY, "stcCount", ""),
    ("GetSTCCount=garbage:stcCount", FailureKind.MALFORMED_REPLY, "stcCount", ""),
    ("GetSTCCount=drop", FailureKind.TIMED_OUT, "", ""),
])
def test_a_failure_contains_the_reason(television, tv, fault, kind, key, error_name):
    television.fault(fault)
    with pytest.raises(zviptv.Failure) as caught:
        tv.player.get_stc_count()
    failure = caught.value
    assert (failure.kind, failure.function, failure.error_name) == (kind, "GetSTCCount", error_name)
    assert failure.key == key
    assert failure.message and str(failure).startswith(f"GetSTCCount: {kind.value}")

    async def call():
        async with zviptv.aio.Television() as other:
            await other.player.get_stc_count()

    with pytest.raises(zviptv.Failure) as caught:
        asyncio.run(call())
    assert (caught.value.kind, caught.value.function, caught.value.key) == (kind, "GetSTCCount", failure.key)


def test_without_a_bus():
    with zviptv.Television("unix:path=/nowhere/bus") as tv:
        assert not tv.is_available
        with pytest.raises(zviptv.Failure) as caught:
            tv.player.mute_audio(True)
        assert caught.value.kind is FailureKind.NO_BUS
        with pytest.raises(TimeoutError):
            tv.wait_until_available(0.1)


def test_a_closed_television_reports_it(television):
    tv = zviptv.Television()
    tv.close()
    tv.close()
    assert not tv.is_available
    for use in (lambda: tv.player.mute_audio(True), tv.pes, tv.captions, tv.availability, tv.errors):
        with pytest.raises(zviptv.Failure, match="the Television is closed; create another one") as caught:
            use()
        assert caught.value.kind is FailureKind.GONE


def test_the_text_is_that_of_the_client_layer():
    failure = zviptv.Failure(FailureKind.BUS_ERROR, "MuteAudio", "", INJECTED, "why")
    assert str(failure) == f"MuteAudio: bus error ({INJECTED}): why"
    assert str(zviptv.Failure(FailureKind.GONE)) == "gone"
    copy = pickle.loads(pickle.dumps(failure))
    assert (copy.kind, copy.function, copy.error_name, copy.message) == (FailureKind.BUS_ERROR, "MuteAudio", INJECTED, "why")


def test_survives_a_restart(television, tv):
    tv.player.mute_audio(True)
    television.die(for_=0.2)
    wait_for(lambda: not tv.is_available)
    tv.wait_until_available(10 * SLOWNESS)
    tv.player.mute_audio(False)
    with tv.availability() as changes:
        assert changes.get(1) is True


def test_reports_changes_of_availability(television, tv):
    with tv.availability() as changes:
        assert changes.get(1) is True
        television.die(for_=0.2)
        assert [changes.get(10 * SLOWNESS), changes.get(10 * SLOWNESS)] == [False, True]


def test_other_threads_run_while_a_call_waits(television, tv):
    television.fault("MuteAudio=drop", count=1)
    is_done = threading.Event()
    longest, turns = 0.0, 0

    def call():
        with pytest.raises(zviptv.Failure):
            tv.player.mute_audio(True)
        is_done.set()

    thread = threading.Thread(target=call)
    begin = before = time.monotonic()
    thread.start()
    while not is_done.is_set():
        time.sleep(0.005)
        now = time.monotonic()
        longest, before, turns = max(longest, now - before), now, turns + 1
    thread.join()
    assert 1.9 < before - begin < 4 * SLOWNESS
    assert longest < 1.0 and turns > 100


def test_threads_share_a_television(playing):
    outcomes = []

    def call():
        outcomes.extend(playing.player.get_stc_count() > 0 for _ in range(50))

    threads = [threading.Thread(target=call) for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert outcomes == [True] * 400


def test_several_televisions(playing):
    others = [zviptv.Television() for _ in range(5)]
    assert all(other.player.get_stc_count() > 0 for other in others)
    for other in others:
        other.close()
    assert playing.player.get_stc_count() > 0


def test_close_waits_for_the_calls_of_other_threads(television):
    tv = zviptv.Television()
    tv.wait_until_available(10)
    television.fault("MuteAudio=drop", count=1)
    kinds = []

    def call():
        try:
            tv.player.mute_audio(True)
        except zviptv.Failure as failure:
            kinds.append(failure.kind)

    thread = threading.Thread(target=call)
    thread.start()
    television.expect("MuteAudio")
    tv.close()
    thread.join(0.5 * SLOWNESS)
    assert kinds == [FailureKind.TIMED_OUT]


def run(text, television, **options):
    """Runs a program that uses the service."""
    environment = {**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": television.address, "G_DEBUG": "fatal-criticals"}
    return subprocess.run([sys.executable, "-X", "faulthandler", "-c", text], env=environment, capture_output=True, text=True,
                          timeout=30 * SLOWNESS, check=False, **options)


LIVE = """
import threading, zviptv
tv = zviptv.Television()
tv.wait_until_available(10)
packets = tv.pes()
kept = packets.get(10)
"""


@pytest.mark.parametrize("text", [
    "",
    "tv.cycle = tv",
    "import sys; sys.zviptv_kept = (tv, packets, kept)",
    "threading.Thread(target=lambda: [0 for _ in packets], daemon=True).start()",
    """
def ask():
    while True: tv.player.get_stc_count()
for _ in range(4): threading.Thread(target=ask, daemon=True).start()
""",
    "import gc; gc.disable(); del tv; del packets",
], ids=["globals", "cycle", "kept", "iterating", "calling", "deleted"])
def test_the_interpreter_ends_with_live_objects(television, text):
    done = run(LIVE + text + "\nprint(len(kept.payload) >= 0)", television)
    assert (done.returncode, done.stdout) == (0, "True\n"), done.stderr
    assert "Fatal" not in done.stderr and "terminate" not in done.stderr


def test_the_interpreter_ends_with_a_loop_that_was_left(television):
    done = run("""
import asyncio, zviptv
kept = []
async def main():
    tv = zviptv.aio.Television()
    await tv.wait_until_available()
    kept.append((tv, tv.pes(), asyncio.create_task(tv.player.mute_audio(True))))
    await asyncio.sleep(0)
asyncio.run(main())
""", television)
    assert done.returncode == 0 and "Traceback" not in done.stderr, done.stderr


@pytest.mark.parametrize("keep", ["tv = zviptv.Television()", "kept.append(zviptv.Television())"], ids=["dropped", "kept"])
def test_the_interpreter_ends_while_threads_create_televisions(television, keep):
    for _ in range(3):
        done = run(f"""
import threading, time, zviptv
kept, turns = [], []
def create():
    while True:
        try:
            {keep}
            turns.append(0)
        except RuntimeError:
            return
for _ in range(4): threading.Thread(target=create, daemon=True).start()
while len(turns) < 20: time.sleep(0.001)
""", television)
        assert (done.returncode, done.stderr) == (0, "")


def test_a_subinterpreter_is_refused(television):
    done = run(LIVE + """
import _xxsubinterpreters as interpreters
other = interpreters.create()
try:
    interpreters.run_string(other, "import zviptv; zviptv.Television()")
except interpreters.RunFailedError as error:
    print("in a subinterpreter" in str(error))
interpreters.destroy(other)
print(tv.player.get_source_state().name)
""", television)
    assert (done.returncode, done.stdout) == (0, "True\nPLAYING\n"), done.stderr


def test_a_forked_child_is_refused(television):
    done = run(LIVE + """
import os
child = os.fork()
if child == 0:
    for use in (lambda: tv.player.mute_audio(True), packets.get, zviptv.Television, tv.pes):
        try:
            use()
        except RuntimeError as error:
            print("forked after a Television was created" in str(error), flush=True)
    print(tv.is_available, len(kept.data) > 0, flush=True)
    del tv, packets
else:
    print(os.waitpid(child, 0)[1], flush=True)
    tv.player.mute_audio(True)
""", television)
    assert (done.returncode, done.stdout) == (0, "True\n" * 4 + "False True\n0\n"), done.stderr


def test_control_c_ends_a_wait(television, tv):
    with tv.pes(pid=0x1ffe) as packets:
        timer = threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT))
        begin = time.monotonic()
        timer.start()
        with pytest.raises(KeyboardInterrupt):
            packets.get(20)
        assert time.monotonic() - begin < 5


def test_control_c_during_a_call_takes_effect_after_it(television, tv):
    television.fault("MuteAudio=drop", count=1)
    timer = threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT))
    timer.start()
    begin = time.monotonic()
    with pytest.raises((KeyboardInterrupt, zviptv.Failure)):
        tv.player.mute_audio(True)
        time.sleep(5)
    assert time.monotonic() - begin < 4 * SLOWNESS
    tv.player.mute_audio(True)


def test_a_time_beyond_every_timedelta_is_the_longest_one(tmp_path):
    source = pathlib.Path(__file__).parents[2].joinpath("examples/python/service.py").read_text(encoding="utf-8")
    clock = "time.monotonic() * 1000 % 2**32"
    assert clock in source
    service = tmp_path / "service.py"
    service.write_text(source.replace(clock, "2**63 - 1"), encoding="utf-8")
    with subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE, text=True) as bus:
        address = bus.stdout.readline().strip()
        environment = {**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": address}
        with subprocess.Popen([sys.executable, service], env=environment, stdout=subprocess.DEVNULL) as process:
            try:
                with zviptv.Television(address) as tv:
                    tv.wait_until_available(10 * SLOWNESS)
                    assert tv.player.get_first_pts().current_time == datetime.timedelta.max - datetime.timedelta(microseconds=999)
            finally:
                process.kill()
                bus.kill()
