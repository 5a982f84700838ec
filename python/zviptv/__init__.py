# SPDX-License-Identifier: MIT
"""The IPTV service of a Linux television, in Python. zviptv.testing has what tests of applications need.

zviptv.Television has functions that wait for the answer; zviptv.aio.Television has them as coroutines.
"""
from ._failure import Failure, FailureKind
from ._programme import *

try:
    from ._native import CaptionData, PesPacket
except ModuleNotFoundError as error:
    if error.name != "zviptv._native":
        raise

    def __getattr__(name: str) -> object:
        raise AttributeError(f"zviptv.{name} needs the compiled module, which this installation lacks; "
                             "install the package python3-zviptv, or build with -D ZVIPTV_PYTHON=ON")
else:
    from . import aio
    from ._functions import Broadcast, Guide, Player
    from ._stream import Counters, Stream
    from ._television import Television
    from ._types import *
