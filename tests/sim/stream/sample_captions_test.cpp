// SPDX-License-Identifier: MIT
#include "CaptionText.h"
#include "NaiveReassembly.h"

#include <gmock/gmock.h>

using namespace zviptv::test;

namespace {

std::vector<Bytes> PesOfSample(std::uint16_t pid)
{
    return ReassembleNaively(ReadWholeFile(ZVIPTV_SAMPLE_FILE), pid);
}

/// The rows of a teletext PES packet whose units have this id.
std::vector<TeletextRow> RowsOf(Bytes const& pes, std::uint8_t unit)
{
    Bytes const payload = PesPayload(pes);
    EXPECT_EQ(payload.at(0), 0x10) << "EBU data";
    return payload.at(1) == unit ? ReadTeletext(Bytes(payload.begin() + 1, payload.end()))
                                 : std::vector<TeletextRow>();
}

} // namespace

TEST(SampleCaptions, TeletextIsSentInWholeTransportPackets)
{
    for (Bytes const& pes : PesOfSample(0x104)) {
        EXPECT_EQ(pes.size() % 184, 0u);
        EXPECT_EQ(pes.at(3), 0xBD);
        EXPECT_EQ(pes.at(6) & 0x04, 0x04) << "aligned";
        EXPECT_EQ(pes.at(8), 0x24) << "45 bytes of header";
    }
}

TEST(SampleCaptions, PageOneHundredListsTheSubtitles)
{
    std::vector<TeletextRow> const wanted{{0x100, 0, "ZV Sample One"},
                                          {0x100, 2, "ZV Sample One"},
                                          {0x100, 4, "This is page 100."},
                                          {0x100, 6, "888  Subtitles in English"},
                                          {0x100, 7, "889  Untertitel auf Deutsch"},
                                          {0x1FF, 0, ""}};
    std::size_t times = 0;
    for (Bytes const& pes : PesOfSample(0x104)) {
        auto const rows = RowsOf(pes, 0x02);
        if (!rows.empty()) {
            EXPECT_EQ(rows, wanted);
            ++times;
        }
    }
    EXPECT_EQ(times, 4u);
}

TEST(SampleCaptions, SubtitlePagesCountInTwoLanguages)
{
    std::vector<std::string> shown;
    for (Bytes const& pes : PesOfSample(0x104)) {
        auto const rows = RowsOf(pes, 0x03);
        if (rows.empty()) {
            continue;
        }
        std::string text;
        for (TeletextRow const& row : rows) {
            if (row.row != 0) {
                text += (row.page == 0x888 ? "E " : row.page == 0x889 ? "D " : "? ") + row.text + ". ";
            }
        }
        shown.push_back(text);
    }
    EXPECT_THAT(shown, testing::ElementsAre("E One. D Eins. ", "", "E Two. D Zwei. ", "", "E Three. D Drei. ",
                                            "", "E Four. D Vier. ", "", "E Five. D Fünf. ", ""));
}

TEST(SampleCaptions, TheAribCaptionCountsInHiragana)
{
    std::vector<std::string> shown;
    for (Bytes const& pes : PesOfSample(0x105)) {
        auto const [group, body] = ReadAribGroup(PesPayload(pes));
        if (group == 0) {
            EXPECT_EQ(std::string(body.begin() + 3, body.begin() + 6), "jpn");
            continue;
        }
        ASSERT_EQ(group, 1u);
        std::size_t const size = body.at(8);
        ASSERT_EQ(body.size(), 9 + size);
        EXPECT_EQ(body[9], 0x0C) << "clears the screen";
        shown.emplace_back(body.begin() + (size == 1 ? 10 : 17), body.end());
    }
    // い ち, に, さ ん, よ ん, ご
    EXPECT_THAT(shown,
                testing::ElementsAre("\xA4\xC1", "", "\xCB", "", "\xB5\xF3", "", "\xE8\xF3", "", "\xB4", ""));
}
