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

    /// Prints a line for the user.
    using PrintLine = std::function<void(std::string const& text)>;

    /// `now` is the guide's clock, seconds since 1970.
    ProgrammeGuideService(Player const& player, Clock now, MainLoop& loop, PrintLine printLine)
        : m_player(player), m_now(std::move(now)), m_printLine(std::move(printLine)), m_loader(loop)
    {
    }

    /// @throws std::runtime_error with a line for the user
    void Load(std::string const& path);

    /// Restores the guide of Load(), or starts to use the stream's event information again.
    void Reset();

    /// Answers CloneUSBToTV after the guide has been loaded. If it could not be loaded, the previous guide
    /// stays.
    void Clone(Request const& request, std::function<void(Reply const&)> const& answer);

    /// Stores the stream's event information, unless a file was loaded.
    void Push(TsPacket const& packet);

    /// Discards the events of the stream, because another one follows. A guide file stays loaded.
    void ForgetEvents();

    /// Returns nullopt for CloneUSBToTV, and if the function is not one of the programme guide. Each
    /// application has a separate list for GetProgram.
    std::optional<CMessageBuffer> Answer(Request const& request);

    void Forget(std::string const& busName) { m_lists.erase(busName); }

    /// The present programme of the service that is played.
    RatedProgramme Present() const;

    /// The guide's data about the service that is played. The guide owns the programmes, which are null if
    /// there are none.
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
    PrintLine m_printLine;
    GuideLoader m_loader;
    ProgrammeGuide m_guide;
    std::shared_ptr<Guide const> m_first; ///< guide of Load()
    unsigned m_resets = 0;
    EitReader m_eit;
    bool m_fromFile = false;
    std::map<std::string, GuideList> m_lists;
};

} // namespace zviptv::sim
