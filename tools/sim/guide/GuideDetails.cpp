#include "guide/GuideDetails.h"

#include "guide/Rating.h"

#include <algorithm>

namespace zviptv::sim {

namespace {

void SetFirst(std::string_view& place, std::string_view text)
{
    if (place.empty())
        place = text;
}

bool IsTranslatable(GuideField field)
{
    return field == GuideField::Title || field == GuideField::Subtitle || field == GuideField::Description ||
           field == GuideField::Genre;
}

void Put(GuideVersion& version, GuideField field, std::string_view text)
{
    if (field == GuideField::Title)
        SetFirst(version.title, text);
    else if (field == GuideField::Subtitle)
        SetFirst(version.subtitle, text);
    else if (field == GuideField::Description)
        SetFirst(version.description, text);
    else if (std::find(version.genres.begin(), version.genres.end(), text) == version.genres.end())
        version.genres.push_back(text);
}

void FillGaps(GuideVersion& main, std::vector<GuideVersion> const& others)
{
    for (GuideVersion const& other : others) {
        SetFirst(main.title, other.title);
        SetFirst(main.subtitle, other.subtitle);
        SetFirst(main.description, other.description);
        if (main.genres.empty())
            main.genres = other.genres;
    }
}

/// Sorts the texts of one programme.
class Description
{
public:
    Description(Guide const& guide, GuideEntry const& entry) : m_guide(guide), m_entry(entry)
    {
        ForEachText([this](GuideText const& text) {
            if (text.field == GuideField::Title && !m_hasTitle)
                m_details.main.language = m_guide.Language(text);
            m_hasTitle = m_hasTitle || text.field == GuideField::Title;
        });
        ForEachText([this](GuideText const& text) { Add(text); });
        FillGaps(m_details.main, m_details.translations);
    }

    GuideDetails Take() { return std::move(m_details); }

private:
    template <typename Function>
    void ForEachText(Function function)
    {
        for (std::uint32_t i = 0; i < m_entry.textCount; ++i)
            function(m_guide.TextAt(m_entry.firstText + i));
    }

    void Add(GuideText const& item)
    {
        std::string_view const text = m_guide.Text(item.text);
        if (IsTranslatable(item.field))
            Put(Version(m_guide.Language(item)), item.field, text);
        else if (item.field == GuideField::RatingSystem)
            m_ratingSystem = text;
        else if (item.field == GuideField::RatingValue)
            AddRating(text);
        else
            SetFirst(item.field == GuideField::Icon ? m_details.icon : m_details.episode, text);
    }

    GuideVersion& Version(std::string_view language)
    {
        if (language.empty() || language == m_details.main.language)
            return m_details.main;
        auto& others = m_details.translations;
        auto const known =
            std::find_if(others.begin(), others.end(),
                         [language](GuideVersion const& version) { return version.language == language; });
        return known != others.end() ? *known : others.emplace_back(GuideVersion{language, {}, {}, {}, {}});
    }

    void AddRating(std::string_view value)
    {
        GuideRating const rating{m_ratingSystem, value, MinimumAge(value)};
        if (!m_details.rating || rating.minimumAge > m_details.rating->minimumAge)
            m_details.rating = rating;
    }

    Guide const& m_guide;
    GuideEntry const& m_entry;
    GuideDetails m_details;
    std::string_view m_ratingSystem;
    bool m_hasTitle = false;
};

} // namespace

GuideDetails Describe(Guide const& guide, std::uint32_t position)
{
    return Description(guide, guide.At(position)).Take();
}

} // namespace zviptv::sim
