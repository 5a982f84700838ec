// SPDX-License-Identifier: MIT
#include "Dictionary.h"
#include "Report.h"

namespace zviptv::sim {

namespace {

using Clock = SimulatedClock;

std::int64_t Nanoseconds(Clock::Time time)
{
    return std::chrono::nanoseconds(time.time_since_epoch()).count();
}

GVariant* KeepFaults(Faults const& faults)
{
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("a(sxtt)"));
    for (Faults::State const& fault : faults.List()) {
        Faults::Progress const& progress = fault.progress;
        g_variant_builder_add(&list, "(sxtt)", progress.text.c_str(), gint64{Nanoseconds(progress.since)},
                              guint64{progress.met}, guint64{progress.drawn});
    }
    return g_variant_builder_end(&list);
}

void RestoreFaults(Faults& faults, GVariant* list)
{
    faults.Clear();
    GVariantIter entries;
    g_variant_iter_init(&entries, list);
    char const* text = nullptr;
    gint64 since = 0;
    guint64 met = 0;
    guint64 drawn = 0;
    while (g_variant_iter_next(&entries, "(&sxtt)", &text, &since, &met, &drawn) != FALSE) {
        faults.Resume({text, Faults::Time(std::chrono::nanoseconds(since)), met, drawn});
    }
}

/// Speed and pause, and the rest of the clock if it continues.
void RestoreClock(Clock& clock, GVariant* kept)
{
    if (std::optional<Clock::State> const state = ClockOf(kept)) {
        clock.Continue(*state);
        return;
    }
    double speed = 1;
    gboolean paused = FALSE;
    g_variant_lookup(kept, "speed", "d", &speed);
    g_variant_lookup(kept, "paused", "b", &paused);
    clock.SetSpeed(speed);
    clock.Pause(paused != FALSE);
}

/// The present position of a stream that began at that time; if it loops, the position in the present pass.
Player::Seconds PositionNow(Clock const& clock, std::int64_t begin, double duration, bool loops)
{
    return Player::PositionAfter(std::chrono::nanoseconds(Nanoseconds(clock.Shows()) - begin),
                                 duration > 0 ? std::optional(Player::Seconds(duration)) : std::nullopt,
                                 loops);
}

/// The input and its present position.
void RestoreInput(Service& service, GVariant* kept, InputOptions const& input)
{
    Player& player = service.Parts().player;
    guint32 number = 0;
    bool const isChosen = g_variant_lookup(kept, "programme", "u", &number) != FALSE;
    auto const programme = isChosen ? std::optional(static_cast<std::uint16_t>(number)) : std::nullopt;
    gint64 begin = 0;
    bool const hasBegun = g_variant_lookup(kept, "begin", "x", &begin) != FALSE;
    if (hasBegun) {
        service.BeginAtOnce();
    }
    try {
        if (input.url != player.Input() || isChosen) {
            player.OpenAndWait(input, programme);
        }
        if (hasBegun && !player.IsArriving()) {
            double duration = 0;
            g_variant_lookup(kept, "duration", "d", &duration);
            player.GoTo(PositionNow(service.Parts().clock, begin, duration, service.Loops()));
        }
    } catch (StreamError const& failure) {
        player.Fail(input, programme, failure.what());
    }
}

} // namespace

Owned<GVariant> Keep(Service& service)
{
    Television const television = service.Parts();
    Clock::State const& clock = television.clock.Keep();
    Dictionary kept;
    kept.Add("input", television.player.Input())
        .Add("faults", KeepFaults(television.faults))
        .Add("speed", g_variant_new_double(clock.speed))
        .Add("paused", g_variant_new_boolean(clock.paused ? TRUE : FALSE))
        .Add("clock",
             g_variant_new("(xxx)", gint64{clock.real}, gint64{clock.simulated}, gint64{clock.unixOffset}))
        .Add("loops", g_variant_new_boolean(service.Loops() ? TRUE : FALSE))
        .Add("locksEvery", g_variant_new_boolean(television.lock.LocksEveryProgramme() ? TRUE : FALSE))
        .Add("locksService", g_variant_new_boolean(television.lock.LocksService() ? TRUE : FALSE));
    if (Replay const* const replay = service.Replayed()) {
        kept.Add("replayedLife", g_variant_new_uint32(static_cast<guint32>(replay->NextLife())));
    }
    if (std::optional<std::uint16_t> const choice = television.player.Choice()) {
        kept.Add("programme", g_variant_new_uint32(*choice));
    }
    bool const hasPosition = !service.AwaitsApplications() && !television.player.IsArriving();
    if (hasPosition && television.player.State() != ZV_SOURCE_STATE_STARTING) {
        kept.Add("begin", g_variant_new_int64(Nanoseconds(television.player.BeganAt())))
            .Add("duration",
                 g_variant_new_double(television.player.Duration().value_or(Player::Seconds(0)).count()));
    }
    return kept.Take();
}

void Restore(Service& service, GVariant* kept)
{
    Television const television = service.Parts();
    guint32 life = 0;
    if (service.Replayed() != nullptr && g_variant_lookup(kept, "replayedLife", "u", &life) != FALSE) {
        service.Replayed()->Begin(life);
    }
    char const* input = nullptr;
    if (g_variant_lookup(kept, "input", "&s", &input) == FALSE) {
        return; // there was no previous one
    }
    RestoreFaults(television.faults, Entry(kept, "faults", "a(sxtt)").get());
    RestoreClock(television.clock, kept);
    gboolean locksEvery = FALSE;
    gboolean locksService = FALSE;
    g_variant_lookup(kept, "locksEvery", "b", &locksEvery);
    g_variant_lookup(kept, "locksService", "b", &locksService);
    if (locksEvery != FALSE) {
        television.lock.LockProgramme(true);
    }
    television.lock.LockService(locksService != FALSE);
    RestoreInput(service, kept, service.InputNamed(input));
}

std::optional<SimulatedClock::State> ClockOf(GVariant* kept)
{
    double speed = 1;
    gboolean paused = FALSE;
    gint64 real = 0;
    gint64 simulated = 0;
    gint64 offset = 0;
    if (kept == nullptr || g_variant_lookup(kept, "clock", "(xxx)", &real, &simulated, &offset) == FALSE) {
        return std::nullopt;
    }
    g_variant_lookup(kept, "speed", "d", &speed);
    g_variant_lookup(kept, "paused", "b", &paused);
    return SimulatedClock::State{real, simulated, offset, speed, paused != FALSE};
}

Owned<GVariant> ReportDead(GVariant* kept)
{
    Clock clock(1.0, {});
    RestoreClock(clock, kept);
    Dictionary report;
    report.Add("GuideTime", g_variant_new_int64(clock.UnixTime()));
    gint64 begin = 0;
    double duration = 0;
    gboolean loops = FALSE;
    if (g_variant_lookup(kept, "begin", "x", &begin) != FALSE) {
        g_variant_lookup(kept, "duration", "d", &duration);
        g_variant_lookup(kept, "loops", "b", &loops);
        report.Add("Position",
                   g_variant_new_double(PositionNow(clock, begin, duration, loops != FALSE).count()));
    }
    return report.Take();
}

} // namespace zviptv::sim
