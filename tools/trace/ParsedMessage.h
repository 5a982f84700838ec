// SPDX-License-Identifier: MIT
#pragma once

#include "WireReader.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace zviptv::trace {

/// The header of a D-Bus message and the place of its body. Views point into the message's bytes.
struct ParsedMessage
{
    enum class Type : std::uint8_t
    {
        Call = 1,
        Reply = 2,
        Error = 3,
        Signal = 4
    };

    Type type = Type::Call; ///< other numbers are possible; the D-Bus specification says to ignore them
    bool wantsReply = true;
    bool isLittleEndian = true;
    std::uint32_t serial = 0;
    std::uint32_t replySerial = 0;
    std::string_view path;
    std::string_view interface;
    std::string_view member;
    std::string_view errorName;
    std::string_view sender;
    std::string_view destination;
    std::string_view signature; ///< of the body
    std::string_view body;

    WireReader Body() const { return {body, isLittleEndian}; }
};

/// Reads the header. @throws Malformed
ParsedMessage ParseMessage(std::string_view bytes);

/// An entry of a message of the protocol.
struct ParsedEntry
{
    std::string_view key;
    std::string_view value;     ///< empty if the variant does not hold ay
    std::string_view signature; ///< of a variant that does not hold ay
};

/// The entries of a body a{sv}; an empty body has none. @throws Malformed also for a body of another type
std::vector<ParsedEntry> ReadEntries(ParsedMessage const& message);

/// The pairs of a body a(ss); an empty body has none. @throws Malformed also for a body of another type
std::vector<ParsedEntry> ReadPairs(ParsedMessage const& message);

/// The texts at the start of the body, up to the first value of another type. @throws Malformed
std::vector<std::string_view> ReadTexts(ParsedMessage const& message);

} // namespace zviptv::trace
