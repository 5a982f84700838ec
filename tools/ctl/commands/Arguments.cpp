// SPDX-License-Identifier: MIT
#include "Arguments.h"

#include "output/Failure.h"
#include "output/Words.h"

#include <charconv>
#include <optional>

namespace zviptv::ctl {

namespace {

[[noreturn]] void Refuse(std::string const& text, std::string const& expected, ArgumentPlace const& place)
{
    char const* const kind = place.name[0] == '-' ? "option" : "argument";
    throw Failure(ExitCode::Usage, std::string(kind) + " '" + place.name + "' of " + place.owner + " is " +
                                       expected + ", not '" + text + "'");
}

/// The value of the digits; nullopt unless the whole text is a 64-bit number.
std::optional<std::uint64_t> Magnitude(std::string_view digits)
{
    int base = 10;
    if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
        base = 16;
        digits.remove_prefix(2);
    }
    std::uint64_t number = 0;
    char const* const end = digits.data() + digits.size();
    auto const [stop, error] = std::from_chars(digits.data(), end, number, base);
    return error == std::errc() && stop == end ? std::optional<std::uint64_t>(number) : std::nullopt;
}

std::optional<std::int64_t> SignedNumber(std::string_view text)
{
    constexpr std::uint64_t Max = std::numeric_limits<std::int64_t>::max();
    bool const isNegative = !text.empty() && text[0] == '-';
    std::optional<std::uint64_t> const magnitude = Magnitude(isNegative ? text.substr(1) : text);
    if (!magnitude || *magnitude > Max) {
        return std::nullopt;
    }
    auto const number = static_cast<std::int64_t>(*magnitude);
    return isNegative ? -number : number;
}

std::string NumberOf(std::string const& kind, unsigned bits, std::string const& least,
                     std::string const& most)
{
    return kind + " " + std::to_string(bits) + "-bit number (" + least + " to " + most + ")";
}

} // namespace

std::int64_t ParseSigned(std::string const& text, SignedRange const& range, ArgumentPlace const& place)
{
    std::optional<std::int64_t> const number = SignedNumber(text);
    if (!number || *number < range.minimum || *number > range.maximum) {
        Refuse(text,
               NumberOf("a signed", range.bits, std::to_string(range.minimum), std::to_string(range.maximum)),
               place);
    }
    return *number;
}

std::uint64_t ParseUnsigned(std::string const& text, std::uint64_t most, unsigned bits,
                            ArgumentPlace const& place)
{
    std::optional<std::uint64_t> const number = Magnitude(text);
    if (!number || *number > most) {
        Refuse(text, NumberOf("an unsigned", bits, "0", std::to_string(most)), place);
    }
    return *number;
}

std::uint64_t ParseCount(std::string const& text, ArgumentPlace const& place)
{
    std::optional<std::uint64_t> const count = Magnitude(text);
    if (!count || *count == 0) {
        Refuse(text, "a number above 0", place);
    }
    return *count;
}

std::chrono::milliseconds ParseSeconds(std::string const& text, ArgumentPlace const& place)
{
    constexpr double Min = 0.001;
    constexpr double Max = 1000000;
    double seconds = 0;
    char const* const end = text.data() + text.size();
    auto const [stop, error] = std::from_chars(text.data(), end, seconds, std::chars_format::fixed);
    if (error != std::errc() || stop != end || !(seconds >= Min && seconds <= Max)) {
        Refuse(text, "a number of seconds (0.001 to 1000000)", place);
    }
    return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

bool ParseFlag(std::string const& text, ArgumentPlace const& place)
{
    std::string const word = ToLower(text);
    if (word == "1" || word == "true" || word == "on") {
        return true;
    }
    if (word == "0" || word == "false" || word == "off") {
        return false;
    }
    Refuse(text, "1, true or on, or 0, false or off", place);
}

std::int32_t ParseEnumerator(std::string const& text, EnumInfo const& info, ArgumentPlace const& place)
{
    using Limits = std::numeric_limits<std::int32_t>;
    std::optional<std::int64_t> const number = SignedNumber(text);
    if (number && *number >= Limits::min() && *number <= Limits::max()) {
        return static_cast<std::int32_t>(*number);
    }
    if (std::optional<std::int32_t> const value = info.ValueOf(text)) {
        return *value;
    }
    std::vector<std::string> names;
    for (EnumName const& known : info) {
        names.push_back(std::string(known.name) + " (" + std::to_string(known.value) + ")");
    }
    Refuse(text, std::string(info.Type()) + ": " + Join(names) + " or another signed 32-bit number", place);
}

} // namespace zviptv::ctl
