// SPDX-License-Identifier: MIT
#pragma once

#include <json/reader.h>
#include <json/value.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace zviptv::test {

/// Throws std::runtime_error if the text is not a JSON object or array.
inline Json::Value ParseJson(std::string const& text)
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    std::unique_ptr<Json::CharReader> const reader(builder.newCharReader());
    Json::Value value;
    std::string errors;
    if (!reader->parse(text.data(), text.data() + text.size(), &value, &errors)) {
        throw std::runtime_error("no JSON: " + text + "\n" + errors);
    }
    return value;
}

} // namespace zviptv::test
