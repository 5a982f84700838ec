# SPDX-License-Identifier: MIT
"""Captions as text."""
import dataclasses
import enum
from collections.abc import Iterable

from ._types import Subtitle, SubtitleKind

__all__ = ["Caption", "CaptionKind", "CaptionLine", "CaptionRun", "Colour", "page_languages"]


class CaptionKind(enum.Enum):
    """What a caption was broadcast as."""

    TELETEXT = "teletext"  #: a page of EBU teletext
    ARIB_CAPTION = "caption"  #: an ARIB caption
    ARIB_SUPERIMPOSE = "superimpose"  #: ARIB superimposed text


@dataclasses.dataclass(frozen=True)
class Colour:
    """A colour of red, green and blue, each 0 to 255."""

    red: int
    green: int
    blue: int


@dataclasses.dataclass(frozen=True)
class CaptionRun:
    """Characters of one line that look alike."""

    text: str  #: without line breaks and other control characters
    foreground: Colour
    background: Colour | None  #: None where the decoder does not know it (ARIB)
    is_double_height: bool
    is_double_width: bool
    is_small: bool  #: half height, as for the readings of Japanese characters (ARIB)
    is_flashing: bool  #: teletext only


@dataclasses.dataclass(frozen=True)
class CaptionLine:
    """One line of a caption."""

    runs: tuple[CaptionRun, ...]  #: at least one; spaces at the line's ends are left out

    @property
    def text(self) -> str:
        """The text of all runs."""
        return "".join(run.text for run in self.runs)


@dataclasses.dataclass(frozen=True)
class Caption:
    """A caption as the viewer reads it.

    It is shown until the next one of the same kind, PID and page or language. A caption without lines removes the
    previous one from the screen.
    """

    kind: CaptionKind
    page: int  #: number of the teletext page, 100 to 899; 0 for ARIB text
    language: str  #: ISO 639-2 code in three lower-case letters; empty if not known
    pid: int | None  #: of the stream; None for data without one (CaptionData)
    pts: int | None  #: when to show it, in 1/90000 s with 33 bits; None if not known
    lines: tuple[CaptionLine, ...]  #: from top to bottom

    @property
    def is_empty(self) -> bool:
        """Whether it has no lines and so removes the previous caption from the screen."""
        return not self.lines

    @property
    def text(self) -> str:
        """The text, with a line feed between the lines."""
        return "\n".join(line.text for line in self.lines)


def page_languages(subtitles: Iterable[Subtitle]) -> dict[int, str]:
    """Returns the languages of the teletext pages among the subtitles that broadcast.subtitles() lists, by page number.

    Pages whose number is not decimal are left out.
    """
    return {subtitle.magazine * 100 + int(f"{subtitle.page:x}"): subtitle.language for subtitle in subtitles
            if subtitle.kind is SubtitleKind.TELETEXT and f"{subtitle.page:x}".isdecimal()}
