// SPDX-License-Identifier: MIT
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <json/reader.h>
#include <json/value.h>

#include <glib.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Common code of the fuzz targets. A target is a source that defines LLVMFuzzerTestOneInput(): it is linked
// with libFuzzer to look for new inputs, and with replay.cpp to run those that are kept in corpus/.

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace zviptv::fuzz {

/// Ends the process, which is a finding for the fuzzer.
inline void Require(bool holds, char const* property)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", property);
        std::abort();
    }
}

inline bool IsUtf8(std::string_view text)
{
    return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

/// No character below the blank, and no delete.
inline bool HasControls(std::string_view text)
{
    for (char const character : text) {
        auto const byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7F) {
            return true;
        }
    }
    return false;
}

/// Of a text in UTF-8: no character U+0080 to U+009F, which terminals obey, too.
inline bool HasLateControls(std::string_view text)
{
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i - 1] == '\xC2' && static_cast<unsigned char>(text[i]) < 0xA0) {
            return true;
        }
    }
    return false;
}

/// One JSON value in UTF-8 on one line, without the line's end; it is stored in `value`.
inline bool ParseJsonLine(std::string const& line, Json::Value& value)
{
    Json::CharReaderBuilder rules;
    Json::CharReaderBuilder::strictMode(&rules.settings_);
    rules["strictRoot"] = false;
    std::unique_ptr<Json::CharReader> const reader(rules.newCharReader());
    return IsUtf8(line) && line.find('\n') == std::string::npos &&
           reader->parse(line.data(), line.data() + line.size(), &value, nullptr);
}

inline bool IsJsonLine(std::string const& line)
{
    Json::Value value;
    return ParseJsonLine(line, value);
}

/// The rest of the input, from its beginning.
inline std::vector<std::uint8_t> Rest(FuzzedDataProvider& input)
{
    return input.ConsumeRemainingBytes<std::uint8_t>();
}

} // namespace zviptv::fuzz
