# SPDX-License-Identifier: MIT
"""The state of a television, and its changes."""
import dataclasses
from typing import Generic, TypeVar

from ._programme import Programme
from ._types import AudioTrack, IsdbText, SourceState, Subtitle, TeletextPage

__all__ = ["AudioChange", "AudioTracksChange", "CaptionChange", "CaptionsChange", "ProgrammeChange",
           "ProgrammeLockChange", "ServiceLockChange", "SourceChange", "StateChange", "StateEvent", "SubtitleChange",
           "SubtitlesChange", "SuperimposeChange", "SuperimposesChange", "TeletextPageChange", "TeletextPagesChange",
           "TelevisionState"]

T = TypeVar("T")


@dataclasses.dataclass(frozen=True)
class TelevisionState:
    """The state of a television. A tuple is empty, and any other value None, if the service refuses to report it or has
    not answered yet.
    """

    source: SourceState | None  #: state of the source that is played
    audio_tracks: tuple[AudioTrack, ...]  #: the audio tracks, in the order of broadcast.get_audio
    subtitles: tuple[Subtitle, ...]  #: the subtitles, in the order of broadcast.get_hybrid_sbt
    pages: tuple[TeletextPage, ...]  #: the teletext pages, in the order of broadcast.get_ttx
    captions: tuple[IsdbText, ...]  #: the ISDB captions, in the order of broadcast.get_isdb_text
    superimposes: tuple[IsdbText, ...]  #: the ISDB superimposed texts, in the same order
    audio: int | None  #: selected element of `audio_tracks`
    subtitle: int | None  #: selected element of `subtitles`
    page: int | None  #: selected element of `pages`
    caption: int | None  #: selected element of `captions`
    superimpose: int | None  #: selected element of `superimposes`
    programme_lock: bool | None  #: whether the present programme is locked because of its rating
    service_lock: bool | None  #: whether the present service is locked
    present: Programme | None  #: the programme that is on; needs the `service_id` of watch()


@dataclasses.dataclass(frozen=True)
class StateChange(Generic[T]):
    """A change of one value of TelevisionState. There is a class for each value, such as SourceChange."""

    before: T
    after: T


class SourceChange(StateChange[SourceState | None]):
    """A change of TelevisionState.source."""


class AudioTracksChange(StateChange[tuple[AudioTrack, ...]]):
    """A change of TelevisionState.audio_tracks."""


class SubtitlesChange(StateChange[tuple[Subtitle, ...]]):
    """A change of TelevisionState.subtitles."""


class TeletextPagesChange(StateChange[tuple[TeletextPage, ...]]):
    """A change of TelevisionState.pages."""


class CaptionsChange(StateChange[tuple[IsdbText, ...]]):
    """A change of TelevisionState.captions."""


class SuperimposesChange(StateChange[tuple[IsdbText, ...]]):
    """A change of TelevisionState.superimposes."""


class AudioChange(StateChange[int | None]):
    """A change of TelevisionState.audio."""


class SubtitleChange(StateChange[int | None]):
    """A change of TelevisionState.subtitle."""


class TeletextPageChange(StateChange[int | None]):
    """A change of TelevisionState.page."""


class CaptionChange(StateChange[int | None]):
    """A change of TelevisionState.caption."""


class SuperimposeChange(StateChange[int | None]):
    """A change of TelevisionState.superimpose."""


class ProgrammeLockChange(StateChange[bool | None]):
    """A change of TelevisionState.programme_lock."""


class ServiceLockChange(StateChange[bool | None]):
    """A change of TelevisionState.service_lock."""


class ProgrammeChange(StateChange[Programme | None]):
    """A change of TelevisionState.present."""


#: What a StateWatcher reports: the whole state first, then one event for each value that has changed.
StateEvent = (TelevisionState | SourceChange | AudioTracksChange | SubtitlesChange | TeletextPagesChange |
              CaptionsChange | SuperimposesChange | AudioChange | SubtitleChange | TeletextPageChange |
              CaptionChange | SuperimposeChange | ProgrammeLockChange | ServiceLockChange | ProgrammeChange)
