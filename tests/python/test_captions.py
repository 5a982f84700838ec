# SPDX-License-Identifier: MIT
"""Captions as text."""
import asyncio
import dataclasses
import threading

import pytest

import zviptv
from zviptv import Caption, CaptionKind, CaptionLine, CaptionRun, Colour

TELETEXT, ARIB = 0x104, 0x105
LANGUAGES = {888: "eng", 889: "deu"}
WHITE, BLACK = Colour(255, 255, 255), Colour(0, 0, 0)
WORDS = {"eng": {"One", "Two", "Three", "Four", "Five"}, "deu": {"Eins", "Zwei", "Drei", "Vier", "Fünf"},
         "jpn": {"いち", "に", "さん", "よん", "ご"}}


@pytest.fixture(autouse=True)
def fast(television):
    """A caption comes every half second."""
    television.speed(4)


def has_language(caption):
    """Whether the caption has text and a language. The first ARIB captions may precede their language in the stream."""
    return not caption.is_empty and caption.language != ""


def check(caption):
    """Checks a caption of the sample stream."""
    kind, page, pid = {"eng": (CaptionKind.TELETEXT, 888, TELETEXT), "deu": (CaptionKind.TELETEXT, 889, TELETEXT),
                       "jpn": (CaptionKind.ARIB_CAPTION, 0, ARIB)}[caption.language]
    assert (caption.kind, caption.page, caption.pid) == (kind, page, pid)
    assert 0 <= caption.pts < 2**33 and caption.text in WORDS[caption.language]
    look = WHITE, (None if kind is CaptionKind.ARIB_CAPTION else BLACK)
    assert [(run.text, (run.foreground, run.background)) for line in caption.lines for run in line.runs] == [(caption.text, look)]


def test_teletext_and_arib_captions(tv):
    found = set()
    with tv.caption_texts(languages=LANGUAGES) as captions:
        while found != {"eng", "deu", "jpn"}:
            caption = captions.get(20)
            if has_language(caption):
                check(caption)
                found.add(caption.language)
    assert captions.counters.packets > 0 and captions.counters.gaps == 0


def test_captions_of_a_page(tv):
    with tv.caption_texts(pages=889) as captions:
        found = [captions.get(20) for _ in range(4)]
    assert {caption.page for caption in found if caption.kind is CaptionKind.TELETEXT} == {889}
    assert {caption.language for caption in found if caption.kind is CaptionKind.TELETEXT} == {""}


def test_captions_by_a_coroutine(television):
    async def main():
        async with zviptv.aio.Television() as tv:
            async for caption in tv.caption_texts(pages=[888, 889], languages=LANGUAGES):
                if has_language(caption):
                    check(caption)
                    break
            await asyncio.to_thread(television.expect, "requestPESCB", on=False)

    asyncio.run(main(), debug=True)


def texts(decoder, items):
    """Language, PID and text of the captions with a language."""
    return {(caption.language, caption.pid, caption.text) for item in items for caption in decoder.decode(item)
            if has_language(caption)}


def test_a_decoder_takes_packets_and_caption_data(tv):
    with tv.pes(kind=[zviptv.PesKind.TELETEXT, zviptv.PesKind.CAPTION]) as packets, tv.captions() as data:
        of_packets, of_data = zviptv.CaptionDecoder(None, LANGUAGES), zviptv.CaptionDecoder(languages=LANGUAGES)
        first, second = set(), set()
        while {language for language, *_ in first} != set(WORDS) or {language for language, *_ in second} != set(WORDS):
            first |= texts(of_packets, [packets.get(20)])
            second |= texts(of_data, [data.get(20)])
    assert {(language, pid) for language, pid, _ in first} == {("eng", TELETEXT), ("deu", TELETEXT), ("jpn", ARIB)}
    assert {pid for _, pid, _ in second} == {None}


def test_other_packets_have_no_captions(tv):
    decoder = zviptv.CaptionDecoder()
    with tv.pes(kind=zviptv.PesKind.AUDIO) as packets:
        assert decoder.decode(packets.get(10)) == []
    with pytest.raises(TypeError):
        decoder.decode(b"bytes")


def test_a_decoder_for_each_thread(tv):
    found = []

    def read():
        decoder = zviptv.CaptionDecoder(languages=LANGUAGES)
        with tv.pes(kind=zviptv.PesKind.TELETEXT) as packets:
            while not (new := texts(decoder, [packets.get(20)])):
                pass
            found.append(new)

    threads = [threading.Thread(target=read) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(found) == 4


def test_the_library_has_both_decoders():
    assert zviptv.CaptionDecoder.decodes_teletext() is True and zviptv.CaptionDecoder.decodes_arib() is True


@pytest.mark.parametrize(("arguments", "error", "text"), [
    ({"pages": 99}, ValueError, "pages: 99 is not in the range 100 to 899"),
    ({"pages": [888, 900]}, ValueError, "pages: 900 is not in the range"),
    ({"pages": "888"}, TypeError, "pages: expected an int, got str"),
    ({"pages": 1.5}, TypeError, "not iterable"),
    ({"languages": {"888": "eng"}}, TypeError, "languages: expected an int, got str"),
    ({"languages": {888: b"eng"}}, TypeError, "languages: expected a str, got bytes"),
    ({"languages": [888]}, TypeError, "languages: expected a mapping, got list"),
])
def test_wrong_pages_are_refused(tv, arguments, error, text):
    for make in (zviptv.CaptionDecoder, tv.caption_texts):
        with pytest.raises(error, match=text):
            make(**arguments)


def test_captions_are_values():
    run = CaptionRun("One", WHITE, BLACK, True, False, False, False)
    caption = Caption(CaptionKind.TELETEXT, 888, "eng", TELETEXT, 90000, (CaptionLine((run, run)), CaptionLine((run,))))
    assert caption.text == "OneOne\nOne" and not caption.is_empty and hash(caption) == hash(caption)
    assert Caption(CaptionKind.TELETEXT, 888, "", None, None, ()).is_empty


def test_the_languages_of_pages_are_those_of_the_teletext_subtitles(tv):
    subtitles = tv.broadcast.subtitles()
    assert zviptv.page_languages(subtitles) == LANGUAGES
    other = dataclasses.replace(subtitles[1], magazine=1, page=0x05, language="fra")
    assert zviptv.page_languages([other, dataclasses.replace(other, page=0x5A)]) == {105: "fra"}
