# SPDX-License-Identifier: MIT
"""PES packets and captions as subscribers receive them."""

import json
import signal
import time

PATIENCE = 60


class Subscriber:
    """A zviptvctl that records the pushes of the service."""

    def __init__(self, service, command, folder):
        self._out = f"{folder}/{command}.bytes"
        self._lines = f"{folder}/{command}.lines"
        self._process = service.subscribe(command, self._out, self._lines)

    def _read_lines(self):
        with open(self._lines, encoding="utf-8") as file:
            return [json.loads(line) for line in file if line.endswith("\n")]

    def end(self, count, findings):
        """Waits for `count` packets, and ends the subscription. Returns the line and the bytes of each packet."""
        limit = time.monotonic() + PATIENCE
        while len(self._read_lines()) < count and time.monotonic() < limit:
            time.sleep(0.05)
        self._process.send_signal(signal.SIGINT)
        _, errors = self._process.communicate(timeout=PATIENCE)
        findings.same("exit status and skipped packets of the subscriber",
                      (self._process.returncode, errors.decode().count("skipped")), (0, 0))
        with open(self._out, "rb") as file:
            return [(line, file.read(line["size"])) for line in self._read_lines()]


def check_pes(subject, received, findings):
    findings.check("no PES of another PID", all(line["pid"] in subject.pes for line, _ in received))
    for pid in subject.pes:
        expected = subject.packets(pid)
        got = [(line, data) for line, data in received if line["pid"] == pid]
        name = f"PES of PID {pid:#x}"
        findings.same(f"{name}: number", len(got), len(expected))
        findings.check(f"{name}: bytes", [data for _, data in got] == [packet.data for packet in expected])
        findings.same(f"{name}: PTS", [line["pts"] for line, _ in got],
                      [(packet.pts or 0) % (1 << 32) for packet in expected])
        findings.same(f"{name}: type", {line["type"] for line, _ in got},
                      {subject.pes_type(pid)} if expected else set())


def check_captions(subject, received, findings):
    expected = {}
    for pid in subject.pes:
        expected.setdefault(subject.pes_type(pid), []).extend(subject.caption_data(pid))
    kinds = {line["type"] for line, _ in received}
    findings.same("kinds of captions", kinds, {kind for kind, pieces in expected.items() if pieces})
    for kind in kinds:  # the captions of several PIDs of a type are interleaved
        findings.same(f"captions of type {kind}", sorted(data for line, data in received if line["type"] == kind),
                      sorted(expected.get(kind, [])))


def check_against_probe(subject, findings):
    """Compares our reassembly with ffprobe's packets, which are frames and therefore have other sizes."""
    for pid, reassembly in subject.pes.items():
        frames = subject.probe.packets(pid)
        stream = subject.probe.streams[pid]
        packets = [packet for packet in reassembly.packets if packet.data[3] != 0xBE]  # ffprobe leaves out padding
        stamps = {packet["pts"] % (1 << 33) for packet in frames if "pts" in packet}
        if stream.get("codec_name") != "dvb_teletext":  # ffprobe replaces the PTS of teletext by the PCR
            missing = [packet.pts for packet in packets if packet.pts is not None and packet.pts not in stamps]
            findings.same(f"PTS of PID {pid:#x} that ffprobe does not know", missing, [])
        sizes = [len(packet.payload) for packet in packets]
        if stream.get("codec_name") == "dvb_subtitle":  # ffprobe removes identifier, stream id and end mark
            findings.same(f"sizes in PID {pid:#x}", [int(one["size"]) + 3 for one in frames], sizes)
        elif stream.get("codec_type") in ("video", "audio", "subtitle"):
            findings.same(f"bytes in PID {pid:#x}", sum(int(one["size"]) for one in frames),
                          sum(sizes) + len(reassembly.unfinished))
