// SPDX-License-Identifier: MIT
#include "FailureReply.h"

#include "common/ProtocolSchema.h"

#include <algorithm>

namespace zviptv::sim {

namespace {

/// The entry of a list in the description whose member has this text; null if there is none.
Json::Value const& Find(Json::Value const& list, char const* member, std::string const& text)
{
    auto const found = std::find_if(list.begin(), list.end(),
                                    [&](Json::Value const& entry) { return entry[member] == text; });
    return found == list.end() ? Json::Value::nullSingleton() : *found;
}

std::string NoneOf(Json::Value const& value)
{
    std::string const type = value["type"].asString();
    Json::Value const& record = Find(ProtocolSchema()["records"], "name", type);
    if (!record.isNull()) {
        return std::string(record["size"].asUInt(), '\0');
    }
    if (value.isMember("none")) {
        return value["none"].asString();
    }
    return type == "text" || type == "bytes" ? "" : "0";
}

} // namespace

CMessageBuffer FailureReply(std::string const& endpoint, std::string const& function)
{
    Json::Value const& functions = Find(ProtocolSchema()["endpoints"], "type", endpoint)["functions"];
    CMessageBuffer reply;
    reply.SetResult(0);
    for (Json::Value const& value : Find(functions, "name", function)["out"]) {
        if (!value["optional"].asBool()) {
            std::string const none = NoneOf(value);
            reply.AddValue(value["key"].asCString(), static_cast<int>(none.size()), none.data());
        }
    }
    return reply;
}

} // namespace zviptv::sim
