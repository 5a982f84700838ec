// SPDX-License-Identifier: MIT
#pragma once

#include "ProtocolTypes.h"

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>

namespace zviptv::ctl {

/// The place of an argument, for messages: "argument 'index' of SetCurrentTTX".
struct ArgumentPlace
{
    std::string owner;
    std::string name;
};

/// The range of a number.
struct SignedRange
{
    std::int64_t minimum;
    std::int64_t maximum;
    unsigned bits;
};

// Each reads one argument of the command line. Numbers are decimal, or hexadecimal after "0x". If an argument
// cannot be read, a Failure that says what was expected ends the command.

std::int64_t ParseSigned(std::string const& text, SignedRange const& range, ArgumentPlace const& place);
std::uint64_t ParseUnsigned(std::string const& text, std::uint64_t most, unsigned bits,
                            ArgumentPlace const& place);

/// A count: 1 or more.
std::uint64_t ParseCount(std::string const& text, ArgumentPlace const& place);

/// A time of more than 0 seconds, with optional decimals.
std::chrono::milliseconds ParseSeconds(std::string const& text, ArgumentPlace const& place);

/// 1, true, on; 0, false, off.
bool ParseFlag(std::string const& text, ArgumentPlace const& place);

/// A number, or an enumerator's name with or without its prefix.
std::int32_t ParseEnumerator(std::string const& text, EnumInfo const& info, ArgumentPlace const& place);

template <typename Value>
Value ParseArgument(std::string const& text, ArgumentPlace const& place)
{
    using Limits = std::numeric_limits<Value>;
    constexpr unsigned bits = 8 * sizeof(Value);
    if constexpr (std::is_same_v<Value, bool>) {
        return ParseFlag(text, place);
    } else if constexpr (std::is_enum_v<Value>) {
        return static_cast<Value>(ParseEnumerator(text, InfoOf<Value>(), place));
    } else if constexpr (std::is_signed_v<Value>) {
        return static_cast<Value>(ParseSigned(text, {Limits::min(), Limits::max(), bits}, place));
    } else if constexpr (std::is_unsigned_v<Value>) {
        return static_cast<Value>(ParseUnsigned(text, Limits::max(), bits, place));
    } else {
        return Value(text);
    }
}

} // namespace zviptv::ctl
