#include "ProgramGuideService.h"

#include "RequestTable.h"
#include "guide/EitGuide.h"
#include "guide/GuideDetails.h"
#include "guide/GuideError.h"

#include <array>
#include <cstdio>

namespace zviptv::sim {

namespace function = protocol::function;
namespace key = protocol::key;

namespace {

Reply TextReply(std::string const& text)
{
    return Reply(!text.empty()).Add(key::Data, text);
}

/// A text that takes one 64-bit id and nothing else.
template <typename Query>
Reply ById(Request const& request, Query query)
{
    std::optional<std::uint64_t> const id = request.Get<std::uint64_t>(key::InID);
    return TextReply(id ? query(*id) : std::string());
}

} // namespace

GuideWarnings ProgramGuideService::Load(std::string const& path)
{
    GuideWarnings warnings = m_guide.Load(path, NamesOfStream());
    m_fromFile = true;
    return warnings;
}

void ProgramGuideService::Push(TsPacket const& packet)
{
    if (!m_fromFile && m_eit.Push(packet)) {
        m_guide.Use(MakeGuide(m_eit.Table(), NamesOfStream()).guide);
    }
}

ServiceNames ProgramGuideService::NamesOfStream() const
{
    ServiceNames names;
    for (Programme const& programme : m_player.Programmes()) {
        if (!programme.name.empty()) {
            names.emplace(programme.name, programme.number);
        }
    }
    return names;
}

/// What the stream calls present is present, whatever our clock says: a recording's events are of its own
/// time.
std::int64_t ProgramGuideService::Now(std::uint64_t serviceId) const
{
    EitEvent const* const present = m_fromFile || serviceId > UINT16_MAX
                                        ? nullptr
                                        : m_eit.Table().Present(static_cast<std::uint16_t>(serviceId));
    return present != nullptr && present->start ? *present->start : m_now();
}

int ProgramGuideService::PresentMinimumAge() const
{
    std::uint64_t const service = m_player.Current().number;
    std::shared_ptr<Guide const> const guide = m_guide.Current();
    std::optional<std::uint32_t> const position =
        guide ? guide->Present(service, Now(service)) : std::nullopt;
    if (!position) {
        return 0;
    }
    std::optional<GuideRating> const rating = Describe(*guide, *position).rating;
    return rating ? static_cast<int>(rating->minimumAge.value_or(0)) : 0;
}

std::optional<CMessageBuffer> ProgramGuideService::Answer(Request const& request, std::string const& busName)
{
    using Self = ProgramGuideService;
    static constexpr std::array<RequestRow<Self>, 10> rows{{
        {function::ExistXmlForIPG, &Self::ExistXmlForIPG},
        {function::GetProgramListSize, &Self::GetProgramListSize},
        {function::GetProgram, &Self::GetProgram},
        {function::GetProgramIPG, &Self::GetProgramIPG},
        {function::GetPresentProgram, &Self::GetPresentProgram},
        {function::FindProgram, &Self::FindProgram},
        {function::GetRating, &Self::GetRating},
        {function::GetGenre, &Self::GetGenre},
        {function::GetProgramList, &Self::GetProgramList},
        {function::CloneUSBToTV, &Self::CloneUSBToTV},
    }};
    m_asking = busName;
    return AnswerFrom(rows, *this, request);
}

Reply ProgramGuideService::ExistXmlForIPG(Request const& /*request*/)
{
    return Reply(true).Add(key::Data, static_cast<int>(m_guide.Exists()));
}

Reply ProgramGuideService::GetProgramListSize(Request const& request)
{
    std::optional<std::uint64_t> const id = request.Get<std::uint64_t>(key::InID);
    std::optional<std::uint32_t> const start = request.Get<std::uint32_t>(key::StartTime);
    std::optional<std::uint32_t> const duration = request.Get<std::uint32_t>(key::Duration);
    if (!id || !start || !duration) {
        return Reply(false).Add(key::Data, 0);
    }
    GuideList const list = m_guide.Select(*id, *start, *duration);
    m_lists[m_asking] = list;
    return Reply(true).Add(key::Data, list.range.count);
}

Reply ProgramGuideService::GetProgram(Request const& request)
{
    std::optional<std::uint32_t> const index = request.Get<std::uint32_t>(key::Index);
    return TextReply(index ? m_guide.Programme(m_lists[m_asking], *index) : std::string());
}

Reply ProgramGuideService::GetProgramIPG(Request const& request)
{
    std::optional<int> const step = request.Get<int>(key::Program);
    return TextReply(step ? m_guide.Programme(request.Text(key::InID), *step) : std::string());
}

Reply ProgramGuideService::GetPresentProgram(Request const& request)
{
    return ById(request, [this](std::uint64_t id) { return m_guide.Present(id, Now(id)); });
}

Reply ProgramGuideService::FindProgram(Request const& request)
{
    std::optional<std::uint32_t> const event = request.Get<std::uint32_t>(key::EventID);
    return ById(request, [&](std::uint64_t id) { return event ? m_guide.Find(id, *event) : std::string(); });
}

Reply ProgramGuideService::GetRating(Request const& request)
{
    std::optional<std::uint32_t> const event = request.Get<std::uint32_t>(key::EventID);
    return TextReply(event ? m_guide.Rating(*event) : std::string());
}

Reply ProgramGuideService::GetGenre(Request const& request)
{
    std::optional<std::uint32_t> const event = request.Get<std::uint32_t>(key::EventID);
    return TextReply(event ? m_guide.Genre(*event) : std::string());
}

Reply ProgramGuideService::GetProgramList(Request const& request)
{
    std::optional<std::uint32_t> const start = request.Get<std::uint32_t>(key::StartTime);
    std::optional<std::uint32_t> const duration = request.Get<std::uint32_t>(key::Duration);
    return ById(request, [&](std::uint64_t id) {
        return start && duration ? m_guide.List(id, *start, *duration) : std::string();
    });
}

Reply ProgramGuideService::CloneUSBToTV(Request const& request)
{
    try {
        Load(request.Text(key::Path));
        return Reply(true).Add(key::Data, 1);
    } catch (GuideError const& failure) {
        std::fprintf(stderr, "zviptv-sim: %s\n", failure.what());
        return Reply(false).Add(key::Data, 0);
    }
}

} // namespace zviptv::sim
