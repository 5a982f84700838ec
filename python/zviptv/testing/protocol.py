# SPDX-License-Identifier: MIT
"""The functions of the protocol and the types of their arguments, read from its description."""
import difflib
import functools
import xml.etree.ElementTree as tree
from pathlib import Path
from typing import Any, Iterable

__tracebackhide__ = True  # pytest shows the line of the test

DESCRIPTION = Path(__file__).with_name("zviptv.xml")
NUMBERS = ("i32", "u16", "u32", "u64", "i64")
SWITCHES = {"1": True, "on": True, "true": True, "0": False, "off": False, "false": False}


@functools.lru_cache(maxsize=None)
def functions() -> dict[str, dict[str, str]]:
    """The types of the keys of each function, by the name of the function."""
    return {function.get("name", ""): {value.get("key", ""): value.get("type", "") for value in function.findall("in")}
            for function in tree.parse(DESCRIPTION).getroot().iter("function")}


@functools.lru_cache(maxsize=None)
def enumerations() -> dict[str, dict[int, str]]:
    """The values of each enumeration with their names, by the name of the enumeration."""
    return {enumeration.get("name", ""): {int(value.get("value", ""), 0): value.get("name", "")
                                          for value in enumeration.findall("value")}
            for enumeration in tree.parse(DESCRIPTION).getroot().iter("enumeration")}


def meaning(kind: str, value: Any) -> Any:
    """What a value of this type means, whether it is from the bus or from a test.

    bool for a flag, int for a number, the name of an enumeration's value, otherwise text. A value that is not of the
    type is returned as it is.
    """
    text = str(int(value)) if isinstance(value, bool) else str(value)
    if kind == "flag":
        return SWITCHES.get(text.lower(), value)
    try:
        if kind in NUMBERS:
            return int(text)
        if kind in enumerations():
            names = enumerations()[kind]
            return text if text in names.values() else names[int(text)] if int(text) in names else int(text)
    except ValueError:
        return value
    return text


def decode(function: str, arguments: dict[str, str]) -> dict[str, Any]:
    """The arguments of a request, without the number of the handle."""
    kinds = functions().get(function, {})
    return {key: meaning(kinds.get(key, "text"), value) for key, value in arguments.items() if key != "handleID"}


def _unknown(what: str, word: str, known: Iterable[str]) -> str:
    near = difflib.get_close_matches(word, list(known), 3) or list(known)
    return f"{what} '{word}'; use {', '.join(near) if len(near) < 10 else 'a name that zviptvctl methods lists'}"


def _accepted(kind: str) -> str:
    """The values of a flag or an enumeration in words; "a number" for other types."""
    return "True or False" if kind == "flag" else ", ".join(enumerations().get(kind, {}).values()) or "a number"


def _is_valid(kind: str, value: Any) -> bool:
    """Whether a meaning is of this type. An enumeration may have values without a name."""
    if kind == "flag":
        return isinstance(value, bool)
    if kind in enumerations():
        return isinstance(value, int) or value in enumerations()[kind].values()
    return kind not in NUMBERS or isinstance(value, int)


def normalize(function: str, arguments: dict[str, Any]) -> dict[str, Any]:
    """The arguments that a test expects. Raises ValueError if the protocol has no such function, key or value."""
    if function not in functions():
        raise ValueError(_unknown("unknown function", function, functions()))
    kinds = functions()[function]
    for key in arguments:
        if key not in kinds:
            raise ValueError(_unknown(f"{function} has no argument", key, kinds) if kinds
                             else f"{function} has no arguments")
    meanings = {key: meaning(kinds[key], value) for key, value in arguments.items()}
    for key, value in meanings.items():
        if not _is_valid(kinds[key], value):
            raise ValueError(f"{function}: {value!r} is not a value of {key}; use {_accepted(kinds[key])}")
    return meanings
