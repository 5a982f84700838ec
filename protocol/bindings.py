# SPDX-License-Identifier: MIT
"""Generates the Python package's functions, enumerations, records and stub, and the C++ code that binds them."""

import re
from types import SimpleNamespace

from client import CHRONO, Layer, environment

PYTHON = {"void": "None", "bool": "bool", "char": "str", "std::string": "str", "Language": "str",
          **dict.fromkeys(("std::int32_t", "std::uint8_t", "std::uint16_t", "std::uint32_t", "std::uint64_t"), "int"),
          **dict.fromkeys(CHRONO.values(), "datetime.timedelta"),
          "std::chrono::system_clock::time_point": "datetime.datetime"}


def snake(word):
    """GetSTCCount as Python writes it: get_stc_count"""
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", word).lower()


class PythonLayer(Layer):
    """What the templates ask for."""

    snake = staticmethod(snake)

    def words(self, text):
        """A summary with the names that Python has."""
        names = {f.get("name"): snake(f.get("name")) for endpoint in self.classes for f in self.functions(endpoint)}
        names |= {name: entry.get("client") for name, entry in self.protocol.records.items()}
        return re.sub(r"\w+", lambda word: names.get(word[0], word[0]), text)

    def python(self, kind):
        """A C++ type as an annotation."""
        container = re.fullmatch(r"std::(vector|optional)<(.*)>", kind)
        if container:
            element = self.python(container[2])
            return f"list[{element}]" if container[1] == "vector" else f"{element} | None"
        return PYTHON.get(kind, kind)

    def constant(self, value):
        """The name of an enumerator."""
        return snake(value.get("client")).upper() if value.get("client") else value.get("name")

    def calls(self, endpoint):
        """The functions, each with its list after it."""
        for function in self.functions(endpoint):
            yield self.call(endpoint, function, snake(function.get("name")), function.get("method"), self.answer(function),
                            self.words(function.get("summary")))
            if function.get("list"):
                name = function.get("list")
                element = self.type(self.element(self.items(endpoint, function)))
                summary = f"Returns all that {snake(function.get('name'))} counts, in their order."
                yield self.call(endpoint, function, snake(name), name, f"std::vector<{element}>", summary)

    def call(self, endpoint, function, name, method, answer, summary):
        inputs = self.inputs(function)
        doc = [f"{snake(value.get('parameter'))}: {self.described(value)}." for value in inputs]
        outputs = self.outputs(function)
        if len(outputs) == 1 and not name == snake(function.get("list") or ""):
            doc.append(f"Returns: {self.described(outputs[0])}.")
        return SimpleNamespace(name=name, native=f"{snake(endpoint.get('client'))}_{name}", method=method, answer=answer,
                               python=self.python(answer), inputs=inputs, doc=doc, summary=summary)

    def described(self, value):
        """The summary of a value with its unit. A flag is True or False, and a programme not JSON any more."""
        unit, text = value.get("unit"), self.words(value.get("summary")).removesuffix(" as JSON")
        if value.get("type") == "flag":
            text = text.replace("1 ", "True ", 1).replace(", 0 ", ", False ", 1)
        if value.get("client", "").startswith("std::optional"):
            text += ", or None"
        return text + (f" ({unit})" if unit and unit not in CHRONO else "")

    def dataclasses(self):
        """The records, then the answers of functions with several outputs."""
        for record in self.records:
            fields = [self.field(field, field.get("name")) for field in record.findall("field")]
            yield SimpleNamespace(name=record.get("client"), summary=record.get("summary"), fields=fields)
        for endpoint in self.classes:
            for function in self.answers(endpoint):
                fields = [self.field(value, self.member(value)) for value in self.outputs(function)]
                summary = f"What {snake(endpoint.get('client'))}.{snake(function.get('name'))} reports."
                yield SimpleNamespace(name=self.answer(function), summary=summary, fields=fields)

    def field(self, value, member):
        is_number = value.get("type") in ("u8", "u16", "u32")
        missing = f"; {value.get('none')} for not known" if value.get("none") and is_number else ""
        return SimpleNamespace(member=member, python=self.python(self.type(value)), text=self.described(value) + missing)


def sources(protocol):
    """The texts of the generated files, by their paths."""
    layer = PythonLayer(protocol)

    def made(template, **names):
        return environment().get_template(template).render(layer=layer, **names)

    texts = {f"python/{file}": made(f"{file}.j2") for file in ("PythonRecords.h", "PythonRecords.cpp")}
    texts |= {"python/zviptv/_types.py": made("_types.py.j2"), "python/zviptv/_native.pyi": made("_native.pyi.j2"),
              "python/zviptv/_functions.py": made("_functions.py.j2", is_async=False),
              "python/zviptv/_coroutines.py": made("_functions.py.j2", is_async=True)}
    for endpoint in layer.classes:
        texts[f"python/{endpoint.get('client')}Functions.cpp"] = made("PythonFunctions.cpp.j2", endpoint=endpoint)
    return texts
