# SPDX-License-Identifier: MIT
"""The examined stream, and the results of independent readers."""

from pes import Reassembly
from probe import Probe
from transport import Transport
import tracks

PES_TYPES = {"video": 1, "audio": 2, "dvb_subtitle": 3, "dvb_teletext": 4}
ARIB = 5
ASSUMED_PACE = 8122  # ticks of 27 MHz for each packet: 188 bytes at 5 Mbit/s


class Subject:
    def __init__(self, path, number=None):
        self.path = path
        self.transport = Transport(path)
        self.programmes = self.transport.programmes()
        self.programme = next(one for one in self.programmes if number in (None, one.number))
        self.probe = Probe(path, self.programme.number)
        self.pes = {entry.pid: Reassembly(self.transport, entry.pid) for entry in self.programme.entries
                    if entry.stream_type not in (0x05, 0x0A, 0x0B, 0x0C, 0x0D, 0x14, 0x86)}  # not sections
        self.audio = tracks.audio(self.programme, self.probe, self.packets)
        self.teletext = tracks.teletext(self.programme)
        self.subtitles = tracks.subtitles(self.programme)
        self.isdb = [tracks.isdb_texts(self.programme, kind, self.packets)
                     for kind in (tracks.CAPTION, tracks.SUPERIMPOSE)]
        self.captions = tracks.caption_services(self.programme)

    def packets(self, pid):
        return self.pes[pid].packets if pid in self.pes else []

    def pids_of(self, codec_type):
        return [entry.pid for entry in self.programme.entries
                if self.probe.streams[entry.pid].get("codec_type") == codec_type]

    def pes_type(self, pid):
        if any(text["pid"] == pid for kind in self.isdb for text in kind):
            return ARIB
        stream = self.probe.streams[pid]
        return PES_TYPES.get(stream.get("codec_name"), PES_TYPES.get(stream.get("codec_type"), 0))

    def caption_data(self, pid):
        """The captions in the packets of a PID: subtitle units of teletext, whole ARIB payloads."""
        kind = self.pes_type(pid)
        pieces = []
        for packet in self.packets(pid):
            pieces.append(_subtitle_units(packet.payload) if kind == PES_TYPES["dvb_teletext"] else
                          packet.payload if kind == ARIB else b"")
        return [piece for piece in pieces if piece]

    def first_pts(self):
        """The first PTS of the video or, without video, of the first audio track, by ffprobe; None if it has none."""
        pids = self.pids_of("video")[:1] or self.pids_of("audio")[:1]
        stamps = [packet["pts"] % (1 << 33) for pid in pids for packet in self.probe.packets(pid)
                  if "pts" in packet]
        return stamps[0] if stamps else None

    def resolution(self):
        """The record that the service must return, from ffprobe; None without a picture."""
        pids = self.pids_of("video")
        if not pids or self.probe.number(pids[0], "width") == 0:
            return None
        stream = self.probe.streams[pids[0]]
        rate = stream["r_frame_rate"].split("/")
        aspect = stream.get("display_aspect_ratio", "0:0").split(":")
        return {"width": stream["width"], "height": stream["height"],
                "frameRateNumerator": int(rate[0]), "frameRateDenominator": int(rate[1]),
                "aspectWidth": int(aspect[0]), "aspectHeight": int(aspect[1]),
                "interlaced": int(stream.get("field_order", "progressive") != "progressive")}

    def clock(self):
        """The first STC, the last STC and its tolerance, in 1/90000 s; None for a stream without time stamps."""
        pcrs = self.transport.pcrs(self.programme.pcr_pid)
        if not pcrs:
            stamps = [packet.dts for pid in self.pes for packet in self.packets(pid) if packet.dts is not None]
            return (min(stamps), max(stamps), 45000) if stamps else None
        pace = ASSUMED_PACE
        if len(pcrs) > 1:
            (before, earlier), (after, later) = pcrs[-2:]
            pace = (later - earlier) / (after - before)
        last = pcrs[-1][1] + (len(self.transport.packets) - pcrs[-1][0]) * pace
        return pcrs[0][1] // 300, int(last // 300), 2

    def seconds(self):
        """How long the stream plays."""
        clock = self.clock()
        return (clock[1] - clock[0]) / 90000 if clock else len(self.transport.packets) * ASSUMED_PACE / 27e6


def _subtitle_units(field):
    """The data units that carry subtitles in an EBU data field (EN 300 472), with their headers."""
    units = b""
    at = 1
    while at + 2 <= len(field) and at + 2 + field[at + 1] <= len(field):
        end = at + 2 + field[at + 1]
        if field[at] == 0x03:
            units += field[at:end]
        at = end
    return units
