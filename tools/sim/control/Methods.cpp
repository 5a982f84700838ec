// SPDX-License-Identifier: MIT
#include "Methods.h"

#include "playback/Tracks.h"
#include "verbs/Verbs.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>
#include <stdexcept>
#include <utility>

namespace zviptv::sim {

namespace {

std::string TextAt(GVariant* parameters, std::size_t index)
{
    Owned<GVariant> const value(g_variant_get_child_value(parameters, index));
    return g_variant_get_string(value.get(), nullptr);
}

guint32 NumberAt(GVariant* parameters, std::size_t index)
{
    Owned<GVariant> const value(g_variant_get_child_value(parameters, index));
    return g_variant_get_uint32(value.get());
}

double DoubleAt(GVariant* parameters, std::size_t index)
{
    Owned<GVariant> const value(g_variant_get_child_value(parameters, index));
    return g_variant_get_double(value.get());
}

/// A number with three decimals, rounded down, so that the user can enter the number that is shown.
std::string Seconds(Player::Seconds seconds)
{
    char text[64];
    std::snprintf(text, sizeof(text), "%.3f", std::floor(seconds.count() * 1000) / 1000);
    return text;
}

/// Refuses a change of the pace of live input.
void RequireFile(Service& service)
{
    Player const& player = service.Parts().player;
    if (player.State() == ZV_SOURCE_STATE_ERROR) {
        throw std::invalid_argument(player.Input() + " cannot be played: load another input first");
    }
    if (player.IsLive()) {
        throw std::invalid_argument(player.Input() +
                                    " is live input, which sets its own pace: load a file first");
    }
}

/// Call it after another input was loaded.
void FollowPaceOfInput(Service& service)
{
    Television const television = service.Parts();
    if (television.player.IsLive()) {
        television.clock.SetSpeed(1);
        television.clock.Pause(false);
    }
}

void Pause(Service& service, GVariant* /*parameters*/)
{
    RequireFile(service);
    service.Parts().clock.Pause(true);
}

void Play(Service& service, GVariant* /*parameters*/)
{
    service.Parts().clock.Pause(false);
}

void Seek(Service& service, GVariant* parameters)
{
    Player& player = service.Parts().player;
    Player::Seconds const position(DoubleAt(parameters, 0));
    RequireFile(service);
    if (player.IsArriving()) {
        throw std::invalid_argument(player.Input() + " is being written: load a finished file first");
    }
    if (service.AwaitsApplications()) {
        throw std::invalid_argument("play has not begun: --wait-for still waits for applications");
    }
    if (player.Duration() && position > *player.Duration()) {
        throw std::invalid_argument("'" + Seconds(position) + "' is beyond the end: use 0 to " +
                                    Seconds(*player.Duration()));
    }
    player.Seek(position);
}

void SetSpeed(Service& service, GVariant* parameters)
{
    double const speed = DoubleAt(parameters, 0);
    if (speed != 1) {
        RequireFile(service);
    }
    service.Parts().clock.SetSpeed(speed);
}

void SelectProgramme(Service& service, GVariant* parameters)
{
    Player& player = service.Parts().player;
    guint32 const number = NumberAt(parameters, 0);
    if (!player.SelectProgramme(static_cast<std::uint16_t>(number))) {
        std::string known;
        for (Programme const& programme : player.Programmes()) {
            known += (known.empty() ? "" : ", ") + std::to_string(programme.number);
        }
        std::string const wanted = "programme " + std::to_string(number);
        throw std::invalid_argument(
            known.empty()
                ? wanted + " is not known, because no PAT and PMT were received yet: wait until the property "
                           "Programmes lists it"
                : "the input has no " + wanted + ": use " + known);
    }
    service.FollowInput();
}

void TurnLock(Service& service, std::string const& what, bool on)
{
    ParentalLock& lock = service.Parts().lock;
    what == "programme" ? lock.LockProgramme(on) : lock.LockService(on);
}

void Lock(Service& service, GVariant* parameters)
{
    TurnLock(service, TextAt(parameters, 0), true);
}

void Unlock(Service& service, GVariant* parameters)
{
    Television const television = service.Parts();
    television.lock.Follow(television.guide.Present());
    TurnLock(service, TextAt(parameters, 0), false);
}

void SetTime(Service& service, GVariant* parameters)
{
    gint64 time = 0;
    g_variant_get(parameters, "(x)", &time);
    service.Parts().clock.SetUnixTime(time);
}

void AddFault(Service& service, GVariant* parameters)
{
    service.Parts().faults.Add(FaultText(parameters));
}

void RemoveFault(Service& service, GVariant* parameters)
{
    Television const television = service.Parts();
    std::string const text = TextAt(parameters, 0);
    if (!television.faults.Remove(text)) {
        std::string active;
        for (Faults::State const& fault : television.faults.List()) {
            active += (active.empty() ? "" : ", ") + fault.progress.text;
        }
        throw std::invalid_argument(
            "cannot remove the fault '" + text +
            "': " + (active.empty() ? "no fault is active" : "it is not active; use " + active));
    }
}

void ClearFaults(Service& service, GVariant* /*parameters*/)
{
    service.Parts().faults.Clear();
}

void Mute(Service& service, GVariant* parameters)
{
    gboolean on = FALSE;
    char const* what = nullptr;
    g_variant_get(parameters, "(&sb)", &what, &on);
    Selection& selection = service.Parts().selection;
    (std::string(what) == "audio" ? selection.audioMutedBy : selection.videoMutedBy) =
        on != FALSE ? Selection::Control : "";
}

void Select(Service& service, GVariant* parameters)
{
    Television const television = service.Parts();
    bool const isAudio = TextAt(parameters, 0) == "audio";
    guint32 const index = NumberAt(parameters, 1);
    Programme const& programme = television.player.Current();
    std::size_t const count = isAudio ? programme.audio.size() : HybridSubtitles(programme).size();
    if (index >= count) {
        throw std::invalid_argument(
            std::string(isAudio ? "there is no audio track " : "there is no subtitle ") +
            std::to_string(index) +
            (count == 0 ? ": the programme has none" : ": use 0 to " + std::to_string(count - 1)));
    }
    if (isAudio) {
        television.selection.audio = static_cast<int>(index);
    } else {
        television.selection.subtitle = index;
    }
}

void Reset(Service& service, GVariant* /*parameters*/)
{
    service.Reset();
}

struct Row
{
    char const* method;
    void (*perform)(Service& service, GVariant* parameters);
};

constexpr Row Rows[] = {
    {"Pause", Pause},
    {"Play", Play},
    {"Seek", Seek},
    {"SetSpeed", SetSpeed},
    {"SelectProgramme", SelectProgramme},
    {"Lock", Lock},
    {"Unlock", Unlock},
    {"SetTime", SetTime},
    {"AddFault", AddFault},
    {"RemoveFault", RemoveFault},
    {"ClearFaults", ClearFaults},
    {"Mute", Mute},
    {"Select", Select},
    {"Reset", Reset},
};

/// Refuses a method that would change the replay of a recording.
void RequireStreamFor(Service& service, std::string const& method)
{
    static std::set<std::string> const possible = {"AddFault", "RemoveFault", "ClearFaults", "Reset"};
    if (service.Replayed() != nullptr && possible.count(method) == 0) {
        throw std::invalid_argument(method +
                                    " is not possible: the simulator replays a recording; use die, restart, "
                                    "reset, quit or fault, or start it with --ts and without --replay");
    }
}

} // namespace

std::string FaultText(GVariant* parameters)
{
    Owned<GVariant> const options(g_variant_get_child_value(parameters, 1));
    std::string text = TextAt(parameters, 0);
    guint32 count = 0;
    if (g_variant_lookup(options.get(), "count", "u", &count) != FALSE) {
        text += ",count=" + std::to_string(count);
    }
    double seconds = 0;
    if (g_variant_lookup(options.get(), "for", "d", &seconds) != FALSE) {
        char number[G_ASCII_DTOSTR_BUF_SIZE];
        text += std::string(",for=") + g_ascii_dtostr(number, sizeof number, seconds);
    }
    return text;
}

void Perform(Service& service, std::string const& method, GVariant* parameters,
             std::function<void(std::string const& error)> done)
{
    verbs::Check(method, parameters);
    RequireStreamFor(service, method);
    if (method == "Load") {
        service.Parts().player.Open(service.InputNamed(TextAt(parameters, 0)),
                                    [&service, done = std::move(done)](std::string const& error) {
                                        if (error.empty()) {
                                            FollowPaceOfInput(service);
                                        }
                                        service.FollowInput();
                                        service.Wake();
                                        done(error);
                                    });
        return;
    }
    Row const* const row = std::find_if(std::begin(Rows), std::end(Rows),
                                        [&method](Row const& one) { return method == one.method; });
    if (row == std::end(Rows)) {
        throw std::invalid_argument(method + " is not for the service");
    }
    row->perform(service, parameters);
    service.Wake();
    done({});
}

} // namespace zviptv::sim
