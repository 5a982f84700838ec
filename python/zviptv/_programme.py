# SPDX-License-Identifier: MIT
"""Programmes of the guide."""
import dataclasses
import datetime

__all__ = ["EPOCH", "Programme", "ProgrammeId", "ProgrammeRating", "Translation"]

#: The start of 1970 in UTC. As the start of a ProgrammeId it stands for any start.
EPOCH = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)


@dataclasses.dataclass(frozen=True)
class ProgrammeRating:
    """From what age a programme is suitable."""

    system: str  #: rating system: "FSK", "MPAA", or a country such as "DEU"
    value: str  #: the rating as the source writes it
    minimum_age: int | None  #: years; None if the value names no age


@dataclasses.dataclass(frozen=True)
class Translation:
    """The texts of a programme in another language."""

    language: str  #: as the source writes it: "en", "de-AT", "fra"; empty if not known
    title: str
    subtitle: str
    description: str
    genres: tuple[str, ...]


@dataclasses.dataclass(frozen=True)
class ProgrammeId:
    """Identifies a programme of the guide."""

    service_id: int
    event_id: int  #: the guide compares only the low 16 bits
    start: datetime.datetime = EPOCH  #: with a time zone; from 1970 to 2106
    duration: datetime.timedelta = datetime.timedelta()  #: is not compared


@dataclasses.dataclass(frozen=True)
class Programme:
    """A programme of the guide. Texts may be empty."""

    service_id: int
    event_id: int  #: from 1
    start: datetime.datetime  #: in UTC
    duration: datetime.timedelta
    channel: str  #: name of the service in the guide
    title: str
    subtitle: str  #: of the episode, for example
    description: str
    language: str  #: of the texts above, as the source writes it; empty if not known
    episode: str  #: number of the episode, as the source writes it
    icon: str  #: address of a picture
    genres: tuple[str, ...]
    rating: ProgrammeRating | None
    translations: tuple[Translation, ...]

    @property
    def end(self) -> datetime.datetime:
        """The end: a programme is on at `start`, and is not on any more at `end`."""
        return self.start + self.duration

    @property
    def id(self) -> ProgrammeId:
        """The id of this programme."""
        return ProgrammeId(self.service_id, self.event_id, self.start, self.duration)
