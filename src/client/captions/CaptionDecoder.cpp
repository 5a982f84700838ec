// SPDX-License-Identifier: MIT
#include <zviptv/client/CaptionDecoder.h>

#include <utility>

namespace zviptv {

namespace {

constexpr std::size_t MaxStreams = 16; // of each kind

void Append(std::vector<Caption>& all, std::vector<Caption> more, std::optional<std::uint16_t> pid)
{
    for (Caption& caption : more) {
        caption.pid = pid;
        all.push_back(std::move(caption));
    }
}

} // namespace

struct __attribute__((visibility("hidden"))) CaptionDecoder::State
{
    using Pid = std::optional<std::uint16_t>; ///< nothing for data without one

    std::vector<Caption> Decode(PesKind kind, Pid pid, ByteView field, std::optional<std::uint64_t> pts);

    TeletextPages const pages;
    std::map<Pid, TeletextDecoder> teletext;
    std::map<Pid, AribCaptionDecoder> arib;
};

std::vector<Caption> CaptionDecoder::State::Decode(PesKind kind, Pid pid, ByteView field,
                                                   std::optional<std::uint64_t> pts)
{
    std::vector<Caption> captions;
    if (kind == PesKind::Teletext && (teletext.count(pid) != 0 || teletext.size() < MaxStreams)) {
        TeletextDecoder& decoder = teletext.try_emplace(pid, pages).first->second;
        Append(captions, decoder.Decode(field, pts), pid);
    }
    if (kind == PesKind::Caption && (arib.count(pid) != 0 || arib.size() < MaxStreams)) {
        AribCaptionDecoder& decoder = arib.try_emplace(pid).first->second;
        if (auto caption = decoder.Decode(field, pts)) {
            caption->pid = pid;
            captions.push_back(std::move(*caption));
        }
    }
    return captions;
}

CaptionDecoder::CaptionDecoder(TeletextPages pages) : m_state(new State{std::move(pages), {}, {}}) {}

CaptionDecoder::~CaptionDecoder() = default;
CaptionDecoder::CaptionDecoder(CaptionDecoder&& other) noexcept = default;
CaptionDecoder& CaptionDecoder::operator=(CaptionDecoder&& other) noexcept = default;

std::vector<Caption> CaptionDecoder::Decode(PesPacket const& packet)
{
    return m_state ? m_state->Decode(packet.Kind(), packet.Pid(), packet.Payload(), packet.Pts())
                   : std::vector<Caption>();
}

std::vector<Caption> CaptionDecoder::Decode(CaptionData const& data)
{
    return m_state ? m_state->Decode(data.Kind(), std::nullopt, data.Data(), std::nullopt)
                   : std::vector<Caption>();
}

std::vector<Caption> CaptionDecoder::Flush()
{
    std::vector<Caption> captions;
    if (!m_state) {
        return captions;
    }
    for (auto& [pid, decoder] : m_state->teletext) {
        Append(captions, decoder.Flush(), pid);
    }
    return captions;
}

} // namespace zviptv
