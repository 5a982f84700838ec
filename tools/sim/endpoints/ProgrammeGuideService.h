// SPDX-License-Identifier: MIT
#pragma once

#include "GuideLoader.h"
#include "Message.h"
#include "guide/EitReader.h"
#include "guide/ProgrammeGuide.h"
#include "playback/ParentalLock.h"
#include "playback/Player.h"

#include <ctime>
#include <functional>
#include <map>
#include <string>

namespace zviptv::sim {

/// Answers the requests of programme guide objects, from a guide file or from the stream's event information.
class ProgrammeGuideService
{
public:
    using Clock = std::function<std::int64_t()>;

    /// Tells the user something.
    using Say = std::function<void(std::string const& text)>;

    /// `now` is the guide's clock, seconds since 1970.
    ProgrammeGuideService(Player const& player, Clock now, MainLoop& loop, Say say)
        : m_player(player), m_now(std::move(now)), m_say(std::move(say)), m_loader(loop)
    {
    }

    /// @throws std::runtime_error with a line for the user
    void Load(std::string const& path);

    /// Goes back to the guide of Load(), or to the event information that the stream will bring.
    void Reset();

    /// Answers CloneUSBToTV, when the guide has been loaded or could not be; then the guide so far stays.
    void Clone(Request const& request, std::function<void(Reply const&)> const& answer);

    /// Takes the stream's event information, as long as no file was loaded.
    void Push(TsPacket const& packet);

    /// The next events are those of another stream. A guide file stays.
    void ForgetEvents();

    /// Nothing when the function is none of the programme guide, or CloneUSBToTV. Each application has its
    /// own list for GetProgram.
    std::optional<CMessageBuffer> Answer(Request const& request);

    void Forget(std::string const& busName) { m_lists.erase(busName); }

    /// What is on now on the played service.
    RatedProgramme Present() const;

    /// What the guide says of the played service. The programmes, null where there is none, are the guide's.
    struct NowAndNext
    {
        std::shared_ptr<Guide const> guide;
        GuideEntry const* present = nullptr;
        GuideEntry const* following = nullptr;
    };
    NowAndNext Programmes() const;

private:
    class Functions;

    Reply TextReply(Request const& request, std::string const& text) const;
    void Use(std::string const& path, LoadedGuide const& loaded);
    std::int64_t Now(std::uint64_t serviceId) const;

    Player const& m_player;
    Clock m_now;
    Say m_say;
    GuideLoader m_loader;
    ProgrammeGuide m_guide;
    std::shared_ptr<Guide const> m_first; ///< of Load()
    unsigned m_resets = 0;
    EitReader m_eit;
    bool m_fromFile = false;
    std::map<std::string, GuideList> m_lists;
};

} // namespace zviptv::sim
