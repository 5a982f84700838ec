// SPDX-License-Identifier: MIT
#include "StatusCommands.h"

#include "output/TrackText.h"
#include "session/Session.h"

#include <cstdio>
#include <utility>

namespace zviptv::ctl {

namespace {

/// One fact per line; a value that the service does not report is a dash, and null in JSON.
class Facts
{
public:
    explicit Facts(Session& session) : m_session(session) {}

    /// The result of a call; if it fails, returns false and keeps the failure. A service that has left, or
    /// has not answered twice, is not called again.
    template <typename Interface, typename Call>
    bool Ask(std::string const& method, Call call)
    {
        if (m_isGivenUp) {
            return false;
        }
        try {
            bool const result = m_session.Ask(method, [&] { return call(m_session.Get<Interface>()); });
            m_isAnswered = true;
            return result;
        } catch (Failure const& failure) {
            m_answer.failures.push_back(failure);
            m_silences += m_session.Hangs() ? 1 : 0;
            m_isGivenUp = m_silences == 2 || !Session::IsServiceRunning();
            return false;
        }
    }

    void Add(std::string const& label, std::string const& text)
    {
        static constexpr std::size_t Width = 16;
        std::string const start = label + ":";
        m_answer.text +=
            start + std::string(start.size() < Width ? Width - start.size() : 1, ' ') + text + "\n";
    }

    /// Adds a member only to the JSON object.
    template <typename Value>
    void AddJson(std::string const& member, bool known, Value const& value)
    {
        m_answer.json[member] = Json::Value();
        if (known) {
            if constexpr (std::is_class_v<Value>) {
                m_answer.json[member] = KnownJson(value);
            } else {
                AddMember(m_answer.json, member, value);
            }
        }
    }

    template <typename Value>
    void Add(std::string const& label, std::string const& member, bool known, Value const& value,
             std::string const& text)
    {
        Add(label, known ? text : "-");
        AddJson(member, known, value);
    }

    /// Throws a Failure if no call was answered.
    Answer Take()
    {
        if (!m_isAnswered) {
            throw Failure(m_answer.failures.front());
        }
        return std::move(m_answer);
    }

private:
    Session& m_session;
    Answer m_answer;
    bool m_isAnswered = false;
    bool m_isGivenUp = false;
    int m_silences = 0;
};

std::string Seconds(unsigned long long ticks, double ticksPerSecond)
{
    char text[64];
    std::snprintf(text, sizeof text, "%llu (%.3f s)", ticks, static_cast<double>(ticks) / ticksPerSecond);
    return text;
}

/// Uses the time base that the service reports.
std::string FirstPtsText(unsigned long long pts, int denominator, int numerator)
{
    if (denominator <= 0 || numerator <= 0) {
        return std::to_string(pts);
    }
    std::string text = Seconds(pts, static_cast<double>(denominator) / numerator);
    text.pop_back();
    return text + ", time base " + std::to_string(numerator) + "/" + std::to_string(denominator) + ")";
}

std::string PictureText(cvtv_resolution_e resolution, ZVResolution const& info)
{
    std::string text = LowerName(resolution) + ", " + std::to_string(info.width) + "x" +
                       std::to_string(info.height) + (info.interlaced != 0 ? " interlaced" : "");
    if (info.frameRateDenominator != 0) {
        char rate[32];
        std::snprintf(rate, sizeof rate, ", %.2f frames/s",
                      static_cast<double>(info.frameRateNumerator) / info.frameRateDenominator);
        text += rate;
    }
    if (info.aspectHeight != 0) {
        text += ", " + std::to_string(info.aspectWidth) + ":" + std::to_string(info.aspectHeight);
    }
    return text;
}

void AddClock(Facts& facts)
{
    EZVSourceState state = ZV_SOURCE_STATE_UNKNOWN;
    bool known = facts.Ask<IPlayerControl>(
        "GetSourceState", [&](IPlayerControl& player) { return player.GetSourceState(state); });
    facts.Add("source", "sourceState", known, state, LowerName(state));

    unsigned long long stc = 0;
    known = facts.Ask<IPlayerControl>("GetSTCCount",
                                      [&](IPlayerControl& player) { return player.GetSTCCount(stc); });
    facts.Add("clock (STC)", "stc", known, stc, Seconds(stc, 90000));

    unsigned long long pts = 0;
    int denominator = 0;
    int numerator = 0;
    unsigned long now = 0;
    known = facts.Ask<IPlayerControl>("GetFirstPTS", [&](IPlayerControl& player) {
        return player.GetFirstPTS(pts, denominator, numerator, now);
    });
    facts.Add("first PTS", "firstPts", known, pts, FirstPtsText(pts, denominator, numerator));
}

void AddPicture(Facts& facts)
{
    cvtv_resolution_e resolution = CVTV_RESOLUTION_UNKNOWN;
    ZVResolution info{};
    bool const known = facts.Ask<IPlayerControl>(
        "GetResolution", [&](IPlayerControl& player) { return player.GetResolution(resolution, info); });
    facts.Add("picture", "picture", known, info, PictureText(resolution, info));
    facts.AddJson("resolution", known, resolution);
}

void AddSound(Facts& facts)
{
    EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
    int index = 0;
    bool known = facts.Ask<IBroadcastData>("GetCurrentAudioInfo", [&](IBroadcastData& broadcast) {
        return broadcast.GetCurrentAudioInfo(language, index);
    });
    ZVAudio audio{};
    known = known && index >= 0 && facts.Ask<IBroadcastData>("GetAudio", [&](IBroadcastData& broadcast) {
        return broadcast.GetAudio(static_cast<unsigned int>(index), audio);
    });
    facts.Add("audio", "audio", known, audio, std::to_string(index) + ": " + AudioText(audio));
    facts.AddJson("audioIndex", known, index);
}

void AddLocks(Facts& facts)
{
    bool locked = false;
    bool known = facts.Ask<IBroadcastData>("GetRatingLockState", [&](IBroadcastData& broadcast) {
        return broadcast.GetRatingLockState(locked);
    });
    facts.Add("programme", "programmeLocked", known, locked, LockWord(locked));
    known = facts.Ask<IBroadcastData>(
        "FlagServiceLocked", [&](IBroadcastData& broadcast) { return broadcast.FlagServiceLocked(locked); });
    facts.Add("service", "serviceLocked", known, locked, LockWord(locked));
}

Answer Status(Session& session, CommandArguments const& /*arguments*/)
{
    Facts facts(session);
    AddClock(facts);
    AddPicture(facts);
    AddSound(facts);
    AddLocks(facts);
    return facts.Take();
}

} // namespace

std::vector<Command> StatusCommands()
{
    return {{"", "status", {}, "Show what is played: state, clock, picture, sound, locks", Status}};
}

} // namespace zviptv::ctl
