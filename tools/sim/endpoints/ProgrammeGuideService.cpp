// SPDX-License-Identifier: MIT
#include "ProgrammeGuideService.h"

#include "RequestTable.h"
#include "guide/EitGuide.h"
#include "playback/StreamGuide.h"

#include <zviptv/ProxyDBusHelper.h>

namespace zviptv::sim {

namespace function = protocol::function;
namespace key = protocol::key;

namespace {

/// The longest text in an answer, with room for the rest of the message.
constexpr std::size_t LargestText = CProxyDBusHelper::MAX_BODY_SIZE - 1024;

/// The text of a query whose only argument is a 64-bit id.
template <typename Query>
std::string ById(Request const& request, Query query)
{
    std::optional<std::uint64_t> const id = request.Get<std::uint64_t>(key::InID);
    return id ? query(*id) : std::string();
}

} // namespace

void ProgrammeGuideService::Load(std::string const& path)
{
    Use(path, LoadGuideOf(m_player, path));
    m_first = m_guide.Current();
}

void ProgrammeGuideService::Reset()
{
    ++m_resets;
    m_lists.clear();
    m_guide.Use(m_first);
    m_fromFile = m_first != nullptr;
    m_eit = EitReader();
}

void ProgrammeGuideService::Use(std::string const& path, LoadedGuide const& loaded)
{
    m_guide.Use(loaded.guide);
    m_fromFile = true;
    std::vector<std::string> const& first = loaded.warnings.First();
    for (std::string const& warning : first) {
        m_printLine(path + ": " + warning);
    }
    if (loaded.warnings.Count() > first.size()) {
        m_printLine(path + ": " + std::to_string(loaded.warnings.Count() - first.size()) + " more warnings");
    }
}

void ProgrammeGuideService::Clone(Request const& request, std::function<void(Reply const&)> const& answer)
{
    std::string const path = request.Text(key::Path);
    auto const finish = [this, path, answer, resets = m_resets](GuideLoader::Result const& result) {
        if (resets != m_resets) {
            answer(Reply(false).Add(key::Data, 0)); // for a television that has been reset
            return;
        }
        if (result.loaded) {
            Use(path, *result.loaded);
        } else {
            m_printLine("cannot load the guide: " + result.error + "; the previous one stays loaded");
        }
        answer(Reply(result.loaded.has_value()).Add(key::Data, static_cast<int>(result.loaded.has_value())));
    };
    if (!m_loader.Load(path, NamesOf(m_player), finish)) {
        m_printLine("not loading " + path + ": another guide is being loaded; ask again later");
        answer(Reply(false).Add(key::Data, 0));
    }
}

/// The answer is an empty text if nothing was found, or if the text does not fit into a message.
Reply ProgrammeGuideService::TextReply(Request const& request, std::string const& text) const
{
    if (text.size() > LargestText) {
        m_printLine(request.Function() + ": the answer has " + std::to_string(text.size()) +
                    " bytes, more than a message can hold");
        return Reply(false).Add(key::Data, std::string());
    }
    return Reply(!text.empty()).Add(key::Data, text);
}

void ProgrammeGuideService::Push(TsPacket const& packet)
{
    if (!m_fromFile && m_eit.Push(packet)) {
        m_guide.Use(MakeGuide(m_eit.Table(), NamesOf(m_player)).guide);
    }
}

void ProgrammeGuideService::ForgetEvents()
{
    m_eit = EitReader();
    if (!m_fromFile) {
        m_guide.Use(MakeGuide(m_eit.Table()).guide);
    }
}

/// The event that the stream marks as present is present, whatever the guide's clock: the events of a
/// recording have the time of the recording.
std::int64_t ProgrammeGuideService::Now(std::uint64_t serviceId) const
{
    EitEvent const* const present = m_fromFile || serviceId > UINT16_MAX
                                        ? nullptr
                                        : m_eit.Table().Present(static_cast<std::uint16_t>(serviceId));
    return present != nullptr && present->start ? *present->start : m_now();
}

RatedProgramme ProgrammeGuideService::Present() const
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
    std::optional<GuideRating> const& rating = guide->At(*position).rating;
    present.minimumAge = rating ? static_cast<int>(rating->minimumAge.value_or(0)) : 0;
    return present;
}

ProgrammeGuideService::NowAndNext ProgrammeGuideService::Programmes() const
{
    NowAndNext programmes{m_guide.Current()};
    std::uint64_t const id = m_player.Current().number;
    GuideService const* const service = programmes.guide ? programmes.guide->FindService(id) : nullptr;
    if (service == nullptr) {
        return programmes;
    }
    std::int64_t const now = Now(id);
    for (GuideEntry const& entry : service->entries) {
        if (entry.start > now) {
            programmes.following = &entry;
            break;
        }
        if (static_cast<std::int64_t>(entry.Stop()) > now) {
            programmes.present = &entry;
        }
    }
    return programmes;
}

/// The functions of the programme guide.
class ProgrammeGuideService::Functions
{
public:
    explicit Functions(ProgrammeGuideService& service) : m_service(service) {}

    Reply ExistXmlForIPG(Request const& /*request*/)
    {
        return Reply(true).Add(key::Data, static_cast<int>(m_service.m_guide.Exists()));
    }

    Reply GetProgramListSize(Request const& request)
    {
        std::optional<std::uint64_t> const id = request.Get<std::uint64_t>(key::InID);
        std::optional<std::uint32_t> const start = request.Get<std::uint32_t>(key::StartTime);
        std::optional<std::uint32_t> const duration = request.Get<std::uint32_t>(key::Duration);
        if (!id || !start || !duration) {
            return Reply(false).Add(key::Data, 0);
        }
        GuideList const list = m_service.m_guide.Select(*id, *start, *duration);
        m_service.m_lists[request.Sender()] = list;
        return Reply(true).Add(key::Data, list.range.count);
    }

    Reply GetProgram(Request const& request)
    {
        std::optional<std::uint32_t> const index = request.Get<std::uint32_t>(key::Index);
        auto const list = m_service.m_lists.find(request.Sender());
        GuideList const& own = list == m_service.m_lists.end() ? GuideList() : list->second;
        return m_service.TextReply(request, index ? m_service.m_guide.Programme(own, *index) : std::string());
    }

    Reply GetProgramIPG(Request const& request)
    {
        std::optional<int> const step = request.Get<int>(key::Program);
        return m_service.TextReply(request, step ? m_service.m_guide.Programme(request.Text(key::InID), *step)
                                                 : std::string());
    }

    Reply GetPresentProgram(Request const& request)
    {
        return m_service.TextReply(request, ById(request, [this](std::uint64_t id) {
                                       return m_service.m_guide.Present(id, m_service.Now(id));
                                   }));
    }

    Reply FindProgram(Request const& request)
    {
        std::optional<std::uint32_t> const event = request.Get<std::uint32_t>(key::EventID);
        return m_service.TextReply(request, ById(request, [&](std::uint64_t id) {
                                       return event ? m_service.m_guide.Find(id, *event) : std::string();
                                   }));
    }

    Reply GetRating(Request const& request)
    {
        std::optional<std::uint32_t> const event = request.Get<std::uint32_t>(key::EventID);
        return m_service.TextReply(request, event ? m_service.m_guide.Rating(*event) : std::string());
    }

    Reply GetGenre(Request const& request)
    {
        std::optional<std::uint32_t> const event = request.Get<std::uint32_t>(key::EventID);
        return m_service.TextReply(request, event ? m_service.m_guide.Genre(*event) : std::string());
    }

    Reply GetProgramList(Request const& request)
    {
        std::optional<std::uint32_t> const start = request.Get<std::uint32_t>(key::StartTime);
        std::optional<std::uint32_t> const duration = request.Get<std::uint32_t>(key::Duration);
        return m_service.TextReply(request, ById(request, [&](std::uint64_t id) {
                                       return start && duration
                                                  ? m_service.m_guide.List(id, *start, *duration, LargestText)
                                                  : std::string();
                                   }));
    }

private:
    ProgrammeGuideService& m_service;
};

std::optional<CMessageBuffer> ProgrammeGuideService::Answer(Request const& request)
{
    static constexpr RequestRow<Functions> rows[] = {
        {function::ExistXmlForIPG, &Functions::ExistXmlForIPG},
        {function::GetProgramListSize, &Functions::GetProgramListSize},
        {function::GetProgram, &Functions::GetProgram},
        {function::GetProgramIPG, &Functions::GetProgramIPG},
        {function::GetPresentProgram, &Functions::GetPresentProgram},
        {function::FindProgram, &Functions::FindProgram},
        {function::GetRating, &Functions::GetRating},
        {function::GetGenre, &Functions::GetGenre},
        {function::GetProgramList, &Functions::GetProgramList},
    };
    Functions functions(*this);
    return AnswerFrom(rows, functions, request);
}

} // namespace zviptv::sim
