# SPDX-License-Identifier: MIT
"""The description of the protocol, zviptv.xml, with derived values."""

import xml.etree.ElementTree as ElementTree

# Types of values: the C++ type, and the name in zviptvctl.
BASIC = {
    "flag": ("bool", "bool"), "character": ("char", "char"),
    "text": ("std::string", "std::string"), "bytes": ("std::string", "std::string"),
    "i32": ("int", "int32"), "i64": ("long long", "int64"),
    "u16": ("std::uint16_t", "uint16"), "u32": ("unsigned int", "uint32"), "u64": ("unsigned long long", "uint64"),
}
FIELD_SIZES = {"u8": 1, "u16": 2, "u32": 4}


class Protocol:
    """Elements of the description, with the values of omitted attributes filled in."""

    def __init__(self, file):
        self.root = ElementTree.parse(file).getroot()
        self.helper, self.channel = self.root.find("helper"), self.root.find("channel")
        self.endpoints = self.root.findall("endpoint")
        self.enumerations = {entry.get("name"): entry for entry in self.root.findall("enumeration")}
        self.records = {entry.get("name"): entry for entry in self.root.findall("record")}
        for endpoint in self.endpoints:
            for entry in endpoint:
                entry.attrib.setdefault("method", entry.get("name"))
                entry.attrib.setdefault("handle", endpoint.get("handle"))
                for value in entry:
                    value.attrib.setdefault("parameter", value.get("key"))
        for value in self.root.iterfind(".//*[@type]"):
            if value.tag != "endpoint" and value.get("type") not in FIELD_SIZES:
                self._check_type(value)
        for record in (record for name, record in self.records.items() if not self.is_json(name)):
            self._lay_out(record)

    def _check_type(self, value):
        name = value.get("type").removesuffix("[]")
        if name not in BASIC and name not in self.enumerations and name not in self.records:
            raise SystemExit(f"zviptv.xml: unknown type {name} of {value.get('key', value.get('name'))}")
        if name in self.enumerations and self.enumerations[name].get("none"):
            value.attrib.setdefault("none", self.enumerations[name].get("none"))

    def _lay_out(self, record):
        offset = 0
        for field in record:
            field.set("offset", str(offset))
            if field.tag == "field":
                field.set("size", str(FIELD_SIZES.get(field.get("type"), 4)))
            offset += int(field.get("size"))
        if offset != int(record.get("size")):
            raise SystemExit(f"zviptv.xml: the fields of {record.get('name')} have {offset} bytes, not {record.get('size')}")

    def is_json(self, type_name):
        return type_name in self.records and self.records[type_name].get("form") == "json"

    def methods(self):
        """(endpoint, function or method) of all C++ methods, in the order of the interfaces."""
        return [(endpoint, entry) for endpoint in self.endpoints for entry in endpoint
                if entry.tag in ("function", "method") and entry.get("method")]

    def parameters(self, entry, *tags, flat=False):
        """(name, value) of the parameters of a C++ method; with `flat`, JSON records as their fields."""
        result = []
        for value in (value for tag in tags for value in entry.findall(tag) if not value.get("counts")):
            if flat and self.is_json(value.get("type")):
                result += [(field.get("name"), field) for field in self.records[value.get("type")]]
            else:
                result.append((value.get("parameter"), value))
        return result

    def c_type(self, value):
        name = value.get("type", "")
        return value.get("c") or (f"std::vector<{name[:-2]}>" if name.endswith("[]") else BASIC.get(name, [name])[0])

    def shown_type(self, value):
        """The type as zviptvctl shows it."""
        return {**dict(BASIC.values()), "unsigned long": "uint64"}.get(self.c_type(value), self.c_type(value))
