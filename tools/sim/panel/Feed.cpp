// SPDX-License-Identifier: MIT
#include "Feed.h"

#include <json/writer.h>

#include <algorithm>

namespace zviptv::sim {

namespace {

constexpr std::size_t MessagesAtOnce = 500;

/// Adds `item` to a list without its brackets.
void Append(std::string& list, std::string const& item)
{
    list += (list.empty() ? "" : ",") + item;
}

} // namespace

std::string ToText(Json::Value const& json)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return Json::writeString(builder, json);
}

void Feed::Set(std::string const& property, Json::Value const& value)
{
    std::string text = ToText(value);
    Property& known = m_properties[property];
    if (known.version == 0 || known.value != text) {
        known = {std::move(text), ++m_version};
    }
}

void Feed::Add(std::string const& message)
{
    m_messages.push_back(message);
    m_bytes += message.size();
    while (m_messages.size() > MaxMessages || m_bytes > MaxBytes) {
        m_bytes -= m_messages.front().size();
        m_messages.pop_front();
        ++m_first;
    }
}

std::string Feed::Next(Place& place) const
{
    std::string state;
    for (auto const& [name, property] : m_properties) {
        if (property.version > place.version) {
            Append(state, "\"" + name + "\":" + property.value);
        }
    }
    place.version = m_version;
    std::uint64_t const missed = m_first - std::min(m_first, place.message);
    std::uint64_t const begin = std::max(m_first, place.message);
    std::uint64_t const end = std::min<std::uint64_t>(m_first + m_messages.size(), begin + MessagesAtOnce);
    std::string messages;
    for (std::uint64_t number = begin; number < end; ++number) {
        Append(messages, m_messages[number - m_first]);
    }
    place.message = end;
    if (state.empty() && messages.empty()) {
        return {};
    }
    return "{\"state\":{" + state + "},\"missed\":" + std::to_string(missed) + ",\"messages\":[" + messages +
           "]}";
}

} // namespace zviptv::sim
