# SPDX-License-Identifier: MIT
"""Generates C++. Each function makes the text of one file."""

import json

NOTICE = "Generated from protocol/zviptv.xml. Do not edit."


def quote(value):
    """A text or a truth value as a literal of C++ and Lua."""
    return json.dumps(value, ensure_ascii=False)


def protocol_header(protocol):
    """include/zviptv/Protocol.h: the words of the protocol as constants"""

    def constant_of(element):
        word = element.get("key", element.get("name"))
        return element.get("constant", word[0].upper() + word[1:])

    def block(name, summary, entries):
        lines = [f"/// {summary}", f"namespace {name} {{"]
        for constant, (word, comments) in entries.items():
            lines += [f"/// {'- ' if len(comments) > 1 else ''}{comment}" for comment in comments]
            lines += [f"constexpr char {constant}[] = {quote(word)};"]
        return lines + [f"}} // namespace {name}", ""]

    calls = [(endpoint, call) for endpoint in protocol.endpoints for call in endpoint if call.tag != "method"]
    types = {e.get("constant"): (e.get("type"), [f"{e.get('interface')}. {e.get('summary')}"]) for e in protocol.endpoints}
    functions = {constant_of(call): (call.get("name"), [f"{endpoint.get('type')}, {call.tag}. {call.get('summary')}"])
                 for endpoint, call in calls}
    places = [("requests and replies", protocol.channel), ("helper bus", protocol.helper)]
    places += [(call.get("name"), call) for _, call in calls]
    places += [(f"member of {name}", protocol.records[name]) for name in filter(protocol.is_json, protocol.records)]
    keys = {}
    for place, value in [(place, value) for place, part in places for value in part]:
        unit = f", {value.get('unit')}" if value.get("unit") else ""
        meaning = f"{value.get('type')}{unit}: {value.get('summary')}"
        uses = keys.setdefault(constant_of(value), (value.get("key"), {}))[1]
        uses.setdefault(meaning, []).append(place)
    keys = {constant: (word, [f"{meaning} ({', '.join(dict.fromkeys(found))})" for meaning, found in uses.items()])
            for constant, (word, uses) in keys.items()}
    return "\n".join([
        "// SPDX-License-Identifier: MIT", "/// @file", "/// The words of the protocol between applications and the service.", "",
        f"// {NOTICE}", "", "#pragma once", "",
        "/// The words of the protocol between applications and the service, for both sides.",
        "/// docs/reference/protocol.md describes the structure of a message.", "namespace zviptv::protocol {", "",
        *block("type", 'Type words: names of the channels, and values of "type" in announcements.', types),
        *block("function", 'Values of "functionname".', functions),
        *block("key", "Keys of entries, each with its type, its meaning and the functions that use it.", keys),
        "} // namespace zviptv::protocol", ""])


def overrides(protocol, endpoint):
    """src/IPlayerControlOverrides.inc and so on: declarations for the class that implements the interface"""
    lines = [f"// {NOTICE}"]
    for entry in [entry for found, entry in protocol.methods() if found is endpoint and entry.tag == "function"]:
        parameters = [f"{protocol.c_type(value)}{'&' if value.tag == 'out' else ''} {name}"
                      for name, value in protocol.parameters(entry, "in", "out")]
        lines += [f"bool {entry.get('method')}({', '.join(parameters)}) override;"]
    return "\n".join(lines + [""])


def types_header(protocol):
    """ctl/ProtocolTypes.h: names of enumerators, fields of records; the compiler compares them with IPTVTypes.h"""
    lines = [f"// {NOTICE}", "#pragma once", '#include "output/Enumerations.h"', '#include "output/Records.h"',
             "#include <zviptv/IPTVTypes.h>", "#include <cstddef>", "", "namespace zviptv::ctl {", ""]
    for name, enumeration in protocol.enumerations.items():
        values = [(enumeration.get("prefix") + value.get("name"), value) for value in enumeration]
        lines += ["template <>", f"inline EnumInfo const& InfoOf<{name}>()", "{", "    static constexpr EnumName names[] = {",
                  *(f"        {{{constant}, {quote(value.get('name'))}}}," for constant, value in values), "    };",
                  f"    static constexpr EnumInfo info({quote(name)}, {quote(enumeration.get('prefix'))}, names);",
                  "    return info;", "}",
                  *(f"static_assert({constant} == {value.get('value')});" for constant, value in values)]
    for name, record in protocol.records.items():
        fields = [(f"{name}::{field.get('name')}", field) for field in record.findall("field")]
        listed = [f"        Field{{{quote(field.get('name'))}, &{member}"
                  f"{', Notation::Hexadecimal' if field.get('notation') == 'hex' else ''}}}" for member, field in fields]
        lines += ["template <>", f"struct RecordInfo<{name}>", "{", "    static constexpr auto fields = std::make_tuple(",
                  ",\n".join(listed) + ");", "};"]
        if not protocol.is_json(name):
            lines += [f"static_assert(sizeof({name}) == {record.get('size')});",
                      *(f"static_assert(offsetof({name}, {field.get('name')}) == {field.get('offset')} && "
                        f"sizeof({member}) == {field.get('size')});" for member, field in fields)]
    return "\n".join(lines + ["", "} // namespace zviptv::ctl", ""])


def method_table(protocol):
    """ctl/MethodTable.cpp: the methods that zviptvctl can call"""

    def listed(entry, tag):
        return ", ".join(f"{{{quote(protocol.shown_type(value))}, {quote(name)}}}"
                         for name, value in protocol.parameters(entry, tag, flat=True))

    def take(name, value):
        """Statements that read an argument, and the expression that passes it."""
        if value.get("optional"):
            return [f"auto const {name} = call.TakeOptional();"], f"{name} ? {name}->c_str() : nullptr"
        if protocol.is_json(value.get("type")):
            members = [f"{name}.{field.get('name')}" for field in protocol.records[value.get("type")]]
            return [f"{value.get('type')} {name}{{}};", *(f"{m} = call.Take<decltype({m})>();" for m in members)], name
        return [f"auto const {name} = call.Take<{protocol.c_type(value)}>();"], name

    def call(interface, entry):
        taken = [take(name, value) for name, value in protocol.parameters(entry, "in")]
        outputs = protocol.parameters(entry, "out")
        arguments = [argument for _, argument in taken] + [name for name, _ in outputs]
        statements = [statement for statements, _ in taken for statement in statements]
        statements += [f"{protocol.c_type(value)} {name}{{}};" for name, value in outputs]
        statements += [f"call.Ask<{interface}>(",
                       f"    [&](auto& object) {{ return object.{entry.get('method')}({', '.join(arguments)}); }});"]
        statements += [f"call.Add({name});" for name, _ in outputs]
        return ["     [](Call& call) {", *(f"         {statement}" for statement in statements), "     }, nullptr},"]

    rows = []
    for endpoint, entry in protocol.methods():
        interface = endpoint.get("interface")
        required = sum(not value.get("optional") for _, value in protocol.parameters(entry, "in", flat=True))
        rows += [f"    {{{quote(interface)}, {quote(entry.get('method'))},", f"     {{{listed(entry, 'in')}}},",
                 f"     {{{listed(entry, 'out')}}}, {required},"]
        rows += [f"     nullptr, {quote(entry.get('command'))}}},"] if entry.tag == "method" else call(interface, entry)
    return "\n".join([f"// {NOTICE}", '#include "commands/Call.h"', "", "namespace zviptv::ctl {", "",
                      "std::vector<Method> const& Methods()", "{", "    static std::vector<Method> const table = {",
                      *(f"    {row}" for row in rows), "    };", "    return table;", "}", "", "} // namespace zviptv::ctl", ""])


def fuzz_table(protocol):
    """fuzz/ProxyMethodTable.inc: calls of all methods that send one request, with zeros"""
    lines = [f"// {NOTICE}"]
    for endpoint, entry in [(endpoint, entry) for endpoint, entry in protocol.methods() if entry.tag == "function"]:
        parameters = protocol.parameters(entry, "in", "out")
        values = " ".join(f"{protocol.c_type(value)} {name}{{}};" for name, value in parameters)
        call = f"Object<{endpoint.get('interface')}>().{entry.get('method')}({', '.join(name for name, _ in parameters)})"
        has_result = quote(endpoint.get("result") == "yes")
        lines += [f"{{{quote(entry.get('name'))}, [] {{ {values} return {call}; }}, {has_result}}},"]
    return "\n".join(lines + [""])
