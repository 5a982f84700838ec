# SPDX-License-Identifier: MIT
"""A transport stream with one video PID whose PES packets have 64 KiB of payload, each repeating one byte."""

PACKET = 188
PMT_PID, VIDEO_PID = 0x1000, 0x100
PAYLOAD = 64 * 1024
PERIOD = 90000 // 20  # twenty PES packets a second


def crc32(data):
    crc = 0xFFFFFFFF
    for byte in data:
        crc ^= byte << 24
        for _ in range(8):
            crc = (crc << 1) ^ (0x04C11DB7 if crc & 0x80000000 else 0)
        crc &= 0xFFFFFFFF
    return crc


def section(table, extension, body):
    length = len(body) + 9
    head = bytes([table, 0xB0 | length >> 8, length & 0xFF]) + extension.to_bytes(2, "big") + bytes([0xC1, 0, 0])
    return head + body + crc32(head + body).to_bytes(4, "big")


def adaptation_field(size, pcr):
    """`size` bytes: the clock, if there is one, and stuffing."""
    content = b"\x10" + pcr if pcr else b"\0"
    return bytes([size - 1]) + content.ljust(size - 1, b"\xFF")[:size - 1]


class Stream:
    def __init__(self):
        self.counters = {}
        self.packets = []

    def add(self, pid, payload, start=False, pcr=b""):
        """Writes one packet with as much of the payload as fits. Returns that number of bytes."""
        size = max(PACKET - 4 - len(payload), 8 if pcr else 0)
        field = adaptation_field(size, pcr) if size else b""
        counter = self.counters.get(pid, 0)
        self.counters[pid] = (counter + 1) % 16
        header = bytes([0x47, (0x40 if start else 0) | pid >> 8, pid & 0xFF, (0x30 if size else 0x10) | counter])
        self.packets.append(header + field + payload[:PACKET - 4 - size])
        return PACKET - 4 - size

    def tables(self):
        pat = section(0, 1, (1).to_bytes(2, "big") + (0xE000 | PMT_PID).to_bytes(2, "big"))
        pmt = section(2, 1, (0xE000 | VIDEO_PID).to_bytes(2, "big") + b"\xF0\0"
                      + b"\x02" + (0xE000 | VIDEO_PID).to_bytes(2, "big") + b"\xF0\0")
        for pid, table in ((0, pat), (PMT_PID, pmt)):
            self.add(pid, (b"\0" + table).ljust(PACKET - 4, b"\xFF"), True)

    def pes(self, clock, fill):
        pts = clock + PERIOD
        stamp = bytes([0x21 | (pts >> 29 & 0x0E), pts >> 22 & 0xFF, 0x01 | (pts >> 14 & 0xFE), pts >> 7 & 0xFF,
                       0x01 | (pts << 1 & 0xFE)])
        data = b"\0\0\x01\xE0\0\0\x80\x80\x05" + stamp + bytes([fill]) * PAYLOAD
        at = self.add(VIDEO_PID, data, True, (clock << 15 | 0x7E00).to_bytes(6, "big"))
        while at < len(data):
            at += self.add(VIDEO_PID, data[at:])


def write(path, seconds):
    stream = Stream()
    for number in range(seconds * 20):
        if number % 4 == 0:
            stream.tables()
        stream.pes(90000 + number * PERIOD, number % 255 + 1)
    with open(path, "wb") as file:
        file.write(b"".join(stream.packets))
