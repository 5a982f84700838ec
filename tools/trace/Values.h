// SPDX-License-Identifier: MIT
#pragma once

#include "ParsedMessage.h"
#include "Schema.h"

#include <json/value.h>

#include <string>
#include <string_view>
#include <vector>

namespace zviptv::trace {

/// An entry of a message, decoded.
struct Value
{
    std::string key;
    std::string text; ///< readable text on one line: "MAIN", "true", "2048 bytes"
    Json::Value json; ///< a number, a flag, a text, records as objects; for bytes, their count
    std::string name; ///< name of an enumeration's value, empty if it has none
};

using Problems = std::vector<std::string>;

/// Decodes `entry` as a value of the type. Adds its problems to `problems`, in the words of the
/// Wireshark dissector.
Value Decode(ParsedEntry const& entry, ValueType const& type, Problems& problems);

/// Decodes an entry that has no known type as text.
Value DecodeUntyped(ParsedEntry const& entry);

/// The number at the start of a text, as applications read it: blanks, a sign and digits, up to 64 bits.
/// False if the text does not begin with a number.
bool ReadNumber(std::string_view text, std::int64_t& number);

/// Any bytes as UTF-8 text for JSON.
Json::Value TextToJson(std::string_view text);

} // namespace zviptv::trace
