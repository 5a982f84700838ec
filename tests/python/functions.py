# SPDX-License-Identifier: MIT
"""All functions with arguments, and what the simulator answers with the sample stream and guide."""
import datetime

import zviptv

START = datetime.datetime(2026, 3, 28, 22, 0, tzinfo=datetime.timezone.utc)  # 1774735200
HOURS = datetime.timedelta(hours=4)
ENG = zviptv.Subtitle(language="eng", kind=zviptv.SubtitleKind.DVB, pid=0x103, composition_page=1, ancillary_page=1,
                      type=0x10, hard_of_hearing=0, magazine=0, page=0, component_tag=0)
TELETEXT_888 = zviptv.TeletextPage(language="eng", pid=0x104, magazine=8, page=0x88, type=2, component_tag=0)


def kind(expected):
    """Any value of a class."""
    return lambda value: type(value) is expected


def film(value):
    """The programme that is on at 1774735200."""
    return (value.title, value.start, value.end, value.genres, value.rating) == (
        "Cellar Door", datetime.datetime(2026, 3, 28, 21, 30, tzinfo=datetime.timezone.utc),
        datetime.datetime(2026, 3, 29, 0, 30, tzinfo=datetime.timezone.utc), ("Movie", "Horror"),
        zviptv.ProgrammeRating("MPAA", "R", 17))


REFUSED = object()  # the stream has no such captions, and nothing is locked

# endpoint, function, arguments, and a check of the value or None for functions that return nothing
FUNCTIONS = [
    ("player", "set_current_audio_by_index", (1,), None),
    ("player", "set_audio_format", (zviptv.AudioCoding.MPEG, True), None),
    ("player", "set_digital_dual_sound", (zviptv.MultiSound.STEREO,), None),
    ("player", "set_current_ttx", (0,), None),
    ("player", "set_current_hybrid_sbt", (2,), None),
    ("player", "get_stc_count", (), lambda value: value > 0),
    ("player", "set_current_isdb_text", (zviptv.IsdbTextKind.CAPTION, 0), None),
    ("player", "set_current_isdb_text_service", (zviptv.IsdbTextKind.CAPTION, 0x30), None),
    ("player", "get_caption_data_mode", (), lambda value: value is zviptv.CaptionMode.SELECTABLE),
    ("player", "get_default_caption_service", (), REFUSED),
    ("player", "mute_audio", (True,), None),
    ("player", "mute_video", (False,), None),
    ("player", "get_resolution", (), lambda value: (value.resolution_class, value.resolution.width, value.resolution.height)
     == (zviptv.ResolutionClass.SD, 320, 180)),
    ("player", "set_app_id", ("org.example.test",), None),
    ("player", "get_source_state", (), lambda value: value is zviptv.SourceState.PLAYING),
    ("player", "get_first_pts", (), lambda value: value.pts > 0 and value.time_base_denominator == 90000
     and value.current_time > datetime.timedelta(0)),
    ("broadcast", "get_audio_format", (), lambda value: value is zviptv.AudioCoding.MPEG),
    ("broadcast", "get_digital_dual_sound", (), kind(zviptv.DigitalDualSoundAnswer)),
    ("broadcast", "get_current_audio_info", (), lambda value: value == zviptv.CurrentAudioInfoAnswer("eng", 0)),
    ("broadcast", "size_of_audio", (), lambda value: value == 2),
    ("broadcast", "audio_tracks", (), lambda value: [(t.language, t.pid) for t in value] == [("eng", 0x101), ("deu", 0x102)]),
    ("broadcast", "get_audio", (1,), lambda value: (value.language, value.pid, value.encoding)
     == ("deu", 0x102, zviptv.AudioCoding.MPEG)),
    ("broadcast", "size_of_ttx", (), lambda value: value > 0),
    ("broadcast", "teletext_pages", (), lambda value: TELETEXT_888 in value),
    ("broadcast", "get_ttx", (0,), kind(zviptv.TeletextPage)),
    ("broadcast", "get_current_ttx", (), kind(zviptv.CurrentTTXAnswer)),
    ("broadcast", "size_of_hybrid_sbt", (), lambda value: value == 3),
    ("broadcast", "subtitles", (), lambda value: len(value) == 3 and value[0] == ENG),
    ("broadcast", "get_hybrid_sbt", (0,), lambda value: value == zviptv.HybridSBTAnswer("eng", ENG)),
    ("broadcast", "check_hard_of_hearing_sbt", (), lambda value: value is True),
    ("broadcast", "get_preferred_hybrid_sbt", (), kind(zviptv.PreferredHybridSBTAnswer)),
    ("broadcast", "get_current_hybrid_sbt", (), kind(zviptv.CurrentHybridSBTAnswer)),
    ("broadcast", "get_preferred_ttx_subtitle", (), lambda value: value == TELETEXT_888),
    ("broadcast", "size_of_isdb_text", (zviptv.IsdbTextKind.CAPTION,), lambda value: value == 1),
    ("broadcast", "isdb_texts", (zviptv.IsdbTextKind.CAPTION,),
     lambda value: [(t.type, t.component_tag, t.pid) for t in value] == [(zviptv.IsdbTextKind.CAPTION, 0x30, 0x105)]),
    ("broadcast", "get_isdb_text", (zviptv.IsdbTextKind.CAPTION, 0), kind(zviptv.IsdbText)),
    ("broadcast", "get_current_isdb_text", (zviptv.IsdbTextKind.CAPTION,), kind(zviptv.CurrentISDBTextAnswer)),
    ("broadcast", "get_caption_language", (zviptv.CaptionService.SERVICE1,), REFUSED),
    ("broadcast", "get_rating_info", (), lambda value: value == [zviptv.RatingLevel(region=0, dimension=0, value=17)]),
    ("broadcast", "set_unlocked_info", (zviptv.ParentalLock.UNLOCKED_PROGRAMME,), None),
    ("broadcast", "get_rating_lock_state", (), lambda value: value is False),
    ("broadcast", "un_mute_by_rating_pin", (), REFUSED),
    ("broadcast", "set_unlocked_info_when_factory_mode", (True,), None),
    ("broadcast", "flag_service_locked", (), lambda value: value is False),
    ("guide", "exist_xml_for_ipg", (), lambda value: value is True),
    ("guide", "get_program_list_size", (1, START, HOURS), lambda value: value == 3),
    ("guide", "get_program", (0,), kind(zviptv.Programme)),
    ("guide", "get_program_ipg", (zviptv.ProgrammeId(1, 4), zviptv.Neighbour.NEXT), lambda value: value.title == "Night Trains"),
    ("guide", "get_present_program", (1,), film),
    ("guide", "find_program", (1, 4), film),
    ("guide", "get_rating", (4,), lambda value: value == zviptv.ProgrammeRating("MPAA", "R", 17)),
    ("guide", "get_genre", (4,), lambda value: value == ["Movie", "Horror"]),
    ("guide", "get_program_list", (1, START, HOURS),
     lambda value: [p.title for p in value] == ["Cellar Door", "Night Trains", "Ambient Landscapes"]),
    ("guide", "clone_usb_to_tv", ("/nowhere/guide.xml",), lambda value: value is False),
]
