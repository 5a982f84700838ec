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
            self._lay_out(record)

    def _lay_out(self, record):
        offset = 0
        for field in record:
            field.set("offset", str(offset))
            if field.tag == "field":
                field.set("size", str(FIELD_SIZES.get(field.get("type"), 4)))
                field.attrib.setdefault("key", field.get("name"))
            offset += int(field.get("size"))
        if record.get("form") != "json" and offset != int(record.get("size")):
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


def dissector(protocol):
    """zviptv.lua, the Wireshark dissector: the tables that the file of that name here works on."""

    def lua(value):
        if isinstance(value, dict):
            return "{" + ", ".join(f"[{lua(key)}] = {lua(entry)}" for key, entry in value.items()) + "}"
        if isinstance(value, list):
            return "{" + ", ".join(map(lua, value)) + "}"
        return quote(value) if isinstance(value, str) else str(value)

    def table(name, entries):
        return [f"local {name} = {{", *(f"    [{lua(key)}] = {lua(value)}," for key, value in entries.items()), "}", ""]

    def types(function, tag):
        return {value.get("key"): value.get("type") for value in function.findall(tag)}

    functions = {e.get("type"): {f.get("name"): {"request": types(f, "in"), "reply": types(f, "out"), "summary": f.get("summary")}
                                 for f in e if f.tag in ("function", "notification")} for e in protocol.endpoints}
    enumerations = {name: {int(v.get("value"), 0): v.get("name") for v in e} for name, e in protocol.enumerations.items()}
    records = {name: {"size": int(r.get("size")),
                      "fields": [{"name": f.get("name"), "offset": int(f.get("offset")), "size": int(f.get("size")),
                                  "type": f.get("type"), "hex": "yes" if f.get("notation") == "hex" else "no"}
                                 for f in r.findall("field")]}
               for name, r in protocol.records.items() if r.get("form") != "json"}
    channel = {**types(protocol.channel, "in"), **types(protocol.channel, "out")}
    lines = [f"-- {NOTICE}", *table("functions", functions), *table("enumerations", enumerations),
             *table("records", records), *table("common_keys", channel),
             *table("helper", {**protocol.helper.attrib, "keys": types(protocol.helper, "in")}),
             *table("channel", protocol.channel.attrib)]
    return (HERE / "zviptv.lua").read_text(encoding="utf-8").replace("-- TABLES\n", "\n".join(lines))


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
