// SPDX-License-Identifier: MIT
#include "CaptionSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>

namespace zviptv::test {
namespace {

using testing::ElementsAre;

using Texts = std::vector<std::string>;

std::vector<PesPacket> SamplePackets()
{
    return PacketsOf(SAMPLE_PATH);
}

/// The caption data that the service pushes for these packets.
std::vector<CaptionData> DataOf(std::vector<PesPacket> const& packets)
{
    std::vector<CaptionData> pushed;
    for (PesPacket const& packet : packets) {
        auto const kind = packet.Kind() == PesKind::Teletext  ? sim::StreamKind::Teletext
                          : packet.Kind() == PesKind::Caption ? sim::StreamKind::AribCaption
                                                              : sim::StreamKind::Other;
        if (auto caption = sim::CaptionIn({packet.Pid(), kind, {}, {}, packet.Data().Copy()})) {
            auto const bytes = std::make_shared<Bytes const>(std::move(caption->data));
            pushed.emplace_back(packet.Kind(), bytes, ByteView(*bytes));
        }
    }
    return pushed;
}

template <typename Pushed>
std::vector<Caption> DecodeAll(CaptionDecoder decoder, std::vector<Pushed> const& pushes)
{
    std::vector<Caption> captions;
    for (Pushed const& pushed : pushes) {
        for (Caption& caption : decoder.Decode(pushed)) {
            captions.push_back(std::move(caption));
        }
    }
    for (Caption& caption : decoder.Flush()) {
        captions.push_back(std::move(caption));
    }
    return captions;
}

std::vector<std::string> TextsOf(std::vector<Caption> const& captions, unsigned page)
{
    std::vector<std::string> texts;
    for (Caption const& caption : captions) {
        if (caption.page == page) {
            texts.push_back(Described(caption));
        }
    }
    return texts;
}

/// The captures of broadcasts are not part of the project.
class CaptionCapture : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!std::ifstream(m_path)) {
            GTEST_SKIP() << "no capture " << m_path << " (CMake variable ZVIPTV_MEDIA_DIR)";
        }
    }

    std::string const m_path = std::string(ZVIPTV_MEDIA_DIR) + "/dvb-4-audio-teletext.ts";
};

} // namespace

TEST(SampleCaptions, TeletextPagesHaveTextLanguageAndTime)
{
    auto const captions =
        DecodeAll(CaptionDecoder({{888, 889}, {{888, "eng"}, {889, "deu"}}}), SamplePackets());
    EXPECT_THAT(TextsOf(captions, 888),
                ElementsAre("888 eng 223200: One", "888 eng 313200:", "888 eng 403200: Two",
                            "888 eng 493200:", "888 eng 583200: Three",
                            "888 eng 673200:", "888 eng 763200: Four",
                            "888 eng 853200:", "888 eng 943200: Five", "888 eng 1033200:"));
    EXPECT_THAT(TextsOf(captions, 889),
                ElementsAre("889 deu 223200: Eins", "889 deu 313200:", "889 deu 403200: Zwei",
                            "889 deu 493200:", "889 deu 583200: Drei",
                            "889 deu 673200:", "889 deu 763200: Vier",
                            "889 deu 853200:", "889 deu 943200: Fünf", "889 deu 1033200:"));
    ASSERT_EQ(TextsOf(captions, 100), Texts()) << "only the pages that are asked for";
    for (Caption const& caption : captions) {
        EXPECT_EQ(caption.pid, caption.page == 0 ? 0x105 : 0x104);
    }
}

TEST(SampleCaptions, SubtitlePagesAreFoundByTheirFlag)
{
    std::set<unsigned> pages;
    for (Caption const& caption : DecodeAll(CaptionDecoder(), SamplePackets())) {
        pages.insert(caption.page);
        EXPECT_EQ(caption.language, caption.page == 0 ? "jpn" : "");
    }
    EXPECT_THAT(pages, ElementsAre(0U, 888U, 889U)) << "and page 100 is not a subtitle";
}

TEST(SampleCaptions, AnyPageCanBeDecoded)
{
    auto const captions = DecodeAll(CaptionDecoder({{100}, {}}), SamplePackets());
    EXPECT_THAT(TextsOf(captions, 100),
                ElementsAre("100 - 178200: ZV Sample One / This is page 100. / 888  Subtitles in English / "
                            "889  Untertitel auf Deutsch"))
        << "once: it is sent four times without a change";
}

TEST(SampleCaptions, AribCaptionsHaveTextLanguageAndTime)
{
    auto const captions = DecodeAll(CaptionDecoder(), SamplePackets());
    EXPECT_THAT(TextsOf(captions, 0),
                ElementsAre("caption jpn 223200: いち", "caption jpn 313200:", "caption jpn 403200: に",
                            "caption jpn 493200:", "caption jpn 583200: さん",
                            "caption jpn 673200:", "caption jpn 763200: よん",
                            "caption jpn 853200:", "caption jpn 943200: ご", "caption jpn 1033200:"));
}

TEST(SampleCaptions, CaptionDataGivesTheSameTextsWithoutPidAndTime)
{
    auto const captions = DecodeAll(CaptionDecoder({{889}, {{889, "deu"}}}), DataOf(SamplePackets()));
    EXPECT_THAT(TextsOf(captions, 889),
                ElementsAre("889 deu -: Eins", "889 deu -:", "889 deu -: Zwei",
                            "889 deu -:", "889 deu -: Drei", "889 deu -:", "889 deu -: Vier",
                            "889 deu -:", "889 deu -: Fünf", "889 deu -:"));
    EXPECT_THAT(TextsOf(captions, 0),
                ElementsAre("caption jpn -: いち", "caption jpn -:", "caption jpn -: に",
                            "caption jpn -:", "caption jpn -: さん", "caption jpn -:", "caption jpn -: よん",
                            "caption jpn -:", "caption jpn -: ご", "caption jpn -:"));
    for (Caption const& caption : captions) {
        EXPECT_FALSE(caption.pid);
    }
}

// ffmpeg -use_wallclock_as_timestamps 1 -txt_format text -txt_page 889 -i FILE -map i:0x42c -f srt - reads
// the same.
TEST_F(CaptionCapture, SubtitlesOfABroadcastAreRead)
{
    EXPECT_THAT(
        Described(DecodeAll(CaptionDecoder(), PacketsOf(m_path))),
        ElementsAre(
            "889 - 3856831433: Un train met dix secondes / pour dépasser un point donné.",
            "889 - 3857281433:", "889 - 3857295833: Comme la dame a vu le crime / par les derniers wagons,",
            "889 - 3857562233:",
            "889 - 3857580233: on peut supposer que le corps est / "
            "tombé pendant le passage du train.",
            "889 - 3858023033:", "889 - 3858044633: Donc, le train hurlait / à la fenêtre du vieil homme",
            "889 - 3858408233:", "889 - 3858419033: dix bonnes secondes / avant que le corps ne tombe.",
            "889 - 3858710633:",
            "889 - 3858721433: Le vieillard qui a entendu tomber / "
            "le corps une seconde après le cri,",
            "889 - 3859167833:",
            "889 - 3859189433: aurait donc entendu le garçon / "
            "alors que le train passait !",
            "889 - 3859524233:", "889 - 3859553033: Il ne peut pas l'avoir entendu ! / - Mais si.",
            "889 - 3859797833:", "889 - 3859808633: - Vous croyez ? / - Il hurlait à pleins poumons."));
}

TEST_F(CaptionCapture, PagesOfABroadcastHaveColours)
{
    auto const captions = DecodeAll(CaptionDecoder({{102}, {{102, "fra"}}}), PacketsOf(m_path));
    ASSERT_FALSE(captions.empty());
    EXPECT_EQ(Described(captions.front()),
              "102 fra 3856791833: CRÉDITS / Editeur ARTE G.E.I.E. / 4 quai du chanoine Winterer / "
              "67000 Strasbourg / Directrice de la publication / Véronique Cayla / "
              "Directeur Nouveaux Médias / Florian Hager / Rédaction / Jean-Philippe Beinert / (France) / "
              "Felix Eicker / (Allemagne)");
    std::set<int> colours;
    for (CaptionLine const& line : captions.front().lines) {
        for (CaptionRun const& run : line.runs) {
            Colour const colour = run.foreground;
            colours.insert(colour.red << 16 | colour.green << 8 | colour.blue);
        }
    }
    EXPECT_GT(colours.size(), 1U);
    for (int const colour : colours) {
        EXPECT_THAT((std::set<int>{0, 0xFF0000, 0xFF00, 0xFFFF00, 0xFF, 0xFF00FF, 0xFFFF, 0xFFFFFF}),
                    testing::Contains(colour));
    }
}

} // namespace zviptv::test
