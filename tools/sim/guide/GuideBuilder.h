#pragma once

#include "guide/Guide.h"
#include "guide/GuideWarnings.h"
#include "guide/ServiceNumbers.h"

#include <map>
#include <memory>
#include <string>
#include <unordered_map>

namespace zviptv::sim {

/// A programme as it comes from its source.
struct ProgrammeDraft
{
    struct Text
    {
        GuideField field = GuideField::Title;
        std::string language;
        std::string text;
    };

    std::uint32_t eventId = 0;
    std::string channel; ///< id of the channel
    std::uint32_t start = 0;
    std::uint32_t stop = 0; ///< 0: not known
    std::vector<Text> texts;
};

/// Collects channels and programmes and makes a guide of them.
class GuideBuilder
{
public:
    /// Texts of one programme; more are left out.
    static constexpr std::size_t MaxTexts = 1000;

    GuideBuilder();

    /// A second channel of the same id only adds its names.
    void AddChannel(GuideChannel channel);

    /// A channel that nobody added becomes one without names. @throws std::length_error over 4 GiB of texts
    void AddProgramme(ProgrammeDraft const& draft);

    /// Once only. `serviceNames` as for AssignServiceNumbers.
    std::shared_ptr<Guide const> Build(ServiceNames const& serviceNames, GuideWarnings& warnings);

private:
    std::uint32_t ChannelNumber(std::string const& id);
    std::uint16_t LanguageNumber(std::string const& language);
    void AddTexts(ProgrammeDraft const& draft);
    std::vector<std::uint32_t> MakeServices(ServiceNames const& serviceNames, GuideWarnings& warnings);
    void IndexServices();
    void IndexEvents();

    GuideData m_data;
    TextInterner m_interner{m_data.pool};
    std::vector<GuideChannel> m_channels;
    std::unordered_map<std::string, std::uint32_t> m_channelNumbers;
    std::map<std::string, std::uint16_t> m_languageNumbers;
};

} // namespace zviptv::sim
