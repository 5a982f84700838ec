# SPDX-License-Identifier: MIT
"""The IPTV service of a Linux television, in Python. zviptv.testing has what tests of applications need.

zviptv.Television has functions that wait for the answer; zviptv.aio.Television has them as coroutines.
"""
from ._caption import *
from ._failure import *
from ._programme import *

try:
    from ._native import CaptionData as CaptionData, CaptionDecoder as CaptionDecoder, PesPacket as PesPacket
except ModuleNotFoundError as error:
    if error.name != "zviptv._native":
        raise

    def __getattr__(name: str) -> object:
        raise AttributeError(f"zviptv.{name} needs the compiled module, which this installation lacks; "
                             "install the package python3-zviptv, or build with -D ZVIPTV_PYTHON=ON")
else:
    from . import aio as aio
    from ._functions import Broadcast as Broadcast, Guide as Guide, Player as Player
    from ._state import *
    from ._stream import *
    from ._television import *
    from ._types import *

__all__ = [name for name in globals() if not name.startswith("_")]  # help() lists them
