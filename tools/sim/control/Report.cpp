// SPDX-License-Identifier: MIT
#include "Report.h"

#include "Dictionary.h"
#include "ProgrammeReport.h"
#include "glib/Utf8.h"

namespace zviptv::sim {

namespace {

constexpr char const* SourceStates[] = {"stopped", "starting", "playing", "ended", "error"};
constexpr char const* DualSounds[] = {"stereo", "main", "sub", "both"};

template <std::size_t Size>
std::string WordOf(char const* const (&words)[Size], int number)
{
    return number >= 0 && static_cast<std::size_t>(number) < Size ? words[number] : "unknown";
}

GVariant* Programmes(Player const& player)
{
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("a(us)"));
    for (Programme const& programme : player.Programmes()) {
        g_variant_builder_add(&list, "(us)", guint32{programme.number}, ValidUtf8(programme.name).c_str());
    }
    return g_variant_builder_end(&list);
}

/// The counters of the input: data that was received and that was lost.
GVariant* InputStatus(Player const& player)
{
    InputCounters const counters = player.Counters();
    Dictionary status;
    status.Add("state", counters.state)
        .Add("error", counters.error)
        .Add("live", g_variant_new_boolean(counters.isLive ? TRUE : FALSE));
    for (InputNumber const& number : InputNumbers) {
        status.Add(number.name, g_variant_new_uint64(counters.*number.value));
    }
    return status.End();
}

/// Empty until it is known.
GVariant* Resolution(Player const& player)
{
    Dictionary resolution;
    if (std::optional<VideoFormat> const& format = player.Format()) {
        resolution.Add("width", g_variant_new_uint32(format->width))
            .Add("height", g_variant_new_uint32(format->height))
            .Add("frameRateNumerator", g_variant_new_uint32(format->frameRate.numerator))
            .Add("frameRateDenominator", g_variant_new_uint32(format->frameRate.denominator))
            .Add("interlaced", g_variant_new_boolean(format->interlaced ? TRUE : FALSE));
    }
    return resolution.End();
}

GVariant* FaultList(Television const& television)
{
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("aa{sv}"));
    for (Faults::State const& fault : television.faults.List()) {
        Dictionary entry;
        entry.Add("fault", fault.progress.text);
        if (fault.left) {
            entry.Add("count", g_variant_new_uint32(static_cast<guint32>(*fault.left)));
        }
        if (fault.end) {
            entry.Add("until", g_variant_new_double(television.clock.UnixTimeAt(*fault.end)));
        }
        g_variant_builder_add_value(&list, entry.End());
    }
    return g_variant_builder_end(&list);
}

GVariant* Names(std::vector<std::string> const& names)
{
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("as"));
    for (std::string const& name : names) {
        g_variant_builder_add(&list, "s", name.c_str());
    }
    return g_variant_builder_end(&list);
}

GVariant* ApplicationList(Applications const& applications)
{
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("aa{sv}"));
    for (Applications::Description const& application : applications.List()) {
        Dictionary entry;
        entry.Add("name", application.busName)
            .Add("id", application.id)
            .Add("endpoints", Names(application.types));
        g_variant_builder_add_value(&list, entry.End());
    }
    return g_variant_builder_end(&list);
}

GVariant* Subscribers(std::vector<RequestLog::Subscriber> const& subscribers)
{
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("aa{sv}"));
    for (RequestLog::Subscriber const& subscriber : subscribers) {
        Dictionary entry;
        entry.Add("application", subscriber.busName)
            .Add("sent", g_variant_new_uint64(subscriber.sent))
            .Add("dropped", g_variant_new_uint64(subscriber.dropped))
            .Add("queued", g_variant_new_uint64(subscriber.queued))
            .Add("pes", g_variant_new_boolean(subscriber.pes ? TRUE : FALSE))
            .Add("captions", g_variant_new_boolean(subscriber.captions ? TRUE : FALSE));
        g_variant_builder_add_value(&list, entry.End());
    }
    return g_variant_builder_end(&list);
}

void AddPlayback(Dictionary& report, Television const& television)
{
    Player const& player = television.player;
    report.Add("Input", player.Input())
        .Add("InputStatus", InputStatus(player))
        .Add("SourceState", WordOf(SourceStates, player.State()))
        .Add("Position", g_variant_new_double(player.Position().count()))
        .Add("Duration", g_variant_new_double(player.Duration().value_or(Player::Seconds(0)).count()))
        .Add("Speed", g_variant_new_double(television.clock.Speed()))
        .Add("Paused", g_variant_new_boolean(television.clock.IsPaused() ? TRUE : FALSE))
        .Add("GuideTime", g_variant_new_int64(television.clock.UnixTime()))
        .Add("Programme", g_variant_new_uint32(player.Current().number))
        .Add("Programmes", Programmes(player))
        .Add("Resolution", Resolution(player));
}

void AddSelection(Dictionary& report, Selection const& selection)
{
    report.Add("Audio", g_variant_new_uint32(static_cast<guint32>(selection.audio)))
        .Add("Subtitle", g_variant_new_uint32(selection.subtitle))
        .Add("Teletext", g_variant_new_uint32(selection.teletext))
        .Add("Caption", g_variant_new_uint32(selection.isdbText.at(ZV_ISDB_TEXT_CAPTION)))
        .Add("Superimpose", g_variant_new_uint32(selection.isdbText.at(ZV_ISDB_TEXT_SUPERIMPOSE)))
        .Add("DualSound", WordOf(DualSounds, selection.dualSound))
        .Add("AudioMuted", g_variant_new_boolean(selection.audioMutedBy.empty() ? FALSE : TRUE))
        .Add("AudioMutedBy", selection.audioMutedBy)
        .Add("VideoMuted", g_variant_new_boolean(selection.videoMutedBy.empty() ? FALSE : TRUE))
        .Add("VideoMutedBy", selection.videoMutedBy)
        .Add("ApplicationId", selection.appId);
}

} // namespace

Owned<GVariant> Report(Service& service)
{
    Television const television = service.Parts();
    DataSubscriberService::Counts const counts = television.subscribers.Count();
    television.lock.Follow(television.guide.Present());
    Dictionary report;
    AddPlayback(report, television);
    AddProgramme(report, television);
    AddSelection(report, television.selection);
    report.Add("ProgrammeLocked", g_variant_new_boolean(television.lock.IsProgrammeLocked() ? TRUE : FALSE))
        .Add("ServiceLocked", g_variant_new_boolean(television.lock.IsServiceLocked() ? TRUE : FALSE))
        .Add("Replay", service.Recording())
        .Add("LockStopsPushes", g_variant_new_boolean(service.LockStopsPushes() ? TRUE : FALSE))
        .Add("Faults", FaultList(television))
        .Add("Clients", Names(television.applications.Names()))
        .Add("Applications", ApplicationList(television.applications))
        .Add("Subscribers", Subscribers(counts.subscribers))
        .Add("Sent", g_variant_new_uint64(counts.sent))
        .Add("Dropped", g_variant_new_uint64(counts.dropped));
    return report.Take();
}

} // namespace zviptv::sim
