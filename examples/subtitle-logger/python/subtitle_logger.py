#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Selects an audio track, and logs programmes and captions until Ctrl-C: subtitle_logger.py deu"""
import asyncio
import contextlib
import json
import signal
import sys
from collections.abc import Callable
from typing import Any

import zviptv


def clock(pts: int | None) -> str:
    """Returns "00:00:02.480" for a time stamp in 1/90000 s."""
    if pts is None:
        return "--:--:--.---"
    seconds, ms = divmod(pts // 90, 1000)
    return f"{seconds // 3600:02}:{seconds // 60 % 60:02}:{seconds % 60:02}.{ms:03}"


class SubtitleLogger:
    """Writes lines about the programmes, the captions and the restarts of the service."""

    def __init__(self, write: Callable[[str], None], audio: str, pid: int = 0x101, service_id: int = 1) -> None:
        """Selects the audio track in the language `audio`, and counts the packets and gaps of `pid`."""
        self._write = write
        self._audio = audio
        self._pid = pid
        self._service_id = service_id
        self._counters: zviptv.Counters | None = None

    async def run(self) -> None:
        """Runs until it is cancelled."""
        async with zviptv.aio.Television() as tv, asyncio.TaskGroup() as tasks:
            tasks.create_task(self._count(tv))
            tasks.create_task(self._log_programmes(tv))
            tasks.create_task(self._log_captions())
            async for is_available in tv.availability():
                self._write("the service is available" if is_available else "the service is not there")
                if is_available:
                    await self._select_audio(tv)

    def summary(self) -> str:
        """Returns "PID 257: 12 packets, 26088 bytes, 0 gaps"."""
        counters = self._counters
        if counters is None:
            return f"PID {self._pid}: no packets"
        return f"PID {self._pid}: {counters.packets} packets, {counters.bytes} bytes, {counters.gaps} gaps"

    async def _select_audio(self, tv: zviptv.aio.Television) -> None:
        try:
            languages = [str(track.language) for track in await tv.broadcast.audio_tracks()]
            if self._audio not in languages:
                self._write(f"no audio track in '{self._audio}'")
                return
            await tv.player.set_current_audio_by_index(languages.index(self._audio))
            self._write(f"audio: {self._audio}")
        except zviptv.Failure as failure:
            self._write(f"failed: {failure}")

    async def _count(self, tv: zviptv.aio.Television) -> None:
        async with tv.pes(pid=self._pid) as packets:
            gaps = 0
            async for _ in packets:
                self._counters = packets.counters
                if self._counters.gaps != gaps:
                    gaps = self._counters.gaps
                    self._write(f"gap {gaps} of PID {self._pid}")

    async def _log_programmes(self, tv: zviptv.aio.Television) -> None:
        """Asks every second, because the service does not report a new programme."""
        last: zviptv.Programme | None = None
        while True:
            try:
                present = await tv.guide.get_present_program(self._service_id)
                if present is not None and present != last:
                    following = await tv.guide.get_program_ipg(present.id, zviptv.Neighbour.NEXT)
                    self._write(f"now: {present.title}")
                    self._write(f"next: {following.title if following else 'unknown'}")
                last = present
            except zviptv.Failure as failure:
                if failure.kind != zviptv.FailureKind.NO_SERVICE:
                    self._write(f"failed: {failure}")
            await asyncio.sleep(1)

    async def _log_captions(self) -> None:
        """Reads the output of zviptvctl, which decodes captions, and starts it again when the service has left."""
        while True:
            process = await asyncio.create_subprocess_exec("zviptvctl", "--json", "caption", "--text",
                                                           stdout=asyncio.subprocess.PIPE,
                                                           stderr=asyncio.subprocess.DEVNULL)
            assert process.stdout is not None
            try:
                async for line in process.stdout:
                    self._write_caption(json.loads(line))
            finally:
                with contextlib.suppress(ProcessLookupError):
                    process.terminate()
                await process.wait()
            await asyncio.sleep(0.2)

    def _write_caption(self, caption: dict[str, Any]) -> None:
        text = "/".join(caption["lines"]) or "(erased)"
        self._write(f"{clock(caption['pts'])} {caption['kind']} {caption['languageCode'] or '???'}: {text}")


async def main(audio: str) -> None:
    logger = SubtitleLogger(lambda line: print(line, flush=True), audio)
    task = asyncio.create_task(logger.run())
    for number in (signal.SIGINT, signal.SIGTERM):
        asyncio.get_running_loop().add_signal_handler(number, task.cancel)
    await asyncio.wait([task])
    print(logger.summary())


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit("usage: subtitle_logger.py LANGUAGE; a language has three letters, such as eng")
    asyncio.run(main(sys.argv[1]))
