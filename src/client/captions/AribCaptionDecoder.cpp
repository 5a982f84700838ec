// SPDX-License-Identifier: MIT
#include <zviptv/client/CaptionDecoder.h>

#include "AribText.h"

#include "mpegts/AribCaptions.h"

#include <algorithm>
#include <utility>

namespace zviptv {

namespace {

constexpr std::size_t MaxText = 4096; // bytes; libaribb24 walks all that it has found for each character

struct DestroyInstance
{
    void operator()(arib_instance_t* instance) const { arib_instance_destroy(instance); }
};

bool Clears(std::vector<std::uint8_t> const& text)
{
    constexpr std::uint8_t ClearScreen = 0x0C; // no other code has this byte as a parameter
    return std::find(text.begin(), text.end(), ClearScreen) != text.end();
}

} // namespace

struct __attribute__((visibility("hidden"))) AribCaptionDecoder::State
{
    explicit State(Profile coding) : profile(coding), instance(arib_instance_new(nullptr)) {}

    std::vector<CaptionLine> Lines(std::vector<std::uint8_t> const& text) const;

    /// Of the statements with this group number; "" if the management data has not named it.
    std::string Language(unsigned number) const;

    Profile const profile;
    std::unique_ptr<arib_instance_t, DestroyInstance> instance; ///< null without memory
    std::vector<AribLanguage> languages;
};

std::vector<CaptionLine> AribCaptionDecoder::State::Lines(std::vector<std::uint8_t> const& text) const
{
    constexpr int FullHeight = 36;
    constexpr int OneSegmentHeight = 18;
    constexpr std::size_t LongestCharacter = 4;
    arib_decoder_t* const decoder = instance ? arib_get_decoder(instance.get()) : nullptr;
    if (decoder == nullptr || text.size() > MaxText) {
        return {};
    }
    std::vector<std::uint8_t> const safe = DecodableText(text);
    std::vector<char> buffer(safe.size() * LongestCharacter + 1);
    bool const isFull = profile == Profile::Full;
    (isFull ? arib_initialize_decoder_a_profile : arib_initialize_decoder_c_profile)(decoder);
    arib_decode_buffer(decoder, safe.data(), safe.size(), buffer.data(), buffer.size() - 1);
    auto lines = LinesOf(arib_decoder_get_regions(decoder), isFull ? FullHeight : OneSegmentHeight);
    arib_finalize_decoder(decoder);
    return lines;
}

std::string AribCaptionDecoder::State::Language(unsigned number) const
{
    for (AribLanguage const& language : languages) {
        if (language.tag + 1U == number) {
            return language.language;
        }
    }
    return "";
}

AribCaptionDecoder::AribCaptionDecoder(Profile profile) : m_state(std::make_unique<State>(profile)) {}

AribCaptionDecoder::~AribCaptionDecoder() = default;
AribCaptionDecoder::AribCaptionDecoder(AribCaptionDecoder&& other) noexcept = default;
AribCaptionDecoder& AribCaptionDecoder::operator=(AribCaptionDecoder&& other) noexcept = default;

bool AribCaptionDecoder::IsAvailable()
{
    return true;
}

std::optional<Caption> AribCaptionDecoder::Decode(ByteView field, std::optional<std::uint64_t> pts)
{
    auto const group = ParseAribGroup(field);
    if (!m_state || !group) {
        return std::nullopt;
    }
    if (auto languages = AribLanguagesOf(*group)) {
        m_state->languages = std::move(*languages);
    }
    auto const text = AribStatement(*group);
    if (!text) {
        return std::nullopt;
    }
    Caption caption;
    caption.kind = group->isSuperimposed ? CaptionKind::AribSuperimpose : CaptionKind::AribCaption;
    caption.language = m_state->Language(group->number);
    caption.pts = pts;
    caption.lines = m_state->Lines(*text);
    bool const isCaption = !caption.IsEmpty() || Clears(*text);
    return isCaption ? std::optional(std::move(caption)) : std::nullopt;
}

} // namespace zviptv
