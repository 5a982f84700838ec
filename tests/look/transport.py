# SPDX-License-Identifier: MIT
"""Reads packets, tables and clocks of a transport stream, without any code of the simulator."""

PRIVATE_PES = 0x06


class Entry:
    """One elementary stream of a PMT."""

    def __init__(self, pid, stream_type, descriptors):
        self.pid = pid
        self.stream_type = stream_type
        self.descriptors = descriptors

    def all(self, *tags):
        """The descriptors with these tags, as pairs of tag and bytes, in order."""
        return [(tag, data) for tag, data in self.descriptors if tag in tags]

    def first(self, tag):
        return next((data for other, data in self.descriptors if other == tag), None)

    @property
    def component_tag(self):
        data = self.first(0x52)
        return data[0] if data else 0


class Programme:
    def __init__(self, number, pcr_pid, descriptors, entries):
        self.number = number
        self.pcr_pid = pcr_pid
        self.descriptors = descriptors
        self.entries = entries


def read_descriptors(data):
    descriptors = []
    while len(data) >= 2:
        size = data[1]
        descriptors.append((data[0], bytes(data[2:2 + size])))
        data = data[2 + size:]
    return descriptors


def read_pmt(section):
    length = ((section[1] & 0x0F) << 8) + section[2]
    body = section[8:3 + length - 4]
    pcr_pid = ((body[0] & 0x1F) << 8) + body[1]
    info = ((body[2] & 0x0F) << 8) + body[3]
    entries = []
    rest = body[4 + info:]
    while len(rest) >= 5:
        size = ((rest[3] & 0x0F) << 8) + rest[4]
        pid = ((rest[1] & 0x1F) << 8) + rest[2]
        entries.append(Entry(pid, rest[0], read_descriptors(rest[5:5 + size])))
        rest = rest[5 + size:]
    return Programme((section[3] << 8) + section[4], pcr_pid, read_descriptors(body[4:4 + info]), entries)


class Transport:
    def __init__(self, path):
        with open(path, "rb") as file:
            data = file.read()
        self.packets = [data[at:at + 188] for at in range(0, len(data) - 187, 188)]
        assert all(packet[0] == 0x47 for packet in self.packets), path + ": a packet does not begin with 0x47"

    def of(self, pid):
        """The packets of a PID with their numbers."""
        for number, packet in enumerate(self.packets):
            if ((packet[1] & 0x1F) << 8) + packet[2] == pid:
                yield number, packet

    def section(self, pid, table):
        """The first section of a table that a pointer field of this PID points to; None if there is none."""
        gathered = None
        for _, packet in self.of(pid):
            payload = payload_of(packet)
            if packet[1] & 0x40:
                gathered = payload[1 + payload[0]:]
            elif gathered is not None:
                gathered += payload
            if gathered and len(gathered) >= 3:
                size = 3 + ((gathered[1] & 0x0F) << 8) + gathered[2]
                if gathered[0] == table and len(gathered) >= size:
                    return gathered[:size]
        return None

    def programmes(self):
        """The programmes that have a PMT, in the order of the PAT."""
        pat = self.section(0, 0x00)
        entries = [pat[at:at + 4] for at in range(8, len(pat) - 4, 4)]
        pids = [((entry[2] & 0x1F) << 8) + entry[3] for entry in entries if entry[0] or entry[1]]
        sections = [self.section(pid, 0x02) for pid in pids]
        return [read_pmt(section) for section in sections if section]

    def pcrs(self, pid):
        """The PCRs of a PID in ticks of 27 MHz, each after the number of its packet."""
        found = []
        for number, packet in self.of(pid):
            if packet[3] & 0x20 and packet[4] > 0 and packet[5] & 0x10:
                bits = int.from_bytes(packet[6:12], "big")
                found.append((number, (bits >> 15) * 300 + (bits & 0x1FF)))
        return found


def payload_of(packet):
    if not packet[3] & 0x10:
        return b""
    return packet[5 + packet[4]:] if packet[3] & 0x20 else packet[4:]
