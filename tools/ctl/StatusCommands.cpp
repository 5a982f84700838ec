#include "Commands.h"
#include "Session.h"
#include "TrackText.h"

#include <cstdio>

namespace zviptv::ctl {

namespace {

/// One fact a line; what the service does not tell is a dash, and null in JSON.
class Facts
{
public:
    explicit Facts(Answer& answer) : m_answer(answer) {}

    void Add(std::string const& label, std::string const& text)
    {
        static constexpr std::size_t Width = 16;
        std::string const start = label + ":";
        m_answer.text +=
            start + std::string(start.size() < Width ? Width - start.size() : 1, ' ') + text + "\n";
    }

    /// The member of the JSON object alone.
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

private:
    Answer& m_answer;
};

std::string Seconds(unsigned long long ticks, double ticksPerSecond)
{
    char text[64];
    std::snprintf(text, sizeof text, "%llu (%.3f s)", ticks, static_cast<double>(ticks) / ticksPerSecond);
    return text;
}

/// With the time base as the service tells it.
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

void AddClock(Session& session, Facts& facts)
{
    auto& player = session.Get<IPlayerControl>();
    EZVSourceState state = ZV_SOURCE_STATE_UNKNOWN;
    bool known = session.Ask("GetSourceState", [&] { return player.GetSourceState(state); });
    facts.Add("source", "sourceState", known, state, LowerName(state));

    unsigned long long stc = 0;
    known = session.Ask("GetSTCCount", [&] { return player.GetSTCCount(stc); });
    facts.Add("clock (STC)", "stc", known, stc, Seconds(stc, 90000));

    unsigned long long pts = 0;
    int denominator = 0;
    int numerator = 0;
    unsigned long now = 0;
    known = session.Ask("GetFirstPTS", [&] { return player.GetFirstPTS(pts, denominator, numerator, now); });
    facts.Add("first PTS", "firstPts", known, pts, FirstPtsText(pts, denominator, numerator));
}

void AddPicture(Session& session, Facts& facts)
{
    auto& player = session.Get<IPlayerControl>();
    cvtv_resolution_e resolution = CVTV_RESOLUTION_UNKNOWN;
    ZVResolution info{};
    bool const known = session.Ask("GetResolution", [&] { return player.GetResolution(resolution, info); });
    facts.Add("picture", "picture", known, info, PictureText(resolution, info));
    facts.AddJson("resolution", known, resolution);
}

void AddSound(Session& session, Facts& facts)
{
    auto& broadcast = session.Get<IBroadcastData>();
    EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
    int index = 0;
    bool known =
        session.Ask("GetCurrentAudioInfo", [&] { return broadcast.GetCurrentAudioInfo(language, index); });
    ZVAudio audio{};
    known = known && index >= 0 && session.Ask("GetAudio", [&] {
        return broadcast.GetAudio(static_cast<unsigned int>(index), audio);
    });
    facts.Add("audio", "audio", known, audio, std::to_string(index) + ": " + AudioText(audio));
    facts.AddJson("audioIndex", known, index);
}

void AddLocks(Session& session, Facts& facts)
{
    auto& broadcast = session.Get<IBroadcastData>();
    bool locked = false;
    bool known = session.Ask("GetRatingLockState", [&] { return broadcast.GetRatingLockState(locked); });
    facts.Add("programme", "programmeLocked", known, locked, LockWord(locked));
    known = session.Ask("FlagServiceLocked", [&] { return broadcast.FlagServiceLocked(locked); });
    facts.Add("service", "serviceLocked", known, locked, LockWord(locked));
}

Answer Status(Session& session, CommandArguments const& /*arguments*/)
{
    Answer answer;
    Facts facts(answer);
    AddClock(session, facts);
    AddPicture(session, facts);
    AddSound(session, facts);
    AddLocks(session, facts);
    return answer;
}

} // namespace

std::vector<Command> StatusCommands()
{
    return {{"", "status", {}, "Show what is played: state, clock, picture, sound, locks", Status}};
}

} // namespace zviptv::ctl
