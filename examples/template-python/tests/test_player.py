# SPDX-License-Identifier: MIT
"""Tests of the application on a simulated television."""
import player
import pytest
from zviptv.testing import Television


def test_mutes(television: Television) -> None:
    player.mute(True)
    television.expect("MuteAudio", onoff=True)
    assert television.properties["AudioMuted"]


def test_tries_again_when_the_service_refuses(television: Television) -> None:
    television.fault("MuteAudio=result:0", count=1)
    player.mute(True)
    assert [request.answer for request in television.requests] == ["refused", "done"]


def test_reports_a_service_that_is_gone(television: Television) -> None:
    television.die()
    with pytest.raises(player.Failed):
        player.mute(True)


def test_leaves_an_unlocked_programme_alone(television: Television) -> None:
    with pytest.raises(player.Failed, match="was not locked"):
        player.unlock_when_locked(within=0.3)
    television.expect_no("UnMuteByRatingPin")


def test_unlocks_a_programme_that_is_locked_later(television: Television, capsys: pytest.CaptureFixture[str]) -> None:
    with television.scenario("""
        0.2 lock programme
        0.2 expect UnMuteByRatingPin within 5
        """):
        assert player.main(["unlock"]) == 0
    assert capsys.readouterr().out == "done\n"
