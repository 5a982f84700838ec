"""What is compared. The ratios are to the second."""

from typing import NamedTuple


class Variant(NamedTuple):
    key: str
    title: str
    program: str
    journal: bool = False


LIBRARY = Variant("library", "this library", "zviptv")
BASELINE = Variant("gdbus", "GDBus by hand", "gdbus")
LOGGING = Variant("library-log", "this library, into the journal", "zviptv", True)
SDBUSCPP = Variant("sdbuscpp", "sdbus-c++", "sdbuscpp")
ALL = (LIBRARY, LOGGING, BASELINE, Variant("sdbus", "sd-bus", "sdbus"), Variant("libdbus", "libdbus", "libdbus"),
       SDBUSCPP)
