#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Generates code and tables from zviptv.xml, the description of the protocol.

generate.py code FOLDER         writes the generated code below FOLDER; leaves files alone that would not change
generate.py page FILE           renews the tables of a page
generate.py page --check FILE   fails, with the differences, if a table of the page is out of date
"""

import difflib
import functools
import json
import pathlib
import sys

import cpp
import page
from description import Protocol

HERE = pathlib.Path(__file__).resolve().parent


def schema(protocol):
    """The description as JSON, for tools in other languages."""

    def plain(element, *left_out):
        made = {"value": lambda text: int(text, 0), "offset": int, "size": int, "optional": bool}
        return {name: made.get(name, str)(text) for name, text in element.attrib.items()
                if name not in ("constant", "c", "prefix", "parameter", *left_out)}

    def call(element):
        return {**plain(element, "handle", "method"), **{tag: [plain(v) for v in element.findall(tag)] for tag in ("in", "out")}}

    return {
        "helper": call(protocol.helper),
        "channel": call(protocol.channel),
        "endpoints": [{**plain(endpoint, "handle"), "result": endpoint.get("result") == "yes",
                       "functions": [{**call(entry), "handle": entry.get("handle") == "yes"}
                                     for entry in endpoint.findall("function")],
                       "notifications": [call(entry) for entry in endpoint.findall("notification")]}
                      for endpoint in protocol.endpoints],
        "enumerations": [{**plain(e), "values": [plain(v) for v in e]} for e in protocol.enumerations.values()],
        "records": [{**plain(r), "fields": [plain(f) for f in r.findall("field")]} for r in protocol.records.values()],
        "methods": [{"interface": endpoint.get("interface"), "name": entry.get("method"), "callable": entry.tag == "function",
                     **{tag: [{"type": protocol.shown_type(value), "name": name}
                              for name, value in protocol.parameters(entry, tag, flat=True)] for tag in ("in", "out")}}
                    for endpoint, entry in protocol.methods()],
    }


def schema_source(protocol):
    """tools/ProtocolSchema.inc: the description as JSON in a string literal of C++"""
    return f'// {cpp.NOTICE}\nR"json({json.dumps(schema(protocol), ensure_ascii=False, indent=0)})json"\n'


def dissector(protocol):
    """wireshark/zviptv.lua: the files of the folder wireshark, with the description as a table"""

    def lua(value):
        if isinstance(value, dict):
            return "{" + ", ".join(f"[{cpp.quote(key)}] = {lua(entry)}" for key, entry in value.items()) + "}"
        return "{" + ",\n".join(map(lua, value)) + "}" if isinstance(value, list) else cpp.quote(value)

    files = ("fields.lua", "message.lua", "values.lua", "dissector.lua")
    code = "\n".join((HERE / "wireshark" / file).read_text(encoding="utf-8") for file in files)
    return code.replace("local schema = {}\n", f"-- {cpp.NOTICE}\nlocal schema = {lua(schema(protocol))}\n")


def write_code(protocol, folder):
    generators = {"include/zviptv/Protocol.h": cpp.protocol_header, "ctl/MethodTable.cpp": cpp.method_table,
                  "ctl/ProtocolTypes.h": cpp.types_header, "fuzz/ProxyMethodTable.inc": cpp.fuzz_table,
                  "tools/ProtocolSchema.inc": schema_source, "wireshark/zviptv.lua": dissector}
    for endpoint in protocol.endpoints:
        generators[f"src/{endpoint.get('interface')}Overrides.inc"] = functools.partial(cpp.overrides, endpoint=endpoint)
    for path, generate in generators.items():
        file, text = pathlib.Path(folder) / path, generate(protocol)
        if not file.exists() or file.read_text(encoding="utf-8") != text:
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text, encoding="utf-8")


def renew_page(protocol, file, is_check):
    old = file.read_text(encoding="utf-8")
    new = page.renew(protocol, old)
    if not is_check:
        file.write_text(new, encoding="utf-8")
    elif new != old:
        sys.stdout.writelines(difflib.unified_diff(old.splitlines(True), new.splitlines(True), "page", "protocol/zviptv.xml"))
        raise SystemExit(f"{file}: tables are out of date; renew them with ./run protocol")


def main(arguments):
    protocol = Protocol(HERE / "zviptv.xml")
    if len(arguments) == 2 and arguments[0] == "code":
        write_code(protocol, arguments[1])
    elif len(arguments) in (2, 3) and arguments[0] == "page" and arguments[1:-1] in ([], ["--check"]):
        renew_page(protocol, pathlib.Path(arguments[-1]), len(arguments) == 3)
    else:
        raise SystemExit(__doc__)


if __name__ == "__main__":
    main(sys.argv[1:])
