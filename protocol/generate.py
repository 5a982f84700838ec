#!/usr/bin/env python3
"""Generates code and tables from zviptv.xml, the description of the protocol.

generate.py code FOLDER         writes the generated code below FOLDER; leaves files alone that would not change
generate.py page FILE           renews the tables of a page, between "<!-- table: ... -->" and "<!-- end of table -->"
generate.py page --check FILE   fails, with the differences, if a table of the page is out of date
"""

import difflib
import json
import pathlib
import re
import sys
import xml.etree.ElementTree as ElementTree

HERE = pathlib.Path(__file__).resolve().parent
NOTICE = "Generated from protocol/zviptv.xml. Do not edit."

# Types of values: what C++ declares, and what zviptvctl calls them.
BASIC = {
    "flag": ("bool", "bool"),
    "i32": ("int", "int32"),
    "u16": ("std::uint16_t", "uint16"),
    "u32": ("unsigned int", "uint32"),
    "i64": ("long long", "int64"),
    "u64": ("unsigned long long", "uint64"),
    "text": ("std::string", "std::string"),
    "character": ("char", "char"),
    "bytes": ("std::string", "std::string"),
}
FIELD_SIZES = {"u8": 1, "u16": 2, "u32": 4}


class Protocol:
    """The description, with what follows from it: missing attributes, offsets, the parameters of methods."""

    def __init__(self, file):
        self.root = ElementTree.parse(file).getroot()
        self.helper, self.channel = self.root.find("helper"), self.root.find("channel")
        self.endpoints = self.root.findall("endpoint")
        self.enumerations = {entry.get("name"): entry for entry in self.root.findall("enumeration")}
        self.records = {entry.get("name"): entry for entry in self.root.findall("record")}
        for value in self.root.iterfind(".//*[@type]"):
            if value.tag != "endpoint" and value.get("type") not in FIELD_SIZES:
                self._check_type(value)
        for record in self.records.values():
            if record.get("form") != "json":
                self._lay_out(record)

    def _lay_out(self, record):
        offset = 0
        for field in record:
            field.set("offset", str(offset))
            if field.tag == "field":
                field.set("size", str(FIELD_SIZES.get(field.get("type"), 4)))
            offset += int(field.get("size"))
        if offset != int(record.get("size")):
            raise SystemExit(f"zviptv.xml: the fields of {record.get('name')} have {offset} bytes, not {record.get('size')}")

    def _check_type(self, value):
        name = value.get("type").removesuffix("[]")
        if name not in BASIC and name not in self.enumerations and name not in self.records:
            raise SystemExit(f"zviptv.xml: unknown type {name} of {value.get('key', value.get('name'))}")
        if name in self.enumerations and "none" not in value.attrib:
            value.attrib.update({"none": v.get("value") for v in self.enumerations[name]
                                 if v.get("name") == self.enumerations[name].get("none")})

    def functions(self):
        return [(endpoint, function) for endpoint in self.endpoints for function in endpoint.findall("function")]

    def has_handle(self, endpoint, function):
        return function.get("handle", endpoint.get("handle")) == "yes"

    def is_json(self, value):
        return value.get("type") in self.records and self.records[value.get("type")].get("form") == "json"

    def methods(self):
        """(endpoint, element) of all C++ methods in the order of the interfaces."""
        return [(endpoint, entry) for endpoint in self.endpoints for entry in endpoint
                if entry.tag == "method" or (entry.tag == "function" and entry.get("method") != "")]

    def c_type(self, value):
        name = value.get("type", "")
        if name.endswith("[]"):
            return f"std::vector<{name[:-2]}>"
        return value.get("c") or (BASIC[name][0] if name in BASIC else name)

    def shown_type(self, value):
        """The type as zviptvctl shows it."""
        name, own = value.get("type", ""), value.get("c", "")
        if own in ("", "unsigned long"):
            return BASIC[name][1] if name in BASIC else self.c_type(value)
        return BASIC["u32"][1] if own == "unsigned int" else own

    def parameters(self, entry, tag, flat=False):
        """(name, value) of the parameters of a method; with `flat`, JSON records as their fields."""
        result = []
        for value in entry.findall(tag):
            if flat and self.is_json(value):
                result += [(field.get("name"), field) for field in self.records[value.get("type")]]
            elif not value.get("counts"):
                result.append((value.get("parameter", value.get("key")), value))
        return result


def quote(text):
    return json.dumps(text, ensure_ascii=False)


def constant_of(word):
    return word[0].upper() + word[1:]


# Code for everybody


def protocol_header(protocol):
    """include/zviptv/Protocol.h"""

    def block(name, summary, entries):
        lines = [f"/// {summary}", f"namespace {name} {{"]
        for constant, (word, comments) in entries.items():
            lines += [f"/// {'- ' if len(comments) > 1 else ''}{comment}" for comment in comments]
            lines += [f"constexpr char {constant}[] = {quote(word)};"]
        return lines + [f"}} // namespace {name}", ""]

    functions, keys = {}, {}
    constants = {v.get("key"): v.get("constant") for v in protocol.root.iter() if v.tag in ("in", "out") and v.get("constant")}

    def add_key(value, place):
        unit = f", {value.get('unit')}" if value.get("unit") else ""
        meaning = f"{value.get('type')}{unit}: {value.get('summary')}"
        constant = value.get("constant") or constants.get(value.get("key")) or constant_of(value.get("key"))
        uses = keys.setdefault(constant, (value.get("key"), {}))[1]
        uses.setdefault(meaning, []).append(place)

    for part, place in ((protocol.channel, "every message"), (protocol.helper, "helper bus")):
        for value in part:
            add_key(value, place)
    for endpoint in protocol.endpoints:
        for function in endpoint.findall("function") + endpoint.findall("notification"):
            name = function.get("name")
            functions[constant_of(name)] = (name, [f"{endpoint.get('type')}, {function.tag}. {function.get('summary')}"])
            for value in function:
                add_key(value, name)
    for name, record in protocol.records.items():
        for field in record.findall("field") if record.get("form") == "json" else []:
            add_key(field, f"member of {name}")
    documented = {constant: (word, [f"{meaning} ({', '.join(dict.fromkeys(places))})" for meaning, places in uses.items()])
                  for constant, (word, uses) in keys.items()}
    types = {e.get("constant"): (e.get("type"), [f"{e.get('interface')}. {e.get('summary')}"]) for e in protocol.endpoints}
    return "\n".join([
        "/// @file", "/// The words of the protocol between applications and the service.", "", f"// {NOTICE}", "",
        "#pragma once", "",
        "/// The words of the protocol between applications and the service, for both sides. docs/protocol.md says how a",
        "/// message is put together.", "namespace zviptv::protocol {", "",
        *block("type", 'Type words: names of the channels, and values of "type" in announcements.', types),
        *block("function", 'Values of "functionname".', functions),
        *block("key", "Keys of entries, each with its type and meaning and where it is used.", documented),
        "} // namespace zviptv::protocol", ""])


# Code of the tools and of the fuzz targets


def types_header(protocol):
    """ctl/ProtocolTypes.h: names of enumerators, fields of records; the compiler compares them with IPTVTypes.h"""
    lines = [f"// {NOTICE}", "#pragma once", '#include "output/Enumerations.h"', '#include "output/Records.h"',
             "#include <zviptv/IPTVTypes.h>", "#include <cstddef>", "", "namespace zviptv::ctl {", ""]
    for name, enumeration in protocol.enumerations.items():
        prefix = enumeration.get("prefix")
        lines += ["template <>", f"inline EnumInfo const& InfoOf<{name}>()", "{", "    static constexpr EnumName names[] = {"]
        lines += [f"        {{{prefix}{value.get('name')}, {quote(value.get('name'))}}}," for value in enumeration]
        lines += ["    };", f"    static constexpr EnumInfo info({quote(name)}, {quote(prefix)}, names);", "    return info;", "}"]
        lines += [f"static_assert({prefix}{value.get('name')} == {value.get('value')});" for value in enumeration]
    for name, record in protocol.records.items():
        fields = [f"Field{{{quote(f.get('name'))}, &{name}::{f.get('name')}"
                  + (", Notation::Hexadecimal}" if f.get("notation") == "hex" else "}") for f in record.findall("field")]
        lines += ["template <>", f"struct RecordInfo<{name}>", "{",
                  "    static constexpr auto fields = std::make_tuple(", "        " + ",\n        ".join(fields) + ");", "};"]
        if record.get("form") != "json":
            lines += [f"static_assert(sizeof({name}) == {record.get('size')});"]
            lines += [f"static_assert(offsetof({name}, {f.get('name')}) == {f.get('offset')} && "
                      f"sizeof({name}::{f.get('name')}) == {f.get('size')});" for f in record.findall("field")]
    return "\n".join(lines + ["", "} // namespace zviptv::ctl", ""])


def method_table(protocol):
    """ctl/MethodTable.cpp: what zviptvctl calls"""

    def form(value):
        name = value.get("type", "")
        number = name in protocol.enumerations or (name in BASIC and name not in ("text", "bytes", "character"))
        return "Number" if number else "Character" if name == "character" else "List" if name.endswith("[]") else "Bytes"

    def listed(entry, tag):
        return ", ".join(f"{{{quote(protocol.shown_type(v))}, {quote(name)}, Form::{form(v)}}}"
                         for name, v in protocol.parameters(entry, tag, flat=True))

    def take(name, value):
        if value.get("optional"):
            return [f"auto const {name} = call.TakeOptional();"], f"{name} ? {name}->c_str() : nullptr"
        if protocol.is_json(value):
            fields = [f"{name}.{field.get('name')}" for field in protocol.records[value.get("type")]]
            return [f"{protocol.c_type(value)} {name}{{}};", *(f"{f} = call.Take<decltype({f})>();" for f in fields)], name
        return [f"auto const {name} = call.Take<{protocol.c_type(value)}>();"], name

    def call(endpoint, entry):
        taken = [take(name, value) for name, value in protocol.parameters(entry, "in")]
        outputs = protocol.parameters(entry, "out")
        arguments = [argument for _, argument in taken] + [name for name, _ in outputs]
        method = entry.get("method", entry.get("name"))
        return ["    [](Call& call) {", *(f"        {line}" for lines, _ in taken for line in lines),
                *(f"        {protocol.c_type(value)} {name}{{}};" for name, value in outputs),
                f"        call.Ask<{endpoint.get('interface')}>(",
                f"            [&](auto& object) {{ return object.{method}({', '.join(arguments)}); }});",
                *(f"        call.Add({name});" for name, _ in outputs), "    }, nullptr},"]

    rows = []
    for endpoint, entry in protocol.methods():
        required = sum(not value.get("optional") for _, value in protocol.parameters(entry, "in", flat=True))
        name = entry.get("method", entry.get("name"))
        rows += [f"    {{{quote(endpoint.get('interface'))}, {quote(name)},",
                 f"     {{{listed(entry, 'in')}}},", f"     {{{listed(entry, 'out')}}}, {required},"]
        rows += [f"     nullptr, {quote(entry.get('command'))}}},"] if entry.tag == "method" else call(endpoint, entry)
    return "\n".join([f"// {NOTICE}", '#include "commands/Call.h"', "", "namespace zviptv::ctl {", "",
                      "std::vector<Method> const& Methods()", "{", "    static std::vector<Method> const table = {",
                      *(f"    {row}" for row in rows), "    };", "    return table;", "}", "", "} // namespace zviptv::ctl", ""])


def schema(protocol):
    """The description as JSON, for tools in other languages."""

    def plain(element, *leave):
        numbers = ("value", "offset", "size")
        return {key: int(text, 0) if key in numbers else True if key == "optional" else text for key, text in element.attrib.items()
                if key not in ("constant", "c", "prefix", "parameter", *leave)}

    def call(element):
        return {**plain(element, "handle", "method"), **{tag: [plain(v) for v in element.findall(tag)] for tag in ("in", "out")}}

    def shown(entry, tag):
        return [{"type": protocol.shown_type(v), "name": name} for name, v in protocol.parameters(entry, tag, flat=True)]

    return {
        "helper": call(protocol.helper),
        "channel": call(protocol.channel),
        "endpoints": [{
            **plain(endpoint, "handle", "result"), "result": endpoint.get("result") == "yes",
            "functions": [{**call(f), "handle": protocol.has_handle(endpoint, f)} for f in endpoint.findall("function")],
            "notifications": [call(n) for n in endpoint.findall("notification")]} for endpoint in protocol.endpoints],
        "enumerations": [{**plain(e), "values": [plain(v) for v in e]} for e in protocol.enumerations.values()],
        "records": [{**plain(r), "fields": [plain(f) for f in r.findall("field")]} for r in protocol.records.values()],
        "methods": [{"interface": endpoint.get("interface"), "name": m.get("method", m.get("name")),
                     "callable": m.tag == "function", "in": shown(m, "in"), "out": shown(m, "out")}
                    for endpoint, m in protocol.methods()],
    }


def schema_source(protocol):
    """tools/ProtocolSchema.inc: the description as JSON in a string literal"""
    return f'// {NOTICE}\nR"json({json.dumps(schema(protocol), ensure_ascii=False, indent=0)})json"\n'


def dissector(protocol):
    """wireshark/zviptv.lua: the files of the folder wireshark, with the description as a table"""

    def lua(value):
        if isinstance(value, dict):
            return "{" + ", ".join(f"[{quote(key)}] = {lua(entry)}" for key, entry in value.items()) + "}"
        return "{\n" + "".join(f"{lua(entry)},\n" for entry in value) + "}" if isinstance(value, list) else quote(value)

    files = [HERE / "wireshark" / f"{name}.lua" for name in ("fields", "message", "values", "dissector")]
    code = "\n".join(file.read_text(encoding="utf-8") for file in files)
    return code.replace("local schema = {}\n", f"-- {NOTICE}\nlocal schema = {lua(schema(protocol))}\n")


def fuzz_table(protocol):
    """fuzz/ProxyMethodTable.h: calls of all methods that send one request, with zeros"""
    lines = [f"// {NOTICE}", "#pragma once", ""]
    for endpoint, entry in protocol.methods():
        if entry.tag == "function":
            parameters = [part for tag in ("in", "out") for part in protocol.parameters(entry, tag)]
            values = " ".join(f"{protocol.c_type(value)} {name}{{}};" for name, value in parameters)
            call = f"{entry.get('method', entry.get('name'))}({', '.join(name for name, _ in parameters)})"
            lines += [f"{{{quote(entry.get('name'))},", f" [] {{ {values} return Object<{endpoint.get('interface')}>().{call}; }},",
                      f" {str(endpoint.get('result') == 'yes').lower()}}},"]
    return "\n".join(lines + [""])


# Tables of docs/protocol.md


def page_tables(protocol):
    """The tables by the words of their markers."""

    def row(*cells):
        return "| " + " | ".join(cell or "" for cell in cells)+ " |"

    def code(word):
        return f"`{word}`" if word else ""

    def type_cell(value):
        name = value.get("type")
        return (name if name in BASIC or name in FIELD_SIZES else code(name)) + (", optional" if value.get("optional") else "")

    def values(element):
        kinds = {"in": "request" if element.tag != "notification" else "notification", "out": "reply"}
        return [row(code(v.get("key")), kinds[v.tag], type_cell(v), v.get("unit"), v.get("none"), v.get("summary"))
                for v in element if v.tag in kinds]

    def calls(elements, what):
        lines = [row(what, "in", "type", "unit", "none", "meaning"), "|---|---|---|---|---|---|"]
        for endpoint, call in elements:
            no_handle = " No `handleID`." if call.get("handle") == "no" and endpoint.get("handle") == "yes" else ""
            lines += [row(f"**`{call.get('name')}`**", "", "", "", "", call.get("summary") + no_handle), *values(call)]
        return lines

    head = [row("key", "in", "type", "unit", "none", "meaning"), "|---|---|---|---|---|---|"]
    tables = {"helper": head + values(protocol.helper), "channel": head + values(protocol.channel)}
    tables["endpoints"] = [row("type word", "C++ interface", "meaning"), "|---|---|---|"]
    for endpoint in protocol.endpoints:
        tables["endpoints"] += [row(code(endpoint.get("type")), code(endpoint.get("interface")), endpoint.get("summary"))]
        for tag in ("function", "notification"):
            found = [(endpoint, call) for call in endpoint.findall(tag)]
            tables[f"{tag}s of {endpoint.get('type')}"] = calls(found, "functionname, key") if found else []
    tables["enumerations"] = [row("enumeration, value", "name", "meaning"), "|---|---|---|"]
    for name, enumeration in protocol.enumerations.items():
        tables["enumerations"] += [row(f"**`{name}`**", "", enumeration.get("summary"))]
        tables["enumerations"] += [row(v.get("value"), code(v.get("name")), v.get("summary")) for v in enumeration]
    for name, record in protocol.records.items():
        if record.get("form") == "json":
            lines = [row("member", "JSON type", "range", "unit", "none", "meaning"), "|---|---|---|---|---|---|"]
            lines += [row(code(f.get("key")), f.get("json"), f.get("type"), f.get("unit"), f.get("none"), f.get("summary"))
                      for f in record]
        else:
            lines = [f"**{name}**, {record.get('size')} bytes. {record.get('summary')}", "",
                     row("offset", "size", "field", "type", "unit", "none", "meaning"), "|---|---|---|---|---|---|---|"]
            for f in record:
                lines += [row(f.get("offset"), f.get("size"), code(f.get("name")), type_cell(f) if f.tag == "field" else "",
                              f.get("unit"), f.get("none"), f.get("summary", "reserved, zero"))]
        tables[f"record {name}"] = lines
    return tables


def renew_page(protocol, text):
    tables = page_tables(protocol)

    def renewed(match):
        if match[1] not in tables:
            raise SystemExit(f"no table '{match[1]}'; there are: {', '.join(tables)}")
        return f"<!-- table: {match[1]} -->\n" + "\n".join(tables.pop(match[1])) + "\n<!-- end of table -->"

    text = re.sub(r"<!-- table: (.*?) -->\n.*?<!-- end of table -->", renewed, text, flags=re.DOTALL)
    left = [name for name, lines in tables.items() if lines]
    if left:
        raise SystemExit(f"the page has no '<!-- table: ... -->' for: {', '.join(left)}")
    return text


# The command line

OUTPUTS = {
    "include/zviptv/Protocol.h": protocol_header,
    "ctl/MethodTable.cpp": method_table,
    "ctl/ProtocolTypes.h": types_header,
    "fuzz/ProxyMethodTable.h": fuzz_table,
    "tools/ProtocolSchema.inc": schema_source,
    "wireshark/zviptv.lua": dissector,
}


def write_code(protocol, folder):
    for name, generate in OUTPUTS.items():
        file, text = pathlib.Path(folder) / name, generate(protocol)
        if not file.exists() or file.read_text(encoding="utf-8") != text:
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text, encoding="utf-8")


def main(arguments):
    protocol = Protocol(HERE / "zviptv.xml")
    if len(arguments) == 2 and arguments[0] == "code":
        write_code(protocol, arguments[1])
    elif len(arguments) in (2, 3) and arguments[0] == "page" and arguments[1:-1] in ([], ["--check"]):
        page = pathlib.Path(arguments[-1])
        old = page.read_text(encoding="utf-8")
        new = renew_page(protocol, old)
        if len(arguments) == 2:
            page.write_text(new, encoding="utf-8")
        elif new != old:
            sys.stdout.writelines(difflib.unified_diff(old.splitlines(True), new.splitlines(True), "page", "protocol/zviptv.xml"))
            raise SystemExit(f"{page}: tables are out of date; renew them with ./run protocol")
    else:
        raise SystemExit(__doc__)


if __name__ == "__main__":
    main(sys.argv[1:])
