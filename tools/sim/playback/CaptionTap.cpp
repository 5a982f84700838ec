// SPDX-License-Identifier: MIT
#include "CaptionTap.h"

#include "Tracks.h"
#include "mpegts/AribCaptions.h"
#include "mpegts/PesHeader.h"

#include <chrono>

namespace zviptv::sim {

namespace {

constexpr std::size_t MaxStatements = 4; // one may add to what those before it have drawn

/// Grows over all lives of the service.
std::uint64_t NumberAfter(std::uint64_t number)
{
    auto const now = std::chrono::steady_clock::now().time_since_epoch();
    auto const microseconds = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    return number == 0 ? static_cast<std::uint64_t>(microseconds) : number + 1;
}

} // namespace

CaptionTap::Source CaptionTap::Selected() const
{
    std::vector<ZVISDBText> const texts = IsdbTexts(m_player.Current(), m_type, m_player.TextLanguages());
    std::size_t const index = m_selection.isdbText.at(static_cast<std::size_t>(m_type));
    return index < texts.size() ? Source{texts[index].pid, texts[index].languageTag + 1U} : Source();
}

bool CaptionTap::Take(PesPacket const& pes)
{
    if (pes.kind != StreamKind::AribCaption && pes.kind != StreamKind::AribSuperimpose) {
        return false;
    }
    FollowSelection();
    std::optional<PesHeader> const header = ParsePesHeader(pes.bytes);
    std::optional<AribGroup> const group = header ? ParseAribGroup(header->payload) : std::nullopt;
    if (!group || pes.pid != m_source.pid || group->number != m_source.language) {
        return false;
    }
    m_statements.push_back(group->data.Copy());
    if (m_statements.size() > MaxStatements) {
        m_statements.pop_front();
    }
    m_number = NumberAfter(m_number);
    return true;
}

void CaptionTap::Forget()
{
    m_statements.clear();
    m_number = NumberAfter(m_number);
}

void CaptionTap::FollowSelection()
{
    Source const selected = Selected();
    if (selected != m_source) {
        m_source = selected;
        Forget();
    }
}

} // namespace zviptv::sim
