// SPDX-License-Identifier: MIT
#include "RequestKey.h"

#include "common/PrintableText.h"

#include <zviptv/Protocol.h>

#include <map>

namespace zviptv::sim {

namespace key = protocol::key;

namespace {

/// The significant entries by key: the first of several with the same key; empty values are omitted.
std::map<std::string, std::string> EntriesOf(CMessageBuffer const& request)
{
    std::map<std::string, std::string> entries;
    for (int i = 0; i < request.Size(); ++i) {
        entries.emplace(request.GetKey(i), request.GetValue(i));
    }
    for (auto entry = entries.begin(); entry != entries.end();) {
        entry = entry->second.empty() ? entries.erase(entry) : std::next(entry);
    }
    return entries;
}

void Append(std::string& text, std::string const& part)
{
    text += std::to_string(part.size()) + ":" + part;
}

std::string Join(std::string const& endpoint, std::map<std::string, std::string> const& entries)
{
    std::string text;
    Append(text, endpoint);
    for (auto const& [name, value] : entries) {
        Append(text, name);
        Append(text, value);
    }
    return text;
}

} // namespace

RequestKey KeyOf(std::string const& endpoint, CMessageBuffer const& request)
{
    auto entries = EntriesOf(request);
    if (entries[key::FunctionName] == protocol::function::SetAppID) {
        entries.erase(key::AppID);
    }
    std::string exact = Join(endpoint, entries);
    entries.erase(key::HandleID);
    return {std::move(exact), Join(endpoint, entries)};
}

std::string AnnouncementKey(std::string const& type, bool comesUp)
{
    return Join(std::string(), {{key::Type, type}, {key::Add, comesUp ? "y" : "n"}});
}

std::string Described(CMessageBuffer const& request)
{
    constexpr std::size_t longest = 200;
    auto entries = EntriesOf(request);
    std::string text = entries[key::FunctionName];
    entries.erase(key::FunctionName);
    entries.erase(key::HandleID);
    for (auto const& [name, value] : entries) {
        text +=
            " " + name + "=" + (value.size() <= longest ? value : std::to_string(value.size()) + " bytes");
    }
    return EscapeText(text);
}

} // namespace zviptv::sim
