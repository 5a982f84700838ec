#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Generates code and tables from zviptv.xml, the description of the protocol.

generate.py code FOLDER         writes the generated code below FOLDER; does not touch files that would not change
generate.py page FILE           updates the tables of a page
generate.py page --check FILE   fails, with the differences, if a table of the page is out of date
"""

import difflib
import json
import pathlib
import sys

import bindings
import client
import cpp
import page
from description import Protocol

HERE = pathlib.Path(__file__).resolve().parent


def schema(protocol):
    """The description as JSON, for tools in other languages."""
    made = {**dict.fromkeys(("optional", "handle", "result"), lambda text: text == "yes"), "offset": int, "size": int,
            "value": lambda text: int(text, 0), "none": lambda text: "" if text == "empty" else int(text)}

    def plain(element, *left_out):
        return {name: made.get(name, str)(text) for name, text in element.attrib.items()
                if text and name not in ("constant", "c", "prefix", "parameter", "client", "part", "list", "items", *left_out)}

    def call(element, *left_out):
        return {**plain(element, *left_out), **{tag: [plain(v) for v in element.findall(tag)] for tag in ("in", "out")}}

    return {
        "helper": call(protocol.helper), "channel": call(protocol.channel),
        "endpoints": [{**plain(endpoint, "handle"), "functions": [call(entry) for entry in endpoint.findall("function")],
                       "notifications": [call(entry, "handle", "method") for entry in endpoint.findall("notification")]}
                      for endpoint in protocol.endpoints],
        "enumerations": [{**plain(e), "values": [plain(v) for v in e]} for e in protocol.enumerations.values()],
        "records": [{**plain(r), "fields": [plain(f) for f in r.findall("field")]} for r in protocol.records.values()],
        "methods": [{"interface": endpoint.get("interface"), "name": entry.get("method"), "callable": entry.tag == "function",
                     **({"function": entry.get("name")} if entry.tag == "function" else {}),
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
    texts = {f"src/{e.get('interface')}Overrides.inc": cpp.overrides(protocol, e) for e in protocol.endpoints}
    texts |= {"include/zviptv/Protocol.h": cpp.protocol_header(protocol), "ctl/MethodTable.cpp": cpp.method_table(protocol),
              "ctl/ProtocolTypes.h": cpp.types_header(protocol), "fuzz/ProxyMethodTable.inc": cpp.fuzz_table(protocol),
              "tools/ProtocolSchema.inc": schema_source(protocol), "wireshark/zviptv.lua": dissector(protocol), **client.sources(protocol), **bindings.sources(protocol)}
    for path, text in texts.items():
        file = pathlib.Path(folder) / path
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
