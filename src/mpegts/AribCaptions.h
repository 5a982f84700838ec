// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zviptv {

/// A data group of ARIB captions (STD-B24): one PES packet carries one.
struct AribGroup
{
    bool isSuperimposed = false; ///< superimposed text instead of captions
    unsigned number = 0; ///< 0 management data, 1 to 8 statements of that language, others are not used
    ByteView data;       ///< the group's data, without its head and CRC
};

/// Reads the head of a group. `field` is the payload of the PES packet, from its data identifier. Nothing
/// when it is not a caption, or shorter than its head.
std::optional<AribGroup> ParseAribGroup(ByteView field);

/// A language that ARIB text comes in.
struct AribLanguage
{
    std::uint8_t tag = 0; ///< 0 to 7; the language's statements have the group number `tag` + 1
    std::string language; ///< three characters, as sent
};

using AribLanguages = std::map<std::uint16_t, std::vector<AribLanguage>>; ///< by PID

/// The languages that caption management data lists. Nothing for any other group, and for data that ends
/// within the list.
std::optional<std::vector<AribLanguage>> AribLanguagesOf(AribGroup const& group);

/// The same, from a whole PES packet.
std::optional<std::vector<AribLanguage>> ParseAribLanguages(ByteView pes);

/// The text of a group: the statement bodies among its data units, one after another. Nothing when there is
/// none. A unit that is longer than the group ends the text.
std::optional<std::vector<std::uint8_t>> AribStatement(AribGroup const& group);

} // namespace zviptv
