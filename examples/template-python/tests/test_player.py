# SPDX-License-Identifier: MIT
"""Tests of the application on a simulated television."""
from typing import Iterator

import player
import pytest
import zviptv
from zviptv.testing import Television


@pytest.fixture
def tv(television: Television) -> Iterator[zviptv.Television]:
    """The application's connection to the simulated television."""
    with zviptv.Television() as tv:
        yield tv


def test_mutes(television: Television, tv: zviptv.Television) -> None:
    player.mute(tv, True)
    television.expect("MuteAudio", onoff=True)
    assert television.properties["AudioMuted"]


def test_tries_again_when_the_service_refuses(television: Television, tv: zviptv.Television) -> None:
    television.fault("MuteAudio=result:0", count=1)
    player.mute(tv, True)
    assert [request.answer for request in television.requests] == ["refused", "done"]


def test_reports_a_service_that_is_gone(television: Television, tv: zviptv.Television) -> None:
    television.die()
    with pytest.raises(zviptv.Failure):
        player.mute(tv, True)


def test_leaves_an_unlocked_programme_alone(television: Television, tv: zviptv.Television) -> None:
    with pytest.raises(TimeoutError, match="was not locked"):
        player.unlock_when_locked(tv, within=0.3)
    television.expect_no("UnMuteByRatingPin")


def test_unlocks_a_programme_that_is_locked_later(television: Television, capsys: pytest.CaptureFixture[str]) -> None:
    with television.scenario("""
        0.2 lock programme
        0.2 expect UnMuteByRatingPin within 5
        """):
        assert player.main(["unlock"]) == 0
    assert capsys.readouterr().out == "done\n"
