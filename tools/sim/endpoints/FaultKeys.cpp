// SPDX-License-Identifier: MIT
#include "FaultKeys.h"

#include "common/ProtocolSchema.h"

#include <zviptv/Protocol.h>

#include <algorithm>

namespace zviptv::sim {

namespace {

/// Adds the missing keys of a list of entries.
void AddKeys(Json::Value const& entries, std::vector<std::string>& keys)
{
    for (Json::Value const& entry : entries) {
        std::string const key = entry["key"].asString();
        if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
            keys.push_back(key);
        }
    }
}

} // namespace

std::vector<std::string> FaultKeys(FaultRule const& rule)
{
    std::vector<std::string> keys;
    Json::Value const& schema = ProtocolSchema();
    if (rule.target == FaultRule::Target::Announcement) {
        AddKeys(schema["helper"]["out"], keys);
        return keys;
    }
    bool const isPush = rule.target == FaultRule::Target::Push;
    keys.emplace_back(isPush ? protocol::key::FunctionName : protocol::key::Result);
    for (Json::Value const& endpoint : schema["endpoints"]) {
        for (Json::Value const& function : endpoint[isPush ? "notifications" : "functions"]) {
            if (rule.function == FaultRule::AllRequests || function["name"] == rule.function) {
                AddKeys(function[isPush ? "in" : "out"], keys);
            }
        }
    }
    return keys;
}

} // namespace zviptv::sim
