#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Adds to every PMT of a stream what ffmpeg does not write: caption services and component tags.

usage: dress.py STREAM.ts   (changed in place; each PMT has to fit into one packet)
"""

import sys

# caption_service_descriptor (ATSC A/65): English as digital service 1, Korean in its own coding as 4, Spanish in
# line 21
CAPTIONS = b"\x86\x13\xC3" + b"eng\xC1\x1F\xFF" + b"kor\xC4\xBF\xFF" + b"spa\x7E\x3F\xFF"


def crc(data):
    value = 0xFFFFFFFF
    for byte in data:
        value ^= byte << 24
        for _ in range(8):
            value = value << 1 & 0xFFFFFFFF ^ (0x04C11DB7 if value & 0x80000000 else 0)
    return value.to_bytes(4, "big")


def with_size(two_bytes, size):
    """The two bytes with `size` in the lower 12 bits. The upper 4 bits do not change."""
    return bytes([two_bytes[0] & 0xF0 | size >> 8, size & 0xFF])


def dress(section):
    info = (section[10] & 0x0F) << 8 | section[11]
    body = with_size(section[10:12], info + len(CAPTIONS)) + section[12:12 + info] + CAPTIONS
    rest, tag = section[12 + info:-4], 1
    while rest:
        size = (rest[3] & 0x0F) << 8 | rest[4]
        body += rest[:3] + with_size(rest[3:5], size + 3) + rest[5:5 + size] + bytes([0x52, 1, tag])
        rest, tag = rest[5 + size:], tag + 1
    whole = section[3:10] + body
    whole = section[:1] + with_size(section[1:3], len(whole) + 4) + whole
    return whole + crc(whole)


def main():
    with open(sys.argv[1], "r+b") as file:
        data = bytearray(file.read())
        for at in range(0, len(data), 188):
            packet = data[at:at + 188]
            section = packet[5:]
            if packet[1] & 0x40 and packet[3] & 0x30 == 0x10 and packet[4:6] == b"\0\x02":
                size = 3 + ((section[1] & 0x0F) << 8 | section[2])
                data[at + 5:at + 188] = dress(bytes(section[:size])).ljust(183, b"\xFF")
        assert len(data) % 188 == 0, "a PMT is too long"
        file.seek(0)
        file.write(data)


if __name__ == "__main__":
    main()
