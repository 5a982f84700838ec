// SPDX-License-Identifier: MIT
/// @file
/// Decoders that turn teletext and ARIB captions into text.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/client/ByteView.h>
#include <zviptv/client/Caption.h>
#include <zviptv/client/PesPacket.h>
#include <zviptv/client/Types.h>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace zviptv {

/// Which teletext pages are decoded, by their numbers from 100 to 899.
struct TeletextPages
{
    /// The pages to decode; if there are none, every page that the stream marks as a subtitle.
    std::set<unsigned> pages;

    /// Languages by page number. Captions of these pages get them. Teletext itself does not carry languages:
    /// use those that PageLanguages() finds in the service's list.
    std::map<unsigned, std::string> languages;
};

/// The languages of the teletext pages among the subtitles that Broadcast::Subtitles() lists, by page number.
/// Leaves out pages whose number is not decimal.
inline std::map<unsigned, std::string> PageLanguages(std::vector<Subtitle> const& subtitles)
{
    std::map<unsigned, std::string> languages;
    for (Subtitle const& subtitle : subtitles) {
        unsigned const tens = subtitle.page >> 4U;
        unsigned const ones = subtitle.page & 15U;
        if (subtitle.kind == SubtitleKind::Teletext && tens <= 9 && ones <= 9) {
            languages[subtitle.magazine * 100U + tens * 10U + ones] = ToString(subtitle.language);
        }
    }
    return languages;
}

/// Decodes the teletext pages of one stream with libzvbi.
///
/// A page is complete when the header of the next page of its magazine arrives. The PTS of its caption is
/// that of the PES packet that contains the header of the page itself.
///
/// Input may be arbitrary bytes: the decoder leaves out damaged packets and pages. It needs less than 10 MiB.
///
/// Threads: a decoder belongs to one thread at a time; several decoders may run in several threads.
class ZVIPTV_API TeletextDecoder
{
public:
    /// Decodes these pages.
    explicit TeletextDecoder(TeletextPages pages = {});
    ~TeletextDecoder();
    /// Takes over the state of `other`, which then finds no captions until it is assigned to.
    TeletextDecoder(TeletextDecoder&& other) noexcept;
    /// Replaces the state by that of `other`, which may then only be assigned to or destroyed.
    TeletextDecoder& operator=(TeletextDecoder&& other) noexcept;

    /// False if the library was built without libzvbi. A decoder then finds no captions.
    static bool IsAvailable();

    /// Decodes one data field of EN 300 472: the payload of a PES packet, or its data units without the data
    /// identifier. Returns the pages that became complete, in their order, except those whose lines have not
    /// changed. `pts` counts 1/90000 s.
    std::vector<Caption> Decode(ByteView field, std::optional<std::uint64_t> pts);

    /// Returns the pages that have begun, as if the stream had ended.
    std::vector<Caption> Flush();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Decodes the ARIB captions or the superimposed text of one stream with libaribb24.
///
/// Characters that the broadcaster draws itself (DRCS) are U+3013 "〓". Text of more than 4096 bytes is left
/// out: a screen holds far less.
///
/// Input may be arbitrary bytes. Threads: like TeletextDecoder.
class ZVIPTV_API AribCaptionDecoder
{
public:
    /// How the stream is coded: its data component id (data component descriptor).
    enum class Profile
    {
        Full,      ///< 0x0008, for televisions
        OneSegment ///< 0x0012, for mobile receivers
    };

    /// Decodes a stream of this profile.
    explicit AribCaptionDecoder(Profile profile = Profile::Full);
    ~AribCaptionDecoder();
    /// Takes over the state of `other`, which then finds no captions until it is assigned to.
    AribCaptionDecoder(AribCaptionDecoder&& other) noexcept;
    /// Replaces the state by that of `other`, which may then only be assigned to or destroyed.
    AribCaptionDecoder& operator=(AribCaptionDecoder&& other) noexcept;

    /// False if the library was built without libaribb24. A decoder then finds no captions.
    static bool IsAvailable();

    /// Decodes the payload of a PES packet, from its data identifier. Returns its caption; nothing for
    /// management data, from which the decoder learns the languages, and for other data. `pts` counts
    /// 1/90000 s.
    std::optional<Caption> Decode(ByteView field, std::optional<std::uint64_t> pts);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Decodes all captions that the service pushes: a decoder of the right kind for every stream.
///
/// It decodes up to 16 teletext streams and 16 ARIB streams, and ignores further ones. Threads: like
/// TeletextDecoder.
class ZVIPTV_API CaptionDecoder
{
public:
    /// Decodes these teletext pages and all ARIB captions.
    explicit CaptionDecoder(TeletextPages pages = {});
    ~CaptionDecoder();
    /// Takes over the state of `other`, which then finds no captions until it is assigned to.
    CaptionDecoder(CaptionDecoder&& other) noexcept;
    /// Replaces the state by that of `other`, which may then only be assigned to or destroyed.
    CaptionDecoder& operator=(CaptionDecoder&& other) noexcept;

    /// Decodes a packet of the kind PesKind::Teletext or PesKind::Caption; others give no captions.
    std::vector<Caption> Decode(PesPacket const& packet);

    /// Decodes data of the same kinds. The captions have neither PID nor PTS.
    std::vector<Caption> Decode(CaptionData const& data);

    /// Returns the teletext pages that have begun, as if the streams had ended.
    std::vector<Caption> Flush();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace zviptv
