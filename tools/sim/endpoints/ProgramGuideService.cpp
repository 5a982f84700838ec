#include "ProgramGuideService.h"

#include "guide/EitGuide.h"
#include "guide/GuideDetails.h"
#include "playback/StreamGuide.h"

#include <zviptv/ProxyDBusHelper.h>

namespace zviptv::sim {

namespace function = protocol::function;
namespace key = protocol::key;

namespace {

/// Longest text that an answer can carry, with room for the rest of the message.
constexpr std::size_t LargestText = CProxyDBusHelper::MAX_BODY_SIZE - 1024;

/// A text that takes one 64-bit id and nothing else.
template <typename Query>
std::string ById(Request const& request, Query query)
{
    std::optional<std::uint64_t> const id = request.Get<std::uint64_t>(key::InID);
    return id ? query(*id) : std::string();
}

} // namespace

void ProgramGuideService::Load(std::string const& path)
{
    Use(path, LoadGuideOf(m_player, path));
}

void ProgramGuideService::Use(std::string const& path, LoadedGuide const& loaded)
{
    m_guide.Use(loaded.guide);
    m_fromFile = true;
    std::vector<std::string> const& first = loaded.warnings.First();
    for (std::string const& warning : first) {
        m_say(path + ": " + warning);
    }
    if (loaded.warnings.Count() > first.size()) {
        m_say(path + ": " + std::to_string(loaded.warnings.Count() - first.size()) + " more warnings");
    }
}

void ProgramGuideService::Clone(Request const& request, std::function<void(Reply const&)> const& answer)
{
    std::string const path = request.Text(key::Path);
    auto const finish = [this, path, answer](GuideLoader::Result const& result) {
        if (result.loaded) {
            Use(path, *result.loaded);
        } else {
            m_say("cannot load the guide: " + result.error + "; the one before stays");
        }
        answer(Reply(result.loaded.has_value()).Add(key::Data, static_cast<int>(result.loaded.has_value())));
    };
    if (!m_loader.Load(path, NamesOf(m_player), finish)) {
        m_say("not loading " + path + ": another guide is being loaded; ask again later");
        answer(Reply(false).Add(key::Data, 0));
    }
}

/// Nothing found is an empty text, and so is what no message can carry.
Reply ProgramGuideService::TextReply(Request const& request, std::string const& text) const
{
    if (text.size() > LargestText) {
        m_say(request.Function() + ": the answer has " + std::to_string(text.size()) +
              " bytes, more than a message carries");
        return Reply(false).Add(key::Data, std::string());
    }
    return Reply(!text.empty()).Add(key::Data, text);
}

void ProgramGuideService::Push(TsPacket const& packet)
{
    if (!m_fromFile && m_eit.Push(packet)) {
        m_guide.Use(MakeGuide(m_eit.Table(), NamesOf(m_player)).guide);
    }
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

RatedProgramme ProgramGuideService::Present() const
{
    RatedProgramme present;
    present.service = m_player.Current().number;
    std::shared_ptr<Guide const> const guide = m_guide.Current();
    std::optional<std::uint32_t> const position =
        guide ? guide->Present(present.service, Now(present.service)) : std::nullopt;
    if (!position) {
        return present;
    }
    present.start = guide->At(*position).start;
    std::optional<GuideRating> const rating = Describe(*guide, *position).rating;
    present.minimumAge = rating ? static_cast<int>(rating->minimumAge.value_or(0)) : 0;
    return present;
}

RequestRow<ProgramGuideService> const ProgramGuideService::Rows[] = {
    {function::ExistXmlForIPG, &ProgramGuideService::ExistXmlForIPG},
    {function::GetProgramListSize, &ProgramGuideService::GetProgramListSize},
    {function::GetProgram, &ProgramGuideService::GetProgram},
    {function::GetProgramIPG, &ProgramGuideService::GetProgramIPG},
    {function::GetPresentProgram, &ProgramGuideService::GetPresentProgram},
    {function::FindProgram, &ProgramGuideService::FindProgram},
    {function::GetRating, &ProgramGuideService::GetRating},
    {function::GetGenre, &ProgramGuideService::GetGenre},
    {function::GetProgramList, &ProgramGuideService::GetProgramList},
};

std::vector<std::string> ProgramGuideService::Functions()
{
    std::vector<std::string> functions = FunctionsOf(Rows);
    functions.emplace_back(function::CloneUSBToTV);
    return functions;
}

std::optional<CMessageBuffer> ProgramGuideService::Answer(Request const& request)
{
    return AnswerFrom(Rows, *this, request);
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
    m_lists[request.Sender()] = list;
    return Reply(true).Add(key::Data, list.range.count);
}

Reply ProgramGuideService::GetProgram(Request const& request)
{
    std::optional<std::uint32_t> const index = request.Get<std::uint32_t>(key::Index);
    auto const list = m_lists.find(request.Sender());
    GuideList const& own = list == m_lists.end() ? GuideList() : list->second;
    return TextReply(request, index ? m_guide.Programme(own, *index) : std::string());
}

Reply ProgramGuideService::GetProgramIPG(Request const& request)
{
    std::optional<int> const step = request.Get<int>(key::Program);
    return TextReply(request, step ? m_guide.Programme(request.Text(key::InID), *step) : std::string());
}

Reply ProgramGuideService::GetPresentProgram(Request const& request)
{
    return TextReply(request,
                     ById(request, [this](std::uint64_t id) { return m_guide.Present(id, Now(id)); }));
}

Reply ProgramGuideService::FindProgram(Request const& request)
{
    std::optional<std::uint32_t> const event = request.Get<std::uint32_t>(key::EventID);
    return TextReply(request, ById(request, [&](std::uint64_t id) {
                         return event ? m_guide.Find(id, *event) : std::string();
                     }));
}

Reply ProgramGuideService::GetRating(Request const& request)
{
    std::optional<std::uint32_t> const event = request.Get<std::uint32_t>(key::EventID);
    return TextReply(request, event ? m_guide.Rating(*event) : std::string());
}

Reply ProgramGuideService::GetGenre(Request const& request)
{
    std::optional<std::uint32_t> const event = request.Get<std::uint32_t>(key::EventID);
    return TextReply(request, event ? m_guide.Genre(*event) : std::string());
}

Reply ProgramGuideService::GetProgramList(Request const& request)
{
    std::optional<std::uint32_t> const start = request.Get<std::uint32_t>(key::StartTime);
    std::optional<std::uint32_t> const duration = request.Get<std::uint32_t>(key::Duration);
    return TextReply(request, ById(request, [&](std::uint64_t id) {
                         return start && duration ? m_guide.List(id, *start, *duration, LargestText)
                                                  : std::string();
                     }));
}

} // namespace zviptv::sim
