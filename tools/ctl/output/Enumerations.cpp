#include "Enumerations.h"

#include "Words.h"

namespace zviptv::ctl {

namespace {

constexpr EnumName AudioEncodeTypes[] = {
    {ZV_AUDIO_ENCODE_UNKNOWN, "UNKNOWN"}, {ZV_AUDIO_ENCODE_MPEG, "MPEG"}, {ZV_AUDIO_ENCODE_AC3, "AC3"},
    {ZV_AUDIO_ENCODE_EAC3, "EAC3"},       {ZV_AUDIO_ENCODE_AAC, "AAC"},   {ZV_AUDIO_ENCODE_LATM, "LATM"},
    {ZV_AUDIO_ENCODE_DTS, "DTS"},         {ZV_AUDIO_ENCODE_AC4, "AC4"},   {ZV_AUDIO_ENCODE_PCM, "PCM"}};

constexpr EnumName CaptionDataModes[] = {{ZV_CAPTION_DATA_MODE_UNKNOWN, "UNKNOWN"},
                                         {ZV_CAPTION_DATA_MODE_NONE, "NONE"},
                                         {ZV_CAPTION_DATA_MODE_SELECTABLE, "SELECTABLE"},
                                         {ZV_CAPTION_DATA_MODE_AUTOMATIC, "AUTOMATIC"}};

constexpr EnumName CaptionServices[] = {{ZV_CAPTION_SERVICE_UNKNOWN, "UNKNOWN"},
                                        {ZV_CAPTION_SERVICE_1, "1"},
                                        {ZV_CAPTION_SERVICE_2, "2"},
                                        {ZV_CAPTION_SERVICE_3, "3"},
                                        {ZV_CAPTION_SERVICE_4, "4"},
                                        {ZV_CAPTION_SERVICE_5, "5"},
                                        {ZV_CAPTION_SERVICE_6, "6"}};

constexpr EnumName ISDBTextTypes[] = {{ZV_ISDB_TEXT_CAPTION, "CAPTION"},
                                      {ZV_ISDB_TEXT_SUPERIMPOSE, "SUPERIMPOSE"}};

constexpr EnumName Languages[] = {
    {ZV_LANGUAGE_UNKNOWN, "UNKNOWN"}, {ZV_LANGUAGE_DEU, "DEU"}, {ZV_LANGUAGE_ENG, "ENG"},
    {ZV_LANGUAGE_FRA, "FRA"},         {ZV_LANGUAGE_ITA, "ITA"}, {ZV_LANGUAGE_JPN, "JPN"},
    {ZV_LANGUAGE_KOR, "KOR"},         {ZV_LANGUAGE_POR, "POR"}, {ZV_LANGUAGE_QAA, "QAA"},
    {ZV_LANGUAGE_SPA, "SPA"},         {ZV_LANGUAGE_UND, "UND"}};

constexpr EnumName MultiSoundModes[] = {{ZV_MULTI_SOUND_STEREO, "STEREO"},
                                        {ZV_MULTI_SOUND_MAIN, "MAIN"},
                                        {ZV_MULTI_SOUND_SUB, "SUB"},
                                        {ZV_MULTI_SOUND_BOTH, "BOTH"}};

constexpr EnumName ParentalLocks[] = {{ZV_PARENTAL_LOCKED, "LOCKED"},
                                      {ZV_PARENTAL_UNLOCKED_PROGRAMME, "UNLOCKED_PROGRAMME"},
                                      {ZV_PARENTAL_UNLOCKED_SERVICE, "UNLOCKED_SERVICE"},
                                      {ZV_PARENTAL_UNLOCKED_ALL, "UNLOCKED_ALL"}};

constexpr EnumName PESTypes[] = {{ZV_PES_OTHER, "OTHER"},       {ZV_PES_VIDEO, "VIDEO"},
                                 {ZV_PES_AUDIO, "AUDIO"},       {ZV_PES_SUBTITLE, "SUBTITLE"},
                                 {ZV_PES_TELETEXT, "TELETEXT"}, {ZV_PES_CAPTION, "CAPTION"}};

constexpr EnumName Programs[] = {
    {PROGRAM_IPG_PREVIOUS, "PREVIOUS"}, {PROGRAM_IPG_PRESENT, "PRESENT"}, {PROGRAM_IPG_NEXT, "NEXT"}};

constexpr EnumName Resolutions[] = {{CVTV_RESOLUTION_UNKNOWN, "UNKNOWN"}, {CVTV_RESOLUTION_SD, "SD"},
                                    {CVTV_RESOLUTION_HD, "HD"},           {CVTV_RESOLUTION_FHD, "FHD"},
                                    {CVTV_RESOLUTION_UHD, "UHD"},         {CVTV_RESOLUTION_8K, "8K"}};

constexpr EnumName SourceStates[] = {
    {ZV_SOURCE_STATE_UNKNOWN, "UNKNOWN"},   {ZV_SOURCE_STATE_STOPPED, "STOPPED"},
    {ZV_SOURCE_STATE_STARTING, "STARTING"}, {ZV_SOURCE_STATE_PLAYING, "PLAYING"},
    {ZV_SOURCE_STATE_ENDED, "ENDED"},       {ZV_SOURCE_STATE_ERROR, "ERROR"}};

constexpr EnumName SubtitleKinds[] = {
    {ZV_SUBTITLE_UNKNOWN, "UNKNOWN"}, {ZV_SUBTITLE_DVB, "DVB"}, {ZV_SUBTITLE_TELETEXT, "TELETEXT"}};

} // namespace

char const* EnumInfo::NameOf(std::int32_t value) const
{
    for (EnumName const& known : *this) {
        if (known.value == value) {
            return known.name;
        }
    }
    return nullptr;
}

std::optional<std::int32_t> EnumInfo::ValueOf(std::string_view name) const
{
    std::string const wanted = ToLower(name);
    std::string const prefix = ToLower(m_prefix);
    for (EnumName const& known : *this) {
        std::string const shortName = ToLower(known.name);
        if (wanted == shortName || wanted == prefix + shortName) {
            return known.value;
        }
    }
    return std::nullopt;
}

std::string LowerName(EnumInfo const& info, std::int32_t value)
{
    char const* const name = info.NameOf(value);
    return name == nullptr ? std::to_string(value) : ToLower(name);
}

template <>
EnumInfo const& InfoOf<EZVAudioEncodeType>()
{
    static constexpr EnumInfo info("EZVAudioEncodeType", "ZV_AUDIO_ENCODE_", AudioEncodeTypes);
    return info;
}

template <>
EnumInfo const& InfoOf<EZVCaptionDataMode>()
{
    static constexpr EnumInfo info("EZVCaptionDataMode", "ZV_CAPTION_DATA_MODE_", CaptionDataModes);
    return info;
}

template <>
EnumInfo const& InfoOf<EZVCaptionService>()
{
    static constexpr EnumInfo info("EZVCaptionService", "ZV_CAPTION_SERVICE_", CaptionServices);
    return info;
}

template <>
EnumInfo const& InfoOf<EZVISDBTextType>()
{
    static constexpr EnumInfo info("EZVISDBTextType", "ZV_ISDB_TEXT_", ISDBTextTypes);
    return info;
}

template <>
EnumInfo const& InfoOf<EZVLanguageCode>()
{
    static constexpr EnumInfo info("EZVLanguageCode", "ZV_LANGUAGE_", Languages);
    return info;
}

template <>
EnumInfo const& InfoOf<EZVMultiSoundMode>()
{
    static constexpr EnumInfo info("EZVMultiSoundMode", "ZV_MULTI_SOUND_", MultiSoundModes);
    return info;
}

template <>
EnumInfo const& InfoOf<EZVParentalLock>()
{
    static constexpr EnumInfo info("EZVParentalLock", "ZV_PARENTAL_", ParentalLocks);
    return info;
}

template <>
EnumInfo const& InfoOf<EZVPESType>()
{
    static constexpr EnumInfo info("EZVPESType", "ZV_PES_", PESTypes);
    return info;
}

template <>
EnumInfo const& InfoOf<EZVSourceState>()
{
    static constexpr EnumInfo info("EZVSourceState", "ZV_SOURCE_STATE_", SourceStates);
    return info;
}

template <>
EnumInfo const& InfoOf<EZVSubtitleKind>()
{
    static constexpr EnumInfo info("EZVSubtitleKind", "ZV_SUBTITLE_", SubtitleKinds);
    return info;
}

template <>
EnumInfo const& InfoOf<Program_IPG>()
{
    static constexpr EnumInfo info("Program_IPG", "PROGRAM_IPG_", Programs);
    return info;
}

template <>
EnumInfo const& InfoOf<cvtv_resolution_e>()
{
    static constexpr EnumInfo info("cvtv_resolution_e", "CVTV_RESOLUTION_", Resolutions);
    return info;
}

} // namespace zviptv::ctl
