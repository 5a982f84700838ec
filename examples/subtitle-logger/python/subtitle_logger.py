#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Selects an audio track, and logs programmes and captions until Ctrl-C: subtitle_logger.py deu"""
import asyncio
import signal
import sys
from collections.abc import Callable, Iterable

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
        self._decoder = zviptv.CaptionDecoder()

    async def run(self) -> None:
        """Runs until it is cancelled."""
        async with zviptv.aio.Television() as tv, asyncio.TaskGroup() as tasks:
            tasks.create_task(self._count(tv))
            tasks.create_task(self._watch(tv))
            tasks.create_task(self._log_captions(tv))
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
            languages = [track.language for track in await tv.broadcast.audio_tracks()]
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

    async def _watch(self, tv: zviptv.aio.Television) -> None:
        async for event in tv.watch(interval=0.5, service_id=self._service_id):
            if isinstance(event, zviptv.TelevisionState):
                self._decode_pages(event.subtitles)
                await self._show_programmes(tv, event.present)
            elif isinstance(event, zviptv.SubtitlesChange):
                self._decode_pages(event.after)
            elif isinstance(event, zviptv.ProgrammeChange):
                await self._show_programmes(tv, event.after)

    async def _show_programmes(self, tv: zviptv.aio.Television, present: zviptv.Programme | None) -> None:
        self._write(f"now: {present.title if present else 'unknown'}")
        if present is None:
            return
        try:
            following = await tv.guide.get_program_ipg(present.id, zviptv.Neighbour.NEXT)
            self._write(f"next: {following.title if following else 'unknown'}")
        except zviptv.Failure as failure:
            self._write(f"failed: {failure}")

    def _decode_pages(self, subtitles: Iterable[zviptv.Subtitle]) -> None:
        self._decoder = zviptv.CaptionDecoder(languages=zviptv.page_languages(subtitles))

    async def _log_captions(self, tv: zviptv.aio.Television) -> None:
        async for packet in tv.pes(kind=[zviptv.PesKind.TELETEXT, zviptv.PesKind.CAPTION]):
            for caption in self._decoder.decode(packet):
                text = caption.text.replace("\n", "/") or "(erased)"
                self._write(f"{clock(caption.pts)} {caption.kind.value} {caption.language or '???'}: {text}")


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
