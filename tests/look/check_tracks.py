# SPDX-License-Identifier: MIT
"""Tracks, subtitles and captions: lists, selections, and the effects of selections."""

from tracks import CAPTION, SUPERIMPOSE, is_subtitle

DUAL_SOUND_MODES = range(4)
ABSENT_ENCODING = 7  # AC-4, which no stream here has


def spelled(code):
    return code.to_bytes(3, "big").decode() if code else ""


def plain(record, findings):
    """A record without the texts of its languages, which are checked here."""
    if "languageCode" in record:
        findings.same("spelling of a language", record["languageCode"], spelled(record["language"]))
    return {name: value for name, value in record.items() if name != "languageCode"}


def check_list(name, answers, size, expected, findings):
    """`answers(index)` must return each expected record, and refuse an index after the last one."""
    findings.same(f"number of {name}", size, {"result": True, "size": len(expected)})
    for index, record in enumerate(expected):
        answer = answers(index)
        findings.same(f"{name} {index}", (answer[0], plain(answer[1], findings)), (True, record))
    findings.same(f"{name} past the end", answers(len(expected))[0], False)


def check_choice(name, choose, current, expected, findings):
    """After an entry is chosen, the getter reports it. An index after the last one is refused and changes nothing."""
    for index, record in reversed(list(enumerate(expected))):
        findings.same(f"choosing {name} {index}", choose(index), {"result": True})
        answer = plain(current(), findings)
        findings.same(f"current {name}", answer, {"result": True, "language": record["language"], "index": index})
    findings.same(f"choosing {name} past the end", choose(len(expected)), {"result": False})
    answer = current()
    findings.same(f"{name} after a refusal", (answer["result"], answer["index"]), (bool(expected), 0))


def best(records, language):
    return next((record for record in records if record["language"] == language), records[0] if records else None)


def check_audio(service, subject, findings):
    def record_of(index):
        answer = service.GetAudio(index)
        return answer["result"], answer["audio"]

    check_list("audio", record_of, service.SizeOfAudio(), subject.audio, findings)
    check_choice("audio", service.SetCurrentAudioByIndex, service.GetCurrentAudioInfo, subject.audio, findings)
    findings.same("audio -1", service.SetCurrentAudioByIndex(-1), {"result": False})
    for index, record in enumerate(subject.audio):
        service.SetCurrentAudioByIndex(index)
        check_related_settings(service, subject, record, findings)
    check_format(service, subject, findings)


def check_related_settings(service, subject, track, findings):
    """Checks the settings that follow the audio track: subtitles in its language are preferred."""
    findings.same("audio format", service.GetAudioFormat(), {"result": True, "encodeType": track["encoding"]})
    subtitle = best(subject.subtitles, track["language"])
    answer = service.GetPreferredHybridSBT()
    findings.same("preferred subtitle", answer["result"], subtitle is not None)
    if subtitle:
        findings.same("preferred subtitle", plain(answer["subtitle"], findings), subtitle)
        findings.same("language of the preferred subtitle", answer["language"], subtitle["language"])
    page = best([page for page in subject.teletext if is_subtitle(page)], track["language"])
    answer = service.GetPreferredTTXSubtitle()
    findings.same("preferred teletext subtitle", answer["result"], page is not None)
    if page:
        findings.same("preferred teletext subtitle", plain(answer["ttx"], findings), page)
    for mode in DUAL_SOUND_MODES:
        findings.same("choosing a sound", service.SetDigitalDualSound(mode), {"result": True})
        answer = service.GetDigitalDualSound()
        following = (mode + 1) % 4 if track["dualMono"] else mode
        findings.same("sounds", answer["result"], True)
        findings.same("current sound", answer["currentMode"], {"mode": mode, "available": track["dualMono"]})
        findings.same("next sound", answer["nextMode"], {"mode": following, "available": track["dualMono"]})
    findings.same("an unknown sound", service.SetDigitalDualSound(4), {"result": False})


def check_format(service, subject, findings):
    for record in subject.audio:
        findings.same("choosing a coding", service.SetAudioFormat(record["encoding"], False), {"result": True})
        findings.same("audio format", service.GetAudioFormat()["encodeType"], record["encoding"])
    before = service.GetCurrentAudioInfo()
    findings.same("choosing an absent coding", service.SetAudioFormat(ABSENT_ENCODING, False), {"result": False})
    findings.same("preferring an absent coding", service.SetAudioFormat(ABSENT_ENCODING, True), {"result": True})
    findings.same("audio after preferring an absent coding", service.GetCurrentAudioInfo(), before)


def check_subtitles(service, subject, findings):
    def page_of(index):
        answer = service.GetTTX(index)
        return answer["result"], answer["ttx"]

    def subtitle_of(index):
        answer = service.GetHybridSBT(index)
        findings.same("language in the answer and in its subtitle", answer["language"], answer["subtitle"]["language"])
        return answer["result"], answer["subtitle"]

    check_list("teletext", page_of, service.SizeOfTTX(), subject.teletext, findings)
    check_choice("teletext", service.SetCurrentTTX, service.GetCurrentTTX, subject.teletext, findings)
    check_list("subtitle", subtitle_of, service.SizeOfHybridSBT(), subject.subtitles, findings)
    check_choice("subtitle", service.SetCurrentHybridSBT, service.GetCurrentHybridSBT, subject.subtitles, findings)
    findings.same("hard of hearing", service.CheckHardOfHearingSBT(),
                  {"result": True, "exists": any(one["hardOfHearing"] for one in subject.subtitles)})


def check_isdb(service, subject, findings):
    for kind in (CAPTION, SUPERIMPOSE):
        expected = subject.isdb[kind]

        def text_of(index, kind=kind):
            answer = service.GetISDBText(kind, index)
            return answer["result"], answer["text"]

        name = f"ISDB text of type {kind}"
        check_list(name, text_of, service.SizeOfISDBText(kind), expected, findings)
        check_choice(name, lambda index, kind=kind: service.SetCurrentISDBText(kind, index),
                     lambda kind=kind: service.GetCurrentISDBText(kind), expected, findings)
        tags = [record["componentTag"] for record in expected]
        for index, record in reversed([(tags.index(record["componentTag"]), record) for record in expected]):
            findings.same(f"choosing {name} by tag", service.SetCurrentISDBTextService(kind, record["componentTag"]),
                          {"result": True})
            findings.same(f"current {name} by tag", service.GetCurrentISDBText(kind)["index"], index)
        findings.same(f"choosing {name} by an absent tag", service.SetCurrentISDBTextService(kind, 255), {"result": False})


def check_captions(service, subject, findings):
    selectable = bool(subject.isdb[CAPTION] or subject.captions)
    findings.same("caption mode", service.GetCaptionDataMode(), {"result": True, "mode": int(selectable)})
    findings.same("default caption service", service.GetDefaultCaptionService(),
                  {"result": bool(subject.captions), "service": next(iter(subject.captions), 0)})
    for number in range(1, 7):
        answer = service.GetCaptionLanguage(number)
        findings.same(f"caption service {number}", answer["result"], number in subject.captions)
        if number in subject.captions:
            findings.same(f"caption service {number}", (answer["language"], answer["koreanCode"]),
                          subject.captions[number])
