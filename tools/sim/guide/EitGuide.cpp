// SPDX-License-Identifier: MIT
#include "guide/EitGuide.h"

#include "guide/GuideBuilder.h"

#include <limits>

namespace zviptv::sim {

namespace {

std::uint32_t StopOf(EitEvent const& event)
{
    std::uint64_t const stop = std::uint64_t{*event.start} + event.duration.value_or(0);
    return event.duration && stop <= std::numeric_limits<std::uint32_t>::max()
               ? static_cast<std::uint32_t>(stop)
               : 0;
}

void AddText(ProgrammeDraft& draft, GuideField field, std::string const& language, std::string const& text)
{
    if (!text.empty()) {
        draft.texts.push_back({field, language, text});
    }
}

ProgrammeDraft MakeDraft(EitEvent const& event)
{
    ProgrammeDraft draft;
    draft.eventId = event.eventId;
    draft.channel = std::to_string(event.serviceId);
    draft.start = *event.start;
    draft.stop = StopOf(event);
    for (EitText const& text : event.texts) {
        AddText(draft, GuideField::Title, text.language, text.title);
        bool const hasBoth = !text.description.empty();
        AddText(draft, GuideField::Subtitle, text.language, hasBoth ? text.summary : std::string());
        AddText(draft, GuideField::Description, text.language, hasBoth ? text.description : text.summary);
    }
    for (std::string const& genre : event.genres) {
        AddText(draft, GuideField::Genre, {}, genre);
    }
    for (EitRating const& rating : event.ratings) {
        draft.texts.push_back({GuideField::RatingSystem, {}, rating.country});
        AddText(draft, GuideField::RatingValue, {}, std::to_string(rating.minimumAge));
    }
    return draft;
}

} // namespace

LoadedGuide MakeGuide(EitTable const& table, ServiceNames const& serviceNames)
{
    LoadedGuide made;
    GuideBuilder builder;
    for (auto const& [name, id] : serviceNames) {
        builder.AddChannel({std::to_string(id), {name}});
    }
    for (EitEvent const& event : table.Events()) {
        if (event.start) {
            builder.AddProgramme(MakeDraft(event));
        }
    }
    made.guide = builder.Build({}, made.warnings);
    return made;
}

} // namespace zviptv::sim
