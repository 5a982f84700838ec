// SPDX-License-Identifier: MIT
#include "Entries.h"

#include <zviptv/Protocol.h>

#include <algorithm>

namespace zviptv::trace {

namespace {

using namespace protocol;

constexpr char Damaged[] = "not a message of the protocol: it is cut or damaged";

ValueType const* Find(Named<ValueType> const& types, std::string_view key)
{
    auto const found = types.find(key);
    return found == types.end() ? nullptr : &found->second;
}

void AddEntry(Event& event, ParsedEntry const& entry, ValueType const* type)
{
    if (!entry.signature.empty()) {
        event.problems.push_back(std::string(entry.key) + " has the D-Bus type " +
                                 std::string(entry.signature) + ", not ay");
    } else if (type != nullptr) {
        event.values.push_back(Decode(entry, *type, event.problems));
    } else {
        event.values.push_back(DecodeUntyped(entry));
        if (!event.function.empty()) {
            event.problems.push_back("unexpected key " + std::string(entry.key));
        }
    }
}

/// Function, handle and result, which every message has, are members of the event.
void TakeCommon(Event& event)
{
    auto const isCommon = [&event](Value const& value) {
        if (value.key == key::HandleID && value.json.isUInt()) {
            event.handle = value.json.asUInt();
        } else if (value.key == key::Result && value.json.isIntegral() && !event.result) {
            event.result = value.json.asInt64() != 0;
        } else {
            return value.key == key::FunctionName;
        }
        return true;
    };
    event.values.erase(std::remove_if(event.values.begin(), event.values.end(), isCommon),
                       event.values.end());
}

std::string FunctionOf(std::vector<ParsedEntry> const& entries)
{
    for (ParsedEntry const& entry : entries) {
        if (entry.key == key::FunctionName && !entry.value.empty()) {
            return std::string(entry.value);
        }
    }
    return {};
}

/// A notification with data is a push: PID, time stamp and size.
void AddPush(Event& event, std::vector<ParsedEntry> const& entries)
{
    for (Value const& value : event.values) {
        if (value.key == key::PESPID && value.json.isIntegral()) {
            event.pid = value.json.asInt64();
        } else if (value.key == key::PESPTS && value.json.isIntegral()) {
            event.pts = value.json.asInt64();
        }
    }
    for (ParsedEntry const& entry : entries) {
        if (entry.key == key::PESData || entry.key == key::CaptionData) {
            event.size = entry.value.size();
        }
    }
    if (!event.size && (event.function == function::PESCB || event.function == function::CaptionCB)) {
        event.size = 0;
    }
}

} // namespace

void AddEntries(Event& event, ParsedMessage const& message)
{
    std::vector<ParsedEntry> entries;
    try {
        entries = ReadEntries(message);
    } catch (Malformed const&) {
        event.problems.emplace_back(Damaged);
    }
    if (event.function.empty()) {
        event.function = FunctionOf(entries);
    }
    Schema const& schema = Schema::Get();
    Function const* const function = schema.Find(event.endpoint, event.function);
    if (function == nullptr && !event.function.empty()) {
        event.problems.push_back("unknown function " + event.function);
    }
    for (ParsedEntry const& entry : entries) {
        ValueType const* type = nullptr;
        if (function != nullptr) {
            type = Find(event.kind == EventKind::Reply ? function->reply : function->request, entry.key);
        }
        AddEntry(event, entry, type != nullptr ? type : Find(schema.common, entry.key));
    }
    TakeCommon(event);
    if (event.kind == EventKind::Notification) {
        AddPush(event, entries);
    }
}

void AddPairs(Event& event, ParsedMessage const& message)
{
    try {
        for (ParsedEntry const& pair : ReadPairs(message)) {
            ValueType const* const type = Find(Schema::Get().announcement.request, pair.key);
            event.values.push_back(type != nullptr ? Decode(pair, *type, event.problems)
                                                   : DecodeUntyped(pair));
            if (type == nullptr) {
                event.problems.push_back("unexpected key " + std::string(pair.key));
            }
        }
    } catch (Malformed const&) {
        event.problems.emplace_back(Damaged);
    }
}

} // namespace zviptv::trace
