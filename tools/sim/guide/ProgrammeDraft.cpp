// SPDX-License-Identifier: MIT
#include "guide/ProgrammeDraft.h"

#include "guide/Rating.h"

#include <algorithm>

namespace zviptv::sim {

namespace {

void SetFirst(std::string& place, std::string text)
{
    if (place.empty()) {
        place = std::move(text);
    }
}

void Put(GuideVersion& version, GuideField field, std::string text)
{
    if (field == GuideField::Title) {
        SetFirst(version.title, std::move(text));
    } else if (field == GuideField::Subtitle) {
        SetFirst(version.subtitle, std::move(text));
    } else if (field == GuideField::Description) {
        SetFirst(version.description, std::move(text));
    } else if (std::find(version.genres.begin(), version.genres.end(), text) == version.genres.end()) {
        version.genres.push_back(std::move(text));
    }
}

void FillGaps(GuideVersion& main, std::vector<GuideVersion> const& others)
{
    for (GuideVersion const& other : others) {
        SetFirst(main.title, other.title);
        SetFirst(main.subtitle, other.subtitle);
        SetFirst(main.description, other.description);
        if (main.genres.empty()) {
            main.genres = other.genres;
        }
    }
}

GuideVersion& VersionOf(GuideEntry& entry, std::string const& language)
{
    if (language.empty() || language == entry.main.language) {
        return entry.main;
    }
    auto& others = entry.translations;
    auto const known = std::find_if(others.begin(), others.end(), [&language](GuideVersion const& version) {
        return version.language == language;
    });
    return known != others.end() ? *known : others.emplace_back(GuideVersion{language, {}, {}, {}, {}});
}

void AddRating(GuideEntry& entry, std::string const& system, std::string value)
{
    auto const age = MinimumAge(value);
    if (!entry.rating || age > entry.rating->minimumAge) {
        entry.rating = GuideRating{system, std::move(value), age};
    }
}

} // namespace

GuideEntry Describe(ProgrammeDraft draft)
{
    constexpr std::size_t MaxLanguageSize = 35;
    GuideEntry entry;
    entry.eventId = draft.eventId;
    entry.start = draft.start;
    entry.duration = draft.stop > draft.start ? draft.stop - draft.start : 0;
    for (ProgrammeDraft::Text& text : draft.texts) {
        text.language.resize(text.language.size() > MaxLanguageSize ? 0 : text.language.size());
    }
    auto const title =
        std::find_if(draft.texts.begin(), draft.texts.end(),
                     [](ProgrammeDraft::Text const& text) { return text.field == GuideField::Title; });
    entry.main.language = title != draft.texts.end() ? title->language : std::string();

    std::string ratingSystem;
    for (auto& [field, language, text] : draft.texts) {
        if (field == GuideField::RatingSystem) {
            ratingSystem = std::move(text);
        } else if (field == GuideField::RatingValue) {
            AddRating(entry, ratingSystem, std::move(text));
        } else if (field == GuideField::Icon || field == GuideField::Episode) {
            SetFirst(field == GuideField::Icon ? entry.icon : entry.episode, std::move(text));
        } else {
            Put(VersionOf(entry, language), field, std::move(text));
        }
    }
    FillGaps(entry.main, entry.translations);
    return entry;
}

} // namespace zviptv::sim
