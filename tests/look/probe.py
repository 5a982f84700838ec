# SPDX-License-Identifier: MIT
"""The output of ffprobe for a stream."""

import json
import subprocess


def _ffprobe(path, *options):
    done = subprocess.run(["ffprobe", "-v", "quiet", "-of", "json", *options, path],
                          stdout=subprocess.PIPE, check=True)
    return json.loads(done.stdout)


class Probe:
    def __init__(self, path, programme):
        found = _ffprobe(path, "-show_programs", "-show_streams")
        self.programmes = [one["program_num"] for one in found["programs"]]
        self.programme = next(one for one in found["programs"] if one["program_num"] == programme)
        self.names = {one["program_num"]: one.get("tags", {}).get("service_name", "")
                      for one in found["programs"]}
        self.streams = {int(one["id"], 16): one for one in self.programme["streams"]}
        self._packets = {}
        pid_of = {one["index"]: int(one["id"], 16) for one in found["streams"]}
        for packet in _ffprobe(path, "-show_packets")["packets"]:
            self._packets.setdefault(pid_of[packet["stream_index"]], []).append(packet)

    def packets(self, pid):
        """The packets of a PID in stream order. Each is a frame; a PES packet may contain several."""
        return self._packets.get(pid, [])

    def language(self, pid):
        """The first language of a stream; empty if it has none."""
        return self.streams[pid].get("tags", {}).get("language", "").split(",")[0]

    def number(self, pid, field):
        """A number of a stream; 0 if ffprobe does not know it."""
        return int(self.streams[pid].get(field, 0))
