// SPDX-License-Identifier: MIT
#pragma once

#include "Player.h"
#include "Selection.h"

#include <cstdint>
#include <deque>
#include <vector>

namespace zviptv::sim {

/// The last statements of the selected ISDB caption, or of the selected superimposed text, from which a
/// decoder can draw what is shown now. Lives on the player's thread.
class CaptionTap
{
public:
    CaptionTap(EZVISDBTextType type, Player const& player, Selection const& selection)
        : m_type(type), m_player(player), m_selection(selection)
    {
    }

    /// Gets every packet that is played. Whether it is one of these statements.
    bool Take(PesPacket const& pes);

    /// What was played before is not continued, and shown no longer.
    void Forget();

    /// Forgets the statements if another text has been selected since.
    void FollowSelection();

    /// The data of the groups, as broadcast.
    std::deque<std::vector<std::uint8_t>> const& Statements() const { return m_statements; }

    /// Of the last statement, or of the Forget() after it. It grows over all lives of the service.
    std::uint64_t Number() const { return m_number; }

private:
    struct Source
    {
        std::uint16_t pid = 0;
        unsigned language = 0; ///< number in the data group, from 1
        bool operator!=(Source const& other) const { return pid != other.pid || language != other.language; }
    };

    Source Selected() const;

    EZVISDBTextType m_type;
    Player const& m_player;
    Selection const& m_selection;
    Source m_source;
    std::deque<std::vector<std::uint8_t>> m_statements;
    std::uint64_t m_number = 0;
};

} // namespace zviptv::sim
