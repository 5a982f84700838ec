// SPDX-License-Identifier: MIT
#include "common/ProtocolSchema.h"

#include <json/reader.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zviptv {

namespace {

// A string literal that is generated from the description.
constexpr std::string_view Text =
#include "ProtocolSchema.inc"
    ;

Json::Value Parse()
{
    std::unique_ptr<Json::CharReader> const reader(Json::CharReaderBuilder().newCharReader());
    Json::Value schema;
    std::string errors;
    if (!reader->parse(Text.data(), Text.data() + Text.size(), &schema, &errors)) {
        throw std::logic_error("the description of the protocol is not JSON: " + errors);
    }
    return schema;
}

} // namespace

Json::Value const& ProtocolSchema()
{
    static Json::Value const schema = Parse();
    return schema;
}

Json::Value const& FindEntry(Json::Value const& list, char const* name, std::string const& text)
{
    auto const found =
        std::find_if(list.begin(), list.end(), [&](Json::Value const& entry) { return entry[name] == text; });
    return found == list.end() ? Json::Value::nullSingleton() : *found;
}

} // namespace zviptv
