// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include "commands/Arguments.h"
#include "commands/Methods.h"
#include "output/Failure.h"
#include "output/Words.h"

#include <optional>

// Any text as an argument of every type.

using namespace zviptv::ctl;
using namespace zviptv::fuzz;

namespace {

template <typename Value>
std::optional<Value> Parsed(std::string const& text)
{
    try {
        return ParseArgument<Value>(text, {"method", "name"});
    } catch (Failure const& failure) {
        Require(failure.Code() == ExitCode::Usage, "a bad argument is a usage error");
        Require(std::string(failure.what()).find("'" + text + "'") != std::string::npos, "it names the text");
    }
    return std::nullopt;
}

/// The decimal digits of a parsed number are parsed as the same number.
template <typename Number>
void CheckNumber(std::string const& text)
{
    auto const number = Parsed<Number>(text);
    Require(!number || Parsed<Number>(std::to_string(*number)) == number,
            "a printed number is read as the same number");
    Require(!number || !text.empty(), "an empty text is not a number");
}

template <typename Enumeration>
void CheckEnumeration(std::string const& text)
{
    auto const value = Parsed<Enumeration>(text);
    if (value) {
        auto const number = static_cast<std::int32_t>(*value);
        char const* const name = InfoOf<Enumeration>().NameOf(number);
        Require(name == nullptr || Parsed<Enumeration>(name) == value, "an enumerator is read by its name");
        Require(Parsed<Enumeration>(std::to_string(number)) == value, "an enumerator is read by its number");
    }
}

void CheckSeconds(std::string const& text)
{
    try {
        auto const time = ParseSeconds(text, {"method", "--seconds"});
        Require(time.count() >= 0 && time.count() <= 1'000'000'000, "a time within its limits");
        Require(ParseCount("1", {"method", "--count"}) == 1, "one is a count");
    } catch (Failure const& failure) {
        Require(failure.Code() == ExitCode::Usage, "a bad time is a usage error");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    // An argument ends at a zero byte. NOLINTNEXTLINE(readability-redundant-string-cstr)
    std::string const text = std::string(data, data + size).c_str();
    CheckNumber<std::int32_t>(text);
    CheckNumber<std::int64_t>(text);
    CheckNumber<std::uint16_t>(text);
    CheckNumber<unsigned int>(text);
    CheckNumber<unsigned long long>(text);
    CheckEnumeration<EZVLanguageCode>(text);
    CheckEnumeration<EZVCaptionService>(text);
    CheckEnumeration<EZVParentalLock>(text);
    CheckEnumeration<cvtv_resolution_e>(text);
    CheckSeconds(text);
    Parsed<bool>(text);
    Require(Parsed<std::string>(text) == text, "a text is taken as it is");
    std::vector<std::string> const near = NearWords(text, {"GetTTX", "SizeOfTTX", "GetAudio", "MuteAudio"});
    Require(near.size() <= 3, "three suggestions at most");
    return 0;
}
