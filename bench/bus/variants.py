# SPDX-License-Identifier: MIT
"""The compared variants, methods and sizes. Ratios are to GDBus, and some to sdbus-c++."""

from typing import NamedTuple


class Variant(NamedTuple):
    key: str
    title: str
    program: str
    journal: bool = False


LIBRARY = Variant("library", "this library", "zviptv")
BASELINE = Variant("gdbus", "GDBus by hand", "gdbus")
LOGGING = Variant("library-log", "this library, into the journal", "zviptv", True)
CONTROL = Variant("gdbus-again", "GDBus by hand, once more", "gdbus")
SDBUSCPP = Variant("sdbuscpp", "sdbus-c++", "sdbuscpp")
ALL = (LIBRARY, LOGGING, BASELINE, CONTROL, Variant("sdbus", "sd-bus", "sdbus"),
       Variant("libdbus", "libdbus", "libdbus"), SDBUSCPP)

METHODS = {"mute": "MuteAudio", "ratings": "GetRatingInfo, 100 ratings"}
CROWD_SIZES = (4096, 65536, 1048576)  # of packets to several processes
PACKETS = {188: "188 B", 4096: "4 KiB", 65536: "64 KiB", 1048576: "1 MiB"}
