# SPDX-License-Identifier: MIT
"""Updates the tables of docs/reference/protocol.md, between "<!-- table: ... -->" and "<!-- end of table -->"."""

import re

from description import BASIC, FIELD_SIZES

COLUMNS = ("type", "unit", "none", "meaning")


def head(*cells):
    return [row(*cells), "|" + "---|" * len(cells)]


def row(*cells):
    return "| " + " | ".join(cell or "" for cell in cells) + " |"


def code(word):
    return f"`{word}`" if word else ""


def description(value):
    """The cells of COLUMNS."""
    name = value.get("type")
    shown = name if name in BASIC or name in FIELD_SIZES else code(name)
    return (shown + (", optional" if value.get("optional") else ""), value.get("unit"), value.get("none"), value.get("summary"))


def values(element):
    kinds = {"in": "notification" if element.tag == "notification" else "request", "out": "reply"}
    return [row(code(value.get("key")), kinds[value.tag], *description(value)) for value in element]


def calls(endpoint, tag):
    lines = head("functionname, key", "in", *COLUMNS)
    for call in endpoint.findall(tag):
        no_handle = " No `handleID`." if call.get("handle") != endpoint.get("handle") else ""
        lines += [row(f"**`{call.get('name')}`**", "", "", "", "", call.get("summary") + no_handle), *values(call)]
    return lines


def record_table(record):
    if record.get("form") == "json":
        return head("member", "JSON type", *COLUMNS) + [
            row(code(field.get("key")), field.get("json"), *description(field)) for field in record]
    title = f"**{record.get('name')}**, {record.get('size')} bytes. {record.get('summary')}"
    lines = [title, "", *head("offset", "size", "field", *COLUMNS)]
    for field in record:
        cells = description(field) if field.tag == "field" else ("", "", "", "reserved, zero")
        lines += [row(field.get("offset"), field.get("size"), code(field.get("name")), *cells)]
    return lines


def tables_of(protocol):
    """Lines of each table, by the words of its marker."""
    tables = {"helper": head("key", "in", *COLUMNS) + values(protocol.helper),
              "channel": head("key", "in", *COLUMNS) + values(protocol.channel),
              "endpoints": head("type word", "C++ interface", "meaning"),
              "enumerations": head("enumeration, value", "name", "meaning")}
    for endpoint in protocol.endpoints:
        tables["endpoints"] += [row(code(endpoint.get("type")), code(endpoint.get("interface")), endpoint.get("summary"))]
        for tag in {call.tag for call in endpoint} - {"method"}:
            tables[f"{tag}s of {endpoint.get('type')}"] = calls(endpoint, tag)
    for name, enumeration in protocol.enumerations.items():
        tables["enumerations"] += [row(f"**`{name}`**", "", enumeration.get("summary"))]
        tables["enumerations"] += [row(v.get("value"), code(v.get("name")), v.get("summary")) for v in enumeration]
    for name, record in protocol.records.items():
        tables[f"record {name}"] = record_table(record)
    return tables


def renew(protocol, text):
    """The text of the page with updated tables."""
    tables = tables_of(protocol)

    def renewed(match):
        if match[1] not in tables:
            raise SystemExit(f"no table '{match[1]}'; there are: {', '.join(tables)}")
        return f"<!-- table: {match[1]} -->\n" + "\n".join(tables.pop(match[1])) + "\n<!-- end of table -->"

    text = re.sub(r"<!-- table: (.*?) -->\n.*?<!-- end of table -->", renewed, text, flags=re.DOTALL)
    if tables:
        raise SystemExit(f"the page has no '<!-- table: ... -->' for: {', '.join(tables)}")
    return text
