# SPDX-License-Identifier: MIT
"""Changes of the state."""
import asyncio
import dataclasses
import gc

import pytest
from conftest import SLOWNESS

import zviptv

NOTHING = zviptv.TelevisionState(None, (), (), (), (), (), None, None, None, None, None, None, None, None)


def find(watcher, kind):
    """The next event of this class."""
    return next(event for event in iter(lambda: watcher.get(10 * SLOWNESS), None) if isinstance(event, kind))


def test_the_whole_state_comes_first(playing):
    with playing.watch(0.01, service_id=1) as watcher:
        state = watcher.get(10 * SLOWNESS)
    assert isinstance(state, zviptv.TelevisionState)
    assert state.source is zviptv.SourceState.PLAYING
    assert [(track.language, track.pid) for track in state.audio_tracks] == [("eng", 0x101), ("deu", 0x102)]
    assert [subtitle.language for subtitle in state.subtitles] == ["eng", "eng", "deu"]
    assert len(state.pages) > 0 and [caption.pid for caption in state.captions] == [0x105] and state.superimposes == ()
    assert (state.audio, state.programme_lock, state.service_lock) == (0, False, False)
    assert state.present.title == "Cellar Door"
    assert hash(state) == hash(dataclasses.replace(state))


def change_audio(television, tv):
    tv.player.set_current_audio_by_index(1)


def change_subtitle(television, tv):
    tv.player.set_current_hybrid_sbt(2)


def change_page(television, tv):
    tv.player.set_current_ttx(1)


def lock_programme(television, tv):
    television.lock("programme")


def lock_service(television, tv):
    television.lock("service")


@pytest.mark.parametrize(("change", "kind", "name", "after"), [
    (change_audio, zviptv.AudioChange, "audio", 1),
    (change_subtitle, zviptv.SubtitleChange, "subtitle", 2),
    (change_page, zviptv.TeletextPageChange, "page", 1),
    (lock_programme, zviptv.ProgrammeLockChange, "programme_lock", True),
    (lock_service, zviptv.ServiceLockChange, "service_lock", True),
])
def test_a_change_is_an_event(television, playing, change, kind, name, after):
    with playing.watch(0.01, service_id=1) as watcher:
        before = getattr(watcher.get(10 * SLOWNESS), name)
        change(television, playing)
        event = find(watcher, kind)
        assert type(event) is kind and event == kind(before, after) and before != after
        assert getattr(watcher.state, name) == after
    assert getattr(watcher.state, name) == after  # also after the end


def test_every_value_has_a_change():
    names = [field.name for field in dataclasses.fields(zviptv.TelevisionState)]
    changes = [kind.__doc__ for kind in zviptv.StateChange.__subclasses__()]
    assert changes == [f"A change of TelevisionState.{name}." for name in names]


def test_tracks_change_with_the_stream(television, playing):
    with playing.watch(0.01) as watcher:
        watcher.get(10 * SLOWNESS)
        television.fault("SizeOfAudio=result:0")
        while find(watcher, zviptv.AudioTracksChange).after != ():
            pass  # the format of a track may become known before
        television.fault("GetSourceState=result:0")
        assert find(watcher, zviptv.SourceChange) == zviptv.SourceChange(zviptv.SourceState.PLAYING, None)


def test_there_is_no_state_before_the_first_event(playing):
    with playing.watch() as watcher:
        state = watcher.state
        assert state in (NOTHING, watcher.get(10 * SLOWNESS))
    with zviptv.Television("unix:path=/nowhere/bus") as tv, tv.watch(0.01) as watcher:
        with pytest.raises(TimeoutError):
            watcher.get(0.2)
        assert watcher.state == NOTHING


def test_refresh_asks_before_the_interval_is_over(television, playing):
    with playing.watch(3600) as watcher:
        watcher.get(10 * SLOWNESS)
        playing.player.set_current_audio_by_index(1)
        watcher.refresh()
        assert find(watcher, zviptv.AudioChange).after == 1


def test_a_watcher_goes_on_after_a_restart(television, playing):
    with playing.watch(0.01) as watcher:
        watcher.get(10 * SLOWNESS)
        playing.player.set_current_audio_by_index(1)
        find(watcher, zviptv.AudioChange)
        television.die(for_=0.2)
        assert find(watcher, zviptv.AudioChange).after == 0


def test_a_malformed_reply_is_an_error(television, playing):
    with playing.errors() as errors, playing.watch(0.01) as watcher:
        watcher.get(10 * SLOWNESS)
        television.fault("GetSourceState=garbage:sourcestate")
        failure = errors.get(10 * SLOWNESS)
        assert (failure.kind, failure.function) == (zviptv.FailureKind.MALFORMED_REPLY, "GetSourceState")
        assert watcher.state.source is zviptv.SourceState.PLAYING


@pytest.mark.parametrize("how", ["end", "drop", "close"])
def test_the_end_of_a_watcher_stops_its_requests(television, how):
    tv = zviptv.Television()
    tv.wait_until_available(10)
    watcher = tv.watch(0.01)
    watcher.get(10 * SLOWNESS)
    if how == "end":
        watcher.end()
    elif how == "close":
        tv.close()
    if how != "drop":
        watcher.refresh()
    del watcher
    gc.collect()
    if how != "close":
        tv.player.set_app_id("org.example.end")  # requests that were posted before have been sent
    television.reset()
    television.expect_no("GetSourceState", for_=0.2)
    tv.close()


def test_wrong_arguments_are_refused(tv):
    for wrong in ({"interval": "1"}, {"service_id": -1}, {"service_id": "1"}, {"limit": -1}):
        with pytest.raises((TypeError, ValueError)):
            tv.watch(**wrong)


def test_changes_by_a_coroutine(television):
    async def main():
        async with zviptv.aio.Television() as tv, tv.watch(0.01) as watcher:
            async for event in watcher:
                if isinstance(event, zviptv.TelevisionState):
                    await tv.player.set_current_audio_by_index(1)
                elif isinstance(event, zviptv.AudioChange):
                    assert (event, watcher.state.audio) == (zviptv.AudioChange(0, 1), 1)
                    break
            await tv.player.set_current_audio_by_index(0)
            watcher.refresh()
            async for event in watcher:
                if isinstance(event, zviptv.AudioChange):
                    assert event.after == 0
                    break

    asyncio.run(main(), debug=True)
