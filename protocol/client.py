# SPDX-License-Identifier: MIT
"""Generates the client layer's enumerations, records and classes, from the templates in the folder templates."""

import pathlib
import re

import jinja2

from cpp import NOTICE, quote

CHRONO = {"s": "std::chrono::seconds", "ms": "std::chrono::milliseconds",
          "s since 1970, UTC": "std::chrono::system_clock::time_point"}
NUMBERS = {"flag": "bool", "character": "char", "text": "std::string", "i32": "std::int32_t", "u8": "std::uint8_t",
           "u16": "std::uint16_t", "u32": "std::uint32_t", "u64": "std::uint64_t"}


def camel(word):
    """UNLOCKED_PROGRAMME as an enumerator: UnlockedProgramme"""
    return "".join(part.capitalize() for part in word.split("_"))


class Layer:
    """What the templates ask for."""

    def __init__(self, protocol):
        self.protocol = protocol
        self.notice = NOTICE
        self.classes = [endpoint for endpoint in protocol.endpoints if endpoint.get("client")]
        self.enumerations = [e for e in protocol.enumerations.values() if e.get("client") and e.get("form") != "language"]
        self.records = [r for name, r in protocol.records.items() if not protocol.is_json(name)]

    def type(self, value):
        """The C++ type of a value, a field, or a record's element."""
        name = value.get("type")
        if value.get("client") or value.get("unit") in CHRONO:
            return value.get("client") or CHRONO[value.get("unit")]
        if name.endswith("[]"):
            return f"std::vector<{self.named(name[:-2])}>"
        return NUMBERS.get(name) or self.named(name)

    def named(self, name):
        return {**self.protocol.enumerations, **self.protocol.records}[name].get("client")

    def argument(self, value):
        """The type of a parameter."""
        kind = self.type(value)
        is_large = kind.startswith("std::string") or value.get("type") in self.protocol.records
        return f"{kind} const&" if is_large else kind

    def inputs(self, function):
        return function.findall("in")

    def outputs(self, function):
        return [value for value in function.findall("out") if not value.get("counts")]

    def member(self, value):
        return value.get("part", value.get("parameter"))

    def answer(self, function):
        """What the Result of a function has."""
        outputs = self.outputs(function)
        if len(outputs) > 1:
            return function.get("method").removeprefix("Get") + "Answer"
        return self.type(outputs[0]) if outputs else "void"

    def answers(self, endpoint):
        """The functions with several outputs."""
        return [function for function in endpoint.findall("function") if len(self.outputs(function)) > 1]

    def functions(self, endpoint):
        return endpoint.findall("function")

    def items(self, endpoint, function):
        """The function that describes one of what `function` counts."""
        return next(f for f in endpoint.findall("function") if f.get("name") == function.get("items"))

    def element(self, item):
        """The output of such a function that is the element of the list."""
        return next(value for value in self.outputs(item) if value.get("type") in self.protocol.records)

    def parameters(self, function):
        return ", ".join(f"{self.argument(value)} {value.get('parameter')}" for value in self.inputs(function))

    def names(self, function):
        return ", ".join(value.get("parameter") for value in self.inputs(function))

    def enumerator(self, value):
        return value.get("client") or camel(value.get("name"))

    def words(self, value):
        return re.sub("_", " ", value.get("name").lower())

    def summary(self, value):
        """The summary, in which a flag is true or false."""
        text = value.get("summary")
        return text.replace("1 ", "true ", 1).replace(", 0 ", ", false ", 1) if value.get("type") == "flag" else text

    def unit(self, value):
        """The unit of a number, in brackets; a time of std::chrono has none."""
        unit = value.get("unit")
        return f" ({unit})" if unit and unit not in CHRONO else ""

    def is_hex(self, field):
        return field.get("notation") == "hex"

    def doc(self, function):
        """Lines on parameters and values for the comment of a function."""
        lines = []
        for value in self.inputs(function) + self.outputs(function):
            name = value.get("parameter") if value.tag == "in" else self.member(value)
            text = self.summary(value).removesuffix(" as JSON")
            missing = ", or nothing if there is none" if value.get("client", "").startswith("std::optional") else ""
            lines.append((value, name, text + self.unit(value) + missing))
        inputs = [f"`{name}`: {text}." for value, name, text in lines if value.tag == "in"]
        outputs = [(name, text) for value, name, text in lines if value.tag == "out"]
        if len(outputs) == 1:
            inputs.append(f"Returns: {outputs[0][1]}.")
        return inputs


def environment():
    """What renders the templates."""
    found = jinja2.Environment(loader=jinja2.FileSystemLoader(pathlib.Path(__file__).resolve().parent / "templates"),
                               trim_blocks=True, lstrip_blocks=True, keep_trailing_newline=True,
                               undefined=jinja2.StrictUndefined)
    found.filters["quote"] = quote
    return found


def sources(protocol):
    """The texts of the generated files, by their paths."""
    layer = Layer(protocol)

    def made(template, **names):
        return environment().get_template(template).render(layer=layer, **names)

    texts = {"include/zviptv/client/Types.h": made("Types.h.j2"), "client/Types.cpp": made("Types.cpp.j2"),
             "src/ClientRecords.h": made("Records.h.j2")}
    for endpoint in layer.classes:
        name = endpoint.get("client")
        texts[f"include/zviptv/client/{name}.h"] = made("Class.h.j2", endpoint=endpoint)
        texts[f"client/{name}.cpp"] = made("Class.cpp.j2", endpoint=endpoint)
    return texts
