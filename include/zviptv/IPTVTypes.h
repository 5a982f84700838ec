// SPDX-License-Identifier: MIT
/// @file
/// Enumerations and records of the interfaces, and how languages and handles become numbers.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

// Enumerations are sent as signed decimal text and passed on unchanged: a value that has no name here is
// stored as the service sent it.

/// Profile part of a handle. Only its low 16 bits are sent.
enum IPTVProfile : std::int32_t
{
    IPTV_PROFILE_DEFAULT = 1 ///< use it unless your platform assigns another profile to the application
};

/// Coding of an audio track.
enum EZVAudioEncodeType : std::int32_t
{
    ZV_AUDIO_ENCODE_UNKNOWN = 0, ///< not known
    ZV_AUDIO_ENCODE_MPEG = 1,    ///< MPEG-1 or MPEG-2 audio, layers I to III
    ZV_AUDIO_ENCODE_AC3 = 2,     ///< AC-3
    ZV_AUDIO_ENCODE_EAC3 = 3,    ///< Enhanced AC-3
    ZV_AUDIO_ENCODE_AAC = 4,     ///< AAC in ADTS framing
    ZV_AUDIO_ENCODE_LATM = 5,    ///< AAC or HE-AAC in LATM framing
    ZV_AUDIO_ENCODE_DTS = 6,     ///< DTS
    ZV_AUDIO_ENCODE_AC4 = 7,     ///< AC-4
    ZV_AUDIO_ENCODE_PCM = 8      ///< uncompressed
};

/// A language: the three lower-case letters of its ISO 639-2 code, first letter in bits 16 to 23, last in
/// bits 0 to 7. Every code may occur; the enumerators are a few common ones. See ZVLanguageFromISO639.
enum EZVLanguageCode : std::int32_t
{
    ZV_LANGUAGE_UNKNOWN = 0,    ///< no language
    ZV_LANGUAGE_DEU = 0x646575, ///< German
    ZV_LANGUAGE_ENG = 0x656e67, ///< English
    ZV_LANGUAGE_FRA = 0x667261, ///< French
    ZV_LANGUAGE_ITA = 0x697461, ///< Italian
    ZV_LANGUAGE_JPN = 0x6a706e, ///< Japanese
    ZV_LANGUAGE_KOR = 0x6b6f72, ///< Korean
    ZV_LANGUAGE_POR = 0x706f72, ///< Portuguese
    ZV_LANGUAGE_QAA = 0x716161, ///< by convention the original language
    ZV_LANGUAGE_SPA = 0x737061, ///< Spanish
    ZV_LANGUAGE_UND = 0x756e64  ///< undetermined
};

/// Caption service number, as in CEA-708.
enum EZVCaptionService : std::int32_t
{
    ZV_CAPTION_SERVICE_UNKNOWN = 0, ///< none
    ZV_CAPTION_SERVICE_1 = 1,       ///< primary captions
    ZV_CAPTION_SERVICE_2 = 2,       ///< secondary captions
    ZV_CAPTION_SERVICE_3 = 3,       ///< service 3
    ZV_CAPTION_SERVICE_4 = 4,       ///< service 4
    ZV_CAPTION_SERVICE_5 = 5,       ///< service 5
    ZV_CAPTION_SERVICE_6 = 6        ///< service 6
};

/// Kind of ISDB text.
enum EZVISDBTextType : std::int32_t
{
    ZV_ISDB_TEXT_CAPTION = 0,    ///< caption
    ZV_ISDB_TEXT_SUPERIMPOSE = 1 ///< superimposed text
};

/// What SetUnlockedInfo unlocks.
enum EZVParentalLock : std::int32_t
{
    ZV_PARENTAL_LOCKED = 0,             ///< nothing: locks again
    ZV_PARENTAL_UNLOCKED_PROGRAMME = 1, ///< the present programme
    ZV_PARENTAL_UNLOCKED_SERVICE = 2,   ///< this service until another one is selected
    ZV_PARENTAL_UNLOCKED_ALL = 3        ///< everything until the television is switched off
};

/// Which of two sounds is heard.
enum EZVMultiSoundMode : std::int32_t
{
    ZV_MULTI_SOUND_STEREO = 0, ///< both channels as they are
    ZV_MULTI_SOUND_MAIN = 1,   ///< the left channel of dual mono
    ZV_MULTI_SOUND_SUB = 2,    ///< the right channel of dual mono
    ZV_MULTI_SOUND_BOTH = 3    ///< both sounds of dual mono
};

/// State of the source that is played.
enum EZVSourceState : std::int32_t
{
    ZV_SOURCE_STATE_UNKNOWN = -1, ///< the service did not say
    ZV_SOURCE_STATE_STOPPED = 0,  ///< nothing is played
    ZV_SOURCE_STATE_STARTING = 1, ///< opened, nothing presented yet
    ZV_SOURCE_STATE_PLAYING = 2,  ///< being presented
    ZV_SOURCE_STATE_ENDED = 3,    ///< the source has no more data
    ZV_SOURCE_STATE_ERROR = 4     ///< the source cannot be played
};

/// How captions of the current service are shown.
enum EZVCaptionDataMode : std::int32_t
{
    ZV_CAPTION_DATA_MODE_UNKNOWN = -1,   ///< the service did not say
    ZV_CAPTION_DATA_MODE_NONE = 0,       ///< the service carries no captions
    ZV_CAPTION_DATA_MODE_SELECTABLE = 1, ///< shown when the viewer asks for them
    ZV_CAPTION_DATA_MODE_AUTOMATIC = 2   ///< always shown
};

/// Class of a video resolution, by its lines.
enum cvtv_resolution_e : std::int32_t
{
    CVTV_RESOLUTION_UNKNOWN = 0, ///< not known
    CVTV_RESOLUTION_SD = 1,      ///< up to 576 lines
    CVTV_RESOLUTION_HD = 2,      ///< up to 720 lines
    CVTV_RESOLUTION_FHD = 3,     ///< up to 1088 lines
    CVTV_RESOLUTION_UHD = 4,     ///< up to 2176 lines
    CVTV_RESOLUTION_8K = 5       ///< more than 2176 lines
};

/// The programme that GetProgram returns, relative to the one that is named.
enum Program_IPG : std::int32_t
{
    PROGRAM_IPG_PREVIOUS = -1, ///< the one before it
    PROGRAM_IPG_PRESENT = 0,   ///< itself
    PROGRAM_IPG_NEXT = 1       ///< the one after it
};

/// Values of ZVPESData::type: what the elementary stream carries.
enum EZVPESType : std::int32_t
{
    ZV_PES_OTHER = 0,    ///< anything else
    ZV_PES_VIDEO = 1,    ///< video
    ZV_PES_AUDIO = 2,    ///< audio
    ZV_PES_SUBTITLE = 3, ///< DVB subtitles
    ZV_PES_TELETEXT = 4, ///< teletext
    ZV_PES_CAPTION = 5   ///< ARIB captions
};

/// Values of ZVHybridSBT::kind: what a hybrid subtitle is made of.
enum EZVSubtitleKind : std::int32_t
{
    ZV_SUBTITLE_UNKNOWN = 0, ///< not known
    ZV_SUBTITLE_DVB = 1,     ///< bitmaps
    ZV_SUBTITLE_TELETEXT = 2 ///< a teletext page
};

// The records below are sent as they are in memory: the service uses the same sizes, offsets and byte order
// (that of the platform, little endian on all supported ones). Reserved bytes are sent as zero and not read.

/// An audio track.
struct ZVAudio
{
    EZVLanguageCode language;    ///< ZV_LANGUAGE_UNKNOWN when the stream names none
    EZVAudioEncodeType encoding; ///< coding of the track
    std::uint16_t pid;           ///< of the elementary stream
    std::uint8_t componentTag;   ///< 0 when the stream has none
    std::uint8_t
        audioType; ///< ISO 639 audio type: 0 undefined, 1 clean effects, 2 hearing impaired, 3 commentary
    std::uint32_t sampleRate; ///< Hz, 0 when not known
    std::uint32_t bitRate;    ///< bits a second, 0 when not known
    std::uint8_t channels;    ///< 0 when not known
    std::uint8_t dualMono;    ///< 1 while the track carries two independent sounds
    std::uint8_t streamType;  ///< stream type of the PMT
    std::uint8_t reserved[9]; ///< zero
};

/// A teletext page that the PMT announces.
struct ZVTTX
{
    EZVLanguageCode language; ///< ZV_LANGUAGE_UNKNOWN when the stream names none
    std::uint16_t pid;        ///< of the teletext stream
    std::uint8_t magazine;    ///< 1 to 8
    std::uint8_t page;        ///< the page's two digits, hexadecimal: 0x88 with magazine 8 is page 888
    std::uint8_t
        type; ///< 1 initial page, 2 subtitle, 3 information, 4 schedule, 5 subtitle for the hard of hearing
    std::uint8_t componentTag; ///< 0 when the stream has none
    std::uint8_t reserved[6];  ///< zero
};

/// A subtitle of the service, DVB bitmap or teletext.
struct ZVHybridSBT
{
    EZVLanguageCode language;      ///< ZV_LANGUAGE_UNKNOWN when the stream names none
    EZVSubtitleKind kind;          ///< kind of the subtitle; decides which members below are used
    std::uint16_t pid;             ///< of the subtitle or teletext stream
    std::uint16_t compositionPage; ///< DVB subtitles only
    std::uint16_t ancillaryPage;   ///< DVB subtitles only
    std::uint8_t type;             ///< type as in the subtitling or teletext descriptor
    std::uint8_t hardOfHearing;    ///< 1 when meant for the hard of hearing
    std::uint8_t magazine;         ///< teletext only, 1 to 8
    std::uint8_t page;             ///< teletext only, as in ZVTTX
    std::uint8_t componentTag;     ///< 0 when the stream has none
    std::uint8_t reserved[5];      ///< zero
};

/// An ISDB caption or superimposed text.
struct ZVISDBText
{
    EZVLanguageCode language;    ///< ZV_LANGUAGE_UNKNOWN until the stream has named it
    EZVISDBTextType type;        ///< caption or superimposed text
    std::uint16_t pid;           ///< of the caption stream
    std::uint16_t dataComponent; ///< data component id: 0x0008 for captions, 0x0012 for one-segment captions
    std::uint8_t componentTag;   ///< 0x30 to 0x37 captions, 0x38 to 0x3F superimposed text
    std::uint8_t languageTag;    ///< 0 to 7, the language's number within the stream
    std::uint8_t reserved[2];    ///< zero
};

/// The choice between two sounds.
struct ZVDualSound
{
    EZVMultiSoundMode mode;   ///< which sound is heard
    std::uint8_t available;   ///< 1 when the current track carries two sounds
    std::uint8_t reserved[3]; ///< zero
};

/// One rating of the current programme.
struct ZVRatingInfo
{
    std::uint8_t region;    ///< rating region; 0 for the minimum age of DVB's parental rating
    std::uint8_t dimension; ///< rating dimension within the region
    std::uint8_t value;     ///< level of the dimension; with region 0 the minimum age in years
};

/// The picture that is played.
struct ZVResolution
{
    std::uint32_t width;                ///< pixels
    std::uint32_t height;               ///< lines
    std::uint32_t frameRateNumerator;   ///< frames per second are numerator / denominator; 0/0 when not known
    std::uint32_t frameRateDenominator; ///< see frameRateNumerator
    std::uint16_t aspectWidth;          ///< display aspect ratio, 16 : 9 for example; 0 : 0 when not known
    std::uint16_t aspectHeight;         ///< see aspectWidth
    std::uint8_t interlaced;            ///< 1 for interlaced pictures
    std::uint8_t reserved[11];          ///< zero
};

/// A PES packet that the service pushed. Owned by the library, valid during the callback.
struct ZVPESData
{
    std::int32_t type;              ///< EZVPESType
    std::int16_t pid;               ///< 13 bits; as an unsigned number `pid & 0xFFFF`
    std::uint32_t pts;              ///< low 32 bits of the presentation time stamp, 90 kHz
    std::vector<std::uint8_t> data; ///< the whole PES packet with its header
};

/// A piece of caption data that the service pushed. Owned by the library, valid during the callback.
struct ZVCaption
{
    std::int32_t type; ///< kind of caption data: EZVPESType of the stream that carried it
    std::vector<std::uint8_t>
        data; ///< as it was broadcast: data units of teletext, the PES payload of ARIB captions
};

/// Identifies a programme of the guide. The layout is the same on 32 and 64 bits.
struct IPGProgramId
{
    alignas(8) std::uint64_t serviceId; ///< as in the methods' `inID`
    std::uint16_t eventId;              ///< low 16 bits of the event id
    std::uint32_t startTime;            ///< seconds since 1970, UTC; 0 for any
    std::uint32_t duration;             ///< seconds; the simulator does not compare it
};

/// Selects what the calls of a proxy refer to; sent with every request as one number.
struct IPTVHandle
{
    IPTVProfile profile; ///< low 16 bits count
    std::uint16_t id;    ///< number within the profile
};

/// The number that is sent for a handle. An id above 255 carries into the profile's part.
constexpr std::uint32_t IPTVHandleNumber(IPTVHandle handle)
{
    return ((static_cast<std::uint32_t>(handle.profile) & 0xFFFFU) << 8U) + handle.id;
}

/// The language of a three-letter ISO 639-2 code in upper or lower case; ZV_LANGUAGE_UNKNOWN for null, and
/// for anything except three letters.
constexpr EZVLanguageCode ZVLanguageFromISO639(char const* code)
{
    if (code == nullptr) {
        return ZV_LANGUAGE_UNKNOWN;
    }
    std::int32_t packed = 0;
    for (int i = 0; i < 3; ++i) {
        char const letter =
            code[i] >= 'A' && code[i] <= 'Z' ? static_cast<char>(code[i] - 'A' + 'a') : code[i];
        if (letter < 'a' || letter > 'z') {
            return ZV_LANGUAGE_UNKNOWN;
        }
        packed = packed * 256 + letter;
    }
    return code[3] == '\0' ? static_cast<EZVLanguageCode>(packed) : ZV_LANGUAGE_UNKNOWN;
}

/// The three-letter ISO 639-2 code of a language; empty for a value that is not a language.
inline std::string ZVLanguageToISO639(EZVLanguageCode language)
{
    std::uint32_t const packed = static_cast<std::uint32_t>(language);
    std::string code;
    for (unsigned shift = 24; shift > 0; shift -= 8) {
        code += static_cast<char>((packed >> (shift - 8)) & 0xFFU);
    }
    return ZVLanguageFromISO639(code.c_str()) == language && language != ZV_LANGUAGE_UNKNOWN ? code
                                                                                             : std::string();
}

static_assert(sizeof(ZVAudio) == 32 && sizeof(ZVTTX) == 16 && sizeof(ZVHybridSBT) == 24);
static_assert(sizeof(ZVISDBText) == 16 && sizeof(ZVDualSound) == 8 && sizeof(ZVRatingInfo) == 3);
static_assert(sizeof(ZVResolution) == 32 && sizeof(IPGProgramId) == 24 && alignof(IPGProgramId) == 8);

static_assert(offsetof(ZVAudio, language) == 0 && offsetof(ZVAudio, encoding) == 4 &&
              offsetof(ZVAudio, pid) == 8 && offsetof(ZVAudio, componentTag) == 10 &&
              offsetof(ZVAudio, audioType) == 11 && offsetof(ZVAudio, sampleRate) == 12 &&
              offsetof(ZVAudio, bitRate) == 16 && offsetof(ZVAudio, channels) == 20 &&
              offsetof(ZVAudio, dualMono) == 21 && offsetof(ZVAudio, streamType) == 22 &&
              offsetof(ZVAudio, reserved) == 23);
static_assert(offsetof(ZVTTX, language) == 0 && offsetof(ZVTTX, pid) == 4 && offsetof(ZVTTX, magazine) == 6 &&
              offsetof(ZVTTX, page) == 7 && offsetof(ZVTTX, type) == 8 &&
              offsetof(ZVTTX, componentTag) == 9 && offsetof(ZVTTX, reserved) == 10);
static_assert(offsetof(ZVHybridSBT, language) == 0 && offsetof(ZVHybridSBT, kind) == 4 &&
              offsetof(ZVHybridSBT, pid) == 8 && offsetof(ZVHybridSBT, compositionPage) == 10 &&
              offsetof(ZVHybridSBT, ancillaryPage) == 12 && offsetof(ZVHybridSBT, type) == 14 &&
              offsetof(ZVHybridSBT, hardOfHearing) == 15 && offsetof(ZVHybridSBT, magazine) == 16 &&
              offsetof(ZVHybridSBT, page) == 17 && offsetof(ZVHybridSBT, componentTag) == 18 &&
              offsetof(ZVHybridSBT, reserved) == 19);
static_assert(offsetof(ZVISDBText, language) == 0 && offsetof(ZVISDBText, type) == 4 &&
              offsetof(ZVISDBText, pid) == 8 && offsetof(ZVISDBText, dataComponent) == 10 &&
              offsetof(ZVISDBText, componentTag) == 12 && offsetof(ZVISDBText, languageTag) == 13 &&
              offsetof(ZVISDBText, reserved) == 14);
static_assert(offsetof(ZVDualSound, mode) == 0 && offsetof(ZVDualSound, available) == 4 &&
              offsetof(ZVDualSound, reserved) == 5);
static_assert(offsetof(ZVRatingInfo, region) == 0 && offsetof(ZVRatingInfo, dimension) == 1 &&
              offsetof(ZVRatingInfo, value) == 2);
static_assert(offsetof(ZVResolution, width) == 0 && offsetof(ZVResolution, height) == 4 &&
              offsetof(ZVResolution, frameRateNumerator) == 8 &&
              offsetof(ZVResolution, frameRateDenominator) == 12 &&
              offsetof(ZVResolution, aspectWidth) == 16 && offsetof(ZVResolution, aspectHeight) == 18 &&
              offsetof(ZVResolution, interlaced) == 20 && offsetof(ZVResolution, reserved) == 21);
static_assert(std::is_trivially_copyable_v<ZVAudio> && std::is_trivially_copyable_v<ZVTTX> &&
              std::is_trivially_copyable_v<ZVHybridSBT> && std::is_trivially_copyable_v<ZVISDBText> &&
              std::is_trivially_copyable_v<ZVDualSound> && std::is_trivially_copyable_v<ZVRatingInfo> &&
              std::is_trivially_copyable_v<ZVResolution>);
static_assert(IPTVHandleNumber({IPTV_PROFILE_DEFAULT, 0}) == 256);
