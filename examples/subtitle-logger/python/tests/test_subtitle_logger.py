# SPDX-License-Identifier: MIT
"""Tests of the logger on a simulated television, which has the guide of pyproject.toml."""
import asyncio

from subtitle_logger import SubtitleLogger
from zviptv.testing import Television


def logged(*texts: str) -> None:
    """Runs the logger until it has written lines that begin with these texts, in this order; 10 s at most."""
    async def run() -> None:
        lines: asyncio.Queue[str] = asyncio.Queue()
        task = asyncio.create_task(SubtitleLogger(lines.put_nowait, "deu").run())
        try:
            async with asyncio.timeout(10):
                for text in texts:
                    while not (await lines.get()).startswith(text):
                        pass
        finally:
            task.cancel()
            await asyncio.wait([task])
    asyncio.run(run())


def test_selects_the_language(television: Television) -> None:
    logged("the service is available", "audio: deu")
    television.expect("SetCurrentAudioByIndex", index=1)


def test_shows_the_present_and_the_next_programme(television: Television) -> None:
    logged("now: Cellar Door", "next: Night Trains")


def test_writes_captions_with_time_and_language(television: Television) -> None:
    television.speed(5)
    logged("00:00:04.480 teletext deu: Zwei", "00:00:05.480 teletext deu: (erased)")


def test_reports_gaps(television: Television) -> None:
    television.speed(5)
    with television.scenario("6 die --for 1.1"):
        logged("gap 1 of PID 257")


def test_selects_the_language_again_after_a_restart(television: Television) -> None:
    with television.scenario("after SetCurrentAudioByIndex die --for 0.1"):
        logged("the service is available", "the service is not there", "audio: deu")


def test_reports_a_refused_selection(television: Television) -> None:
    television.fault("SetCurrentAudioByIndex=result:0")
    logged("failed: SetCurrentAudioByIndex: refused")
