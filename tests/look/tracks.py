# SPDX-License-Identifier: MIT
"""The records that a service must return for a programme, from its PMT and from ffprobe."""

MPEG, AC3, EAC3, AAC, LATM, DTS = 1, 2, 3, 4, 5, 6
ENCODINGS = {"mp1": MPEG, "mp2": MPEG, "mp3": MPEG, "ac3": AC3, "eac3": EAC3, "aac": AAC, "aac_latm": LATM,
             "dts": DTS}
DVB, TELETEXT = 1, 2
CAPTION, SUPERIMPOSE = 0, 1


def language(code):
    """The number of a language; 0 if it is not a code of three letters."""
    code = code.decode("latin-1").lower() if isinstance(code, bytes) else code.lower()
    return int.from_bytes(code.encode(), "big") if len(code) == 3 and code.isascii() and code.isalpha() else 0


def pieces(data, size):
    return [data[at:at + size] for at in range(0, len(data) - size + 1, size)]


def _language_of_audio(entry):
    for _, data in entry.all(0x7F):
        if data[0] == 0x06 and data[1] & 1:  # supplementary audio
            return language(data[2:5])
    names = [piece for _, data in entry.all(0x0A) for piece in pieces(data, 4)]
    return language(names[0][:3]) if names else 0


def _is_dual_mono(entry, encoding, packets):
    """Whether a track carries two sounds: by a frame of MPEG audio, or by two languages if the track has no packets."""
    if encoding == MPEG and packets:
        return packets[-1].payload[3] >> 6 == 2
    return not packets and len([piece for _, data in entry.all(0x0A) for piece in pieces(data, 4)]) == 2


def audio(programme, probe, packets_of):
    records = []
    for entry in programme.entries:
        encoding = ENCODINGS.get(probe.streams[entry.pid].get("codec_name"))
        if not encoding:
            continue
        names = [piece for _, data in entry.all(0x0A) for piece in pieces(data, 4)]
        told = encoding not in (AAC, LATM)  # frames of AAC do not contain their bit rate
        records.append({
            "language": _language_of_audio(entry), "encoding": encoding, "pid": entry.pid,
            "componentTag": entry.component_tag, "audioType": names[0][3] if names else 0,
            "sampleRate": probe.number(entry.pid, "sample_rate"),
            "bitRate": probe.number(entry.pid, "bit_rate") if told else 0,
            "channels": probe.number(entry.pid, "channels"),
            "dualMono": int(_is_dual_mono(entry, encoding, packets_of(entry.pid))),
            "streamType": entry.stream_type})
    return records


def teletext(programme):
    return [{"language": language(page[:3]), "pid": entry.pid, "magazine": page[3] & 7 or 8, "page": page[4],
             "type": page[3] >> 3, "componentTag": entry.component_tag}
            for entry in programme.entries if entry.stream_type == 0x06
            for _, data in entry.all(0x56, 0x46) for page in pieces(data, 5)]


def is_subtitle(page):
    return page["type"] in (2, 5)


def subtitles(programme):
    """The DVB subtitles, then the teletext pages that carry subtitles."""
    records = [{"language": language(one[:3]), "kind": DVB, "pid": entry.pid,
                "compositionPage": int.from_bytes(one[4:6], "big"),
                "ancillaryPage": int.from_bytes(one[6:8], "big"), "type": one[3],
                "hardOfHearing": int(one[3] >> 4 == 2), "magazine": 0, "page": 0,
                "componentTag": entry.component_tag}
               for entry in programme.entries if entry.stream_type == 0x06
               for _, data in entry.all(0x59) for one in pieces(data, 8)]
    for page in filter(is_subtitle, teletext(programme)):
        records.append({**page, "kind": TELETEXT, "compositionPage": 0, "ancillaryPage": 0,
                        "hardOfHearing": int(page["type"] == 5)})
    return records


def arib_languages(packets):
    """The languages that the latest caption management data lists, with their tags."""
    found = [(0, 0)]
    for packet in packets:
        group = packet.payload[3 + (packet.payload[2] & 0x0F):]
        if group[0] >> 2 not in (0x00, 0x20):
            continue  # text, not management
        data = group[5:5 + int.from_bytes(group[3:5], "big")]
        data = data[6:] if data[0] >> 6 == 2 else data[1:]
        found, count, data = [], data[0], data[1:]
        for _ in range(count):
            at = 2 if data[0] & 0x0F in (0x0C, 0x0D, 0x0E) else 1
            found.append((language(data[at:at + 3]), data[0] >> 5))
            data = data[at + 4:]
    return found


def isdb_texts(programme, kind, packets_of):
    """The ARIB captions or superimposed texts: a record for each language of each elementary stream."""
    records = []
    for entry in programme.entries:
        component = entry.first(0xFD)
        if entry.stream_type != 0x06 or component is None or component[:2] not in (b"\0\x08", b"\0\x12"):
            continue
        tag = entry.component_tag
        if (0x38 <= tag <= 0x3F or tag == 0x88) == (kind == SUPERIMPOSE):
            records += [{"language": code, "type": kind, "pid": entry.pid, "languageTag": number,
                         "dataComponent": int.from_bytes(component[:2], "big"), "componentTag": tag}
                        for code, number in arib_languages(packets_of(entry.pid))]
    return records


def caption_services(programme):
    """The digital caption services by number: the language, and "1" for text in Korean coding, otherwise "0"."""
    found = {}
    everywhere = programme.descriptors + [one for entry in programme.entries for one in entry.descriptors]
    for tag, data in everywhere:
        if tag != 0x86:
            continue
        for piece in pieces(data[1:], 6)[:data[0] & 0x1F]:
            if piece[3] & 0x80:
                found.setdefault(piece[3] & 0x3F, (language(piece[:3]), "1" if piece[4] & 0x20 else "0"))
    return found
