// SPDX-License-Identifier: MIT
#include <zviptv/client/CaptionDecoder.h>

#include "TeletextPackets.h"
#include "TeletextPage.h"

#include <algorithm>
#include <utility>

namespace zviptv {

namespace {

struct DeleteDecoder
{
    void operator()(vbi_decoder* decoder) const { vbi_decoder_delete(decoder); }
};

/// libzvbi decodes teletext only while an event handler is registered.
void IgnoreEvent(vbi_event* /*event*/, void* /*userData*/) {}

/// A page that libzvbi has assembled.
class FetchedPage
{
public:
    FetchedPage(vbi_decoder* decoder, int number)
        : m_isThere(vbi_fetch_vt_page(decoder, &m_page, number, VBI_ANY_SUBNO, VBI_WST_LEVEL_1p5, Rows,
                                      FALSE) != FALSE)
    {
    }
    ~FetchedPage()
    {
        if (m_isThere) {
            vbi_unref_page(&m_page);
        }
    }
    FetchedPage(FetchedPage const&) = delete;
    FetchedPage& operator=(FetchedPage const&) = delete;

    vbi_page const* Get() const { return m_isThere ? &m_page : nullptr; }

private:
    static constexpr int Rows = 25;

    vbi_page m_page{};
    bool const m_isThere;
};

/// 888 as 0x888.
int Hexadecimal(unsigned page)
{
    return static_cast<int>(page / 100 << 8U | page / 10 % 10 << 4U | page % 10);
}

} // namespace

/// libzvbi keeps all its input. Therefore it gets only the wanted pages, each as its only subpage.
struct __attribute__((visibility("hidden"))) TeletextDecoder::State
{
    struct Open
    {
        unsigned page = 0; ///< 0 for an unwanted page
        std::optional<std::uint64_t> pts;
    };
    struct Known
    {
        unsigned subcode = 0;
        std::vector<CaptionLine> lines; ///< as last reported
    };

    explicit State(TeletextPages choice) : wanted(std::move(choice)), decoder(vbi_decoder_new())
    {
        if (decoder) {
            vbi_event_handler_register(decoder.get(), VBI_EVENT_TTX_PAGE, IgnoreEvent, this);
        }
    }

    void Take(TeletextPacket const& packet, std::optional<std::uint64_t> pts, std::vector<Caption>& done);
    void Begin(TeletextPacket packet, TeletextHeader const& header);
    void End(unsigned magazine, std::vector<Caption>& done);
    void EndAll(std::vector<Caption>& done);
    void Feed(TeletextPacket const& packet);

    TeletextPages const wanted;
    std::unique_ptr<vbi_decoder, DeleteDecoder> decoder; ///< null without memory
    std::array<Open, 9> open{};                          ///< by magazine, 1 to 8
    std::map<unsigned, Known> known;                     ///< by page
};

void TeletextDecoder::State::Take(TeletextPacket const& packet, std::optional<std::uint64_t> pts,
                                  std::vector<Caption>& done)
{
    constexpr unsigned LastRow = 26; // with the accents of other rows
    auto const address = ReadAddress(packet);
    if (!address) {
        return;
    }
    Open& present = open[address->magazine];
    if (address->row != 0) {
        if (present.page != 0 && address->row <= LastRow) {
            Feed(packet);
        }
        return;
    }
    auto const header = ReadHeader(packet, address->magazine);
    if (header && header->isSerial) {
        EndAll(done);
    } else {
        End(address->magazine, done);
    }
    bool const isWanted = header && header->page != 0 &&
                          (wanted.pages.empty() ? header->isSubtitle : wanted.pages.count(header->page) != 0);
    if (isWanted) {
        present = {header->page, pts};
        Begin(packet, *header);
    }
}

void TeletextDecoder::State::Begin(TeletextPacket packet, TeletextHeader const& header)
{
    auto const [entry, isNew] = known.try_emplace(header.page);
    bool const isOtherSubpage = !isNew && entry->second.subcode != header.subcode;
    entry->second.subcode = header.subcode;
    MakeOnlySubpage(packet, isOtherSubpage);
    Feed(packet);
}

void TeletextDecoder::State::End(unsigned magazine, std::vector<Caption>& done)
{
    Open const ended = std::exchange(open[magazine], {});
    if (ended.page == 0 || !decoder) {
        return;
    }
    Feed(FillingHeader(magazine));
    FetchedPage const page(decoder.get(), Hexadecimal(ended.page));
    if (page.Get() == nullptr) {
        return;
    }
    Caption caption;
    caption.page = ended.page;
    caption.pts = ended.pts;
    caption.lines = LinesOf(*page.Get());
    auto const language = wanted.languages.find(ended.page);
    caption.language = language == wanted.languages.end() ? "" : language->second;
    std::vector<CaptionLine>& former = known[ended.page].lines;
    if (caption.lines != former) {
        former = caption.lines;
        done.push_back(std::move(caption));
    }
}

void TeletextDecoder::State::EndAll(std::vector<Caption>& done)
{
    for (unsigned magazine = 1; magazine < open.size(); ++magazine) {
        End(magazine, done);
    }
}

/// Without a time: libzvbi takes pauses between times for a loss of packets.
void TeletextDecoder::State::Feed(TeletextPacket const& packet)
{
    vbi_sliced line{};
    line.id = VBI_SLICED_TELETEXT_B;
    std::copy(packet.begin(), packet.end(), line.data);
    if (decoder) {
        vbi_decode(decoder.get(), &line, 1, 0.0);
    }
}

TeletextDecoder::TeletextDecoder(TeletextPages pages) : m_state(std::make_unique<State>(std::move(pages))) {}

TeletextDecoder::~TeletextDecoder() = default;
TeletextDecoder::TeletextDecoder(TeletextDecoder&& other) noexcept = default;
TeletextDecoder& TeletextDecoder::operator=(TeletextDecoder&& other) noexcept = default;

bool TeletextDecoder::IsAvailable()
{
    return true;
}

std::vector<Caption> TeletextDecoder::Decode(ByteView field, std::optional<std::uint64_t> pts)
{
    std::vector<Caption> done;
    if (!m_state) {
        return done;
    }
    for (TeletextPacket const& packet : TeletextPacketsIn(field)) {
        m_state->Take(packet, pts, done);
    }
    return done;
}

std::vector<Caption> TeletextDecoder::Flush()
{
    std::vector<Caption> done;
    if (m_state) {
        m_state->EndAll(done);
    }
    return done;
}

} // namespace zviptv
