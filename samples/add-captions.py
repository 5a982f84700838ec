#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Adds teletext and an ARIB caption to a transport stream, for make-sample.sh: ffmpeg makes neither.

usage: add-captions.py IN.ts OUT.ts

Teletext (ETS 300 706 in EN 300 472) holds page 100, English subtitles on page 888, German ones on 889; the
ARIB caption (STD-B24) is Japanese. All count from one to five, together with the stream's DVB subtitles.
"""
import sys
from pathlib import Path

PMT_PID, PCR_PID, TELETEXT_PID, ARIB_PID = 0x1000, 0x100, 0x104, 0x105
START = 133200                  # PTS of the first picture; times below are seconds after it
LEAD = 0.4                      # packets come so much ahead of their time

WORDS = [("One", "Eins", "いち"), ("Two", "Zwei", "に"), ("Three", "Drei", "さん"),
         ("Four", "Vier", "よん"), ("Five", "Fünf", "ご")]
FRONT_PAGE = ["", "  ZV Sample One", "", "  This is page 100.", "", "  888  Subtitles in English",
              "  889  Untertitel auf Deutsch"]
ENGLISH, GERMAN = 0, 1          # national character sets
CRC16, CRC32 = (2, 0x11021, 0), (4, 0x104C11DB7, 0xFFFFFFFF)   # bytes, polynomial, start


def checksum(data, size, polynomial, start):
    """A cyclic redundancy check: CRC16 or CRC32."""
    crc = start
    for byte in data:
        crc ^= byte << 8 * size - 8
        for _ in range(8):
            crc = crc << 1 ^ (polynomial if crc >> 8 * size - 1 else 0)
    return crc.to_bytes(size, "big")


# Teletext sends the least significant bit first: teletext_pes turns the bytes around.

def hamming(nibble):
    d1, d2, d3, d4 = (nibble >> i & 1 for i in range(4))
    bits = [1 ^ d1 ^ d3 ^ d4, d1, 1 ^ d1 ^ d2 ^ d4, d2, 1 ^ d1 ^ d2 ^ d3, d3, 0, d4]
    bits[6] = 1 ^ sum(bits) & 1                         # odd parity over all
    return sum(bit << i for i, bit in enumerate(bits))


def characters(text, size):
    german = str.maketrans("äöüßÄÖÜ", "{|}~[\\]")
    codes = text.translate(german).ljust(size).encode("ascii")[:size]
    return bytes(code | (bin(code).count("1") + 1 & 1) << 7 for code in codes)      # odd parity


def teletext_packet(magazine, row, data):
    address = magazine % 8 | row << 3
    return bytes([hamming(address & 15), hamming(address >> 4)]) + data


def header(page, charset, subtitle):
    """Erases the page; a subtitle's header is not displayed."""
    erase, is_subtitle, hide = 8, 8 * subtitle, subtitle
    nibbles = [page & 15, page >> 4 & 15, 0, erase, 0, is_subtitle, hide, charset << 3]
    data = bytes(hamming(nibble) for nibble in nibbles) + characters("ZV Sample One", 32)
    return teletext_packet(page >> 8, 0, data)


def rows(page, texts, first=1):
    lines = [(row, text) for row, text in enumerate(texts, first) if text]
    return [teletext_packet(page >> 8, row, characters(text, 40)) for row, text in lines]


def end_of_pages(magazine):
    return teletext_packet(magazine, 0, bytes(map(hamming, (15, 15, 0, 0, 0, 0, 0, 0))) + characters("", 32))


def front_page():
    return [header(0x100, ENGLISH, False)] + rows(0x100, FRONT_PAGE) + [end_of_pages(1)]


def subtitle_page(page, charset, text):
    boxed = "\r\v\v" + text + "\n\n"                    # double height, box begins, box ends
    return [header(page, charset, True)] + rows(page, [boxed.center(40)] if text else [], first=22)


def subtitle_pages(english, german):
    return subtitle_page(0x888, ENGLISH, english) + subtitle_page(0x889, GERMAN, german) + [end_of_pages(8)]


def teletext_pes(pts, unit_id, packets):
    mirrored = bytes(int(f"{byte:08b}"[::-1], 2) for byte in range(256))
    units = b""
    for i, packet in enumerate(packets):
        line = 0xC0 | 0x20 | 7 + i                      # first field, lines 7 to 22
        units += bytes([unit_id, 44, line, 0xE4]) + packet.translate(mirrored)
    while (46 + len(units)) % 184:
        units += bytes([0xFF, 44]) + 44 * b"\xFF"       # stuffing: whole transport packets
    return pes(pts, b"\x10" + units, header_size=36)


# ARIB captions

def arib_pes(pts, group, data):
    group = bytes([group << 2, 0, 0]) + len(data).to_bytes(2, "big") + data
    return pes(pts, b"\x80\xFF\xF0" + group + checksum(group, *CRC16), header_size=5)


def management():
    """One language, Japanese, shown when received, in horizontal lines on a plane of 960x540."""
    return bytes([0x3F, 1, 0x10]) + b"jpn" + b"\x80" + bytes(3)


def statement(text):
    hiragana = b"".join(bytes([char.encode("euc_jp")[1]]) for char in text)     # the set above 0xA0
    body = b"\x0C" + (b"\x9B\x37\x20\x53\x1C\x47\x50" + hiragana if text else b"")   # clear, format, position
    unit = b"\x1F\x20" + len(body).to_bytes(3, "big") + body
    return b"\x3F" + len(unit).to_bytes(3, "big") + unit


# Transport stream

def pes(pts, payload, header_size):
    stamp = [0x21 | pts >> 29 & 14, pts >> 22 & 255, pts >> 14 & 255 | 1, pts >> 7 & 255, pts << 1 & 255 | 1]
    rest = bytes([0x84, 0x80, header_size]) + bytes(stamp).ljust(header_size, b"\xFF") + payload
    return b"\0\0\1\xBD" + len(rest).to_bytes(2, "big") + rest


def ts_packets(pid, payload, counter):
    """The packets of a PES packet, the first of them with this continuity counter."""
    result = []
    for start in range(0, len(payload), 184):
        piece = payload[start:start + 184]
        head = bytes([0x47, (0 if start else 0x40) | pid >> 8, pid & 0xFF])
        gap = 184 - len(piece)
        stuffing = b"" if gap == 0 else b"\0" if gap == 1 else bytes([gap - 1, 0]).ljust(gap, b"\xFF")
        control = (0x30 if gap else 0x10) | (counter + len(result)) % 16
        result.append(head + bytes([control]) + stuffing + piece)
    return result


def descriptor(tag, data):
    return bytes([tag, len(data)]) + data


def stream_entry(pid, descriptors):
    size = (0xF000 | len(descriptors)).to_bytes(2, "big")
    return bytes([6, 0xE0 | pid >> 8, pid & 0xFF]) + size + descriptors


def teletext_page(language, kind, page):
    return language + bytes([kind << 3 | page >> 8 & 7, page & 0xFF])


def announce(packet):
    """The packet of the PMT, with both streams at its end."""
    initial, subtitle, hard_of_hearing = 1, 2, 5
    pages = (teletext_page(b"eng", initial, 0x100) + teletext_page(b"eng", subtitle, 0x888)
             + teletext_page(b"deu", hard_of_hearing, 0x889))
    end = 8 + (int.from_bytes(packet[6:8], "big") & 0xFFF) - 4
    entries = stream_entry(TELETEXT_PID, descriptor(0x56, pages)) + stream_entry(
        ARIB_PID, descriptor(0x52, b"\x30") + descriptor(0xFD, b"\x00\x08\x3D"))
    rest = packet[8:end] + entries
    section = packet[5:6] + (0xB000 | len(rest) + 4).to_bytes(2, "big") + rest
    return (packet[:5] + section + checksum(section, *CRC32)).ljust(188, b"\xFF")


def schedule():
    """(PTS, PID, PES packet), ordered by time."""
    events = []

    def add(second, teletext, arib):
        pts = START + int(second * 90000)
        events.append((pts, TELETEXT_PID, teletext_pes(pts, *teletext)))
        events.append((pts, ARIB_PID, arib_pes(pts, *arib)))

    for second in (0.5, 3.5, 6.5, 9.5):
        add(second, (2, front_page()), (0, management()))
    for i, (english, german, japanese) in enumerate(WORDS):
        add(1 + 2 * i, (3, subtitle_pages(english, german)), (1, statement(japanese)))
        add(2 + 2 * i, (3, subtitle_pages("", "")), (1, statement("")))
    return sorted(events)


def pcr_of(packet):
    """The clock in 90 kHz ticks; None in a packet without it."""
    has_pcr = packet[3] & 0x20 and packet[4] and packet[5] & 0x10
    return int.from_bytes(packet[6:10], "big") << 1 | packet[10] >> 7 if has_pcr else None


def multiplex(stream):
    waiting = schedule()
    counters = {TELETEXT_PID: 0, ARIB_PID: 0}
    for start in range(0, len(stream), 188):
        packet = stream[start:start + 188]
        pid = int.from_bytes(packet[1:3], "big") & 0x1FFF
        yield announce(packet) if pid == PMT_PID else packet
        pcr = pcr_of(packet) if pid == PCR_PID else None
        while pcr is not None and waiting and waiting[0][0] - LEAD * 90000 <= pcr:
            _, own_pid, pes_packet = waiting.pop(0)
            packets = ts_packets(own_pid, pes_packet, counters[own_pid])
            counters[own_pid] += len(packets)
            yield from packets
    if waiting:
        sys.exit("add-captions.py: the stream is too short")


if __name__ == "__main__":
    Path(sys.argv[2]).write_bytes(b"".join(multiplex(Path(sys.argv[1]).read_bytes())))
