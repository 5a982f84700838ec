// SPDX-License-Identifier: MIT
#pragma once

#include "Message.h"

#include <zviptv/IPTVTypes.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace zviptv::sim {

// Requests for records of lists, and their replies.

/// The type of ISDB text in a request; nullopt for an unknown number.
inline std::optional<EZVISDBTextType> TextType(Request const& request)
{
    std::optional<int> const type = request.Get<int>(protocol::key::Mode);
    bool const known = type && (*type == ZV_ISDB_TEXT_CAPTION || *type == ZV_ISDB_TEXT_SUPERIMPOSE);
    return known ? std::optional<EZVISDBTextType>(static_cast<EZVISDBTextType>(*type)) : std::nullopt;
}

/// An entry of a list; nullopt after its end.
template <typename Record, typename Index>
std::optional<Record> At(std::vector<Record> const& records, std::optional<Index> index)
{
    bool const exists = index && *index >= Index{} && static_cast<std::size_t>(*index) < records.size();
    return exists ? std::optional<Record>(records[static_cast<std::size_t>(*index)]) : std::nullopt;
}

template <typename Record>
Reply RecordReply(char const* key, std::optional<Record> const& record)
{
    return Reply(record.has_value()).AddRecord(key, record.value_or(Record{}));
}

template <typename Record, typename Index>
Reply LanguageAndIndex(std::vector<Record> const& records, Index index)
{
    std::optional<Record> const current = At(records, std::optional<Index>(index));
    return Reply(current.has_value())
        .Add(protocol::key::LandCode, static_cast<int>(current.value_or(Record{}).language))
        .Add(protocol::key::Index, index);
}

template <typename Record>
Reply SizeReply(std::vector<Record> const& records)
{
    return Reply(true).Add(protocol::key::Size, records.size());
}

} // namespace zviptv::sim
