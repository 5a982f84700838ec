// SPDX-License-Identifier: MIT
#include "LockCommands.h"

#include "output/Table.h"
#include "output/TrackText.h"
#include "session/Session.h"

namespace zviptv::ctl {

namespace {

constexpr char LockedHint[] = "'zviptvctl rating' shows what is locked";

Answer MuteAudio(Session& session, CommandArguments const& arguments)
{
    bool const on = arguments.Get<bool>(0);
    auto& player = session.Get<IPlayerControl>();
    return Done(session.Ask("MuteAudio", [&] { return player.MuteAudio(on); }),
                on ? "audio muted" : "audio not muted", on ? "mute the audio" : "unmute the audio",
                PlaybackHint);
}

Answer MuteVideo(Session& session, CommandArguments const& arguments)
{
    bool const on = arguments.Get<bool>(0);
    auto& player = session.Get<IPlayerControl>();
    return Done(session.Ask("MuteVideo", [&] { return player.MuteVideo(on); }),
                on ? "video muted" : "video not muted", on ? "mute the video" : "show the video",
                PlaybackHint);
}

/// "locked", or a dash if the service does not report it; null in JSON.
std::string LockFact(Answer& answer, std::string const& member, bool known, bool locked)
{
    answer.json[member] = known ? Json::Value(locked) : Json::Value();
    return known ? LockWord(locked) : "-";
}

Answer Ratings(Session& session, CommandArguments const& /*arguments*/)
{
    auto& broadcast = session.Get<IBroadcastData>();
    std::vector<ZVRatingInfo> ratings;
    if (!session.Ask("GetRatingInfo", [&] { return broadcast.GetRatingInfo(ratings); })) {
        return Refused("list the ratings");
    }
    Answer answer;
    Table table({"region", "dimension", "value"});
    for (ZVRatingInfo const& rating : ratings) {
        std::string const unit = rating.region == 0 ? " years" : "";
        table.Add({std::to_string(rating.region), std::to_string(rating.dimension),
                   std::to_string(rating.value) + unit});
    }
    answer.text = table.Text("no ratings");
    answer.json["ratings"] = ToJson(ratings);
    bool locked = false;
    bool known = session.Ask("GetRatingLockState", [&] { return broadcast.GetRatingLockState(locked); });
    answer.text += "programme: " + LockFact(answer, "programmeLocked", known, locked) + "\n";
    known = session.Ask("FlagServiceLocked", [&] { return broadcast.FlagServiceLocked(locked); });
    answer.text += "service:   " + LockFact(answer, "serviceLocked", known, locked) + "\n";
    return answer;
}

template <EZVParentalLock Lock>
Answer Unlock(Session& session, CommandArguments const& /*arguments*/)
{
    static char const* const done[] = {"locked again", "the present programme is unlocked",
                                       "the service is unlocked until another one is selected",
                                       "everything is unlocked until the television is switched off"};
    auto& broadcast = session.Get<IBroadcastData>();
    return Done(session.Ask("SetUnlockedInfo", [&] { return broadcast.SetUnlockedInfo(Lock); }), done[Lock],
                "change the lock", LockedHint);
}

Answer UnlockPin(Session& session, CommandArguments const& /*arguments*/)
{
    auto& broadcast = session.Get<IBroadcastData>();
    return Done(session.Ask("UnMuteByRatingPin", [&] { return broadcast.UnMuteByRatingPin(); }),
                "the locked programme is unlocked", "unlock the programme", LockedHint);
}

} // namespace

std::vector<Command> LockCommands()
{
    return {
        {"mute", "audio", {{"STATE", "on or off"}}, "Mute the sound (on) or unmute it (off)", MuteAudio},
        {"mute", "video", {{"STATE", "on or off"}}, "Mute the picture (on) or show it (off)", MuteVideo},
        {"", "rating", {}, "List the ratings of the present programme and what is locked", Ratings},
        {"unlock", "programme", {}, "Unlock the present programme", Unlock<ZV_PARENTAL_UNLOCKED_PROGRAMME>},
        {"unlock",
         "service",
         {},
         "Unlock the service until another one is selected",
         Unlock<ZV_PARENTAL_UNLOCKED_SERVICE>},
        {"unlock",
         "all",
         {},
         "Unlock everything until the television is switched off",
         Unlock<ZV_PARENTAL_UNLOCKED_ALL>},
        {"unlock", "lock", {}, "Lock again", Unlock<ZV_PARENTAL_LOCKED>},
        {"unlock", "pin", {}, "Unlock the locked programme, as if the viewer entered the PIN", UnlockPin},
    };
}

} // namespace zviptv::ctl
