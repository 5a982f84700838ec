// SPDX-License-Identifier: MIT
#include "StreamTestSupport.h"

#include <gtest/gtest.h>

using namespace zviptv::sim;
using namespace zviptv::test;

TEST(Descriptors, LanguagesKeepAllTheirEntries)
{
    Bytes const data{'e', 'n', 'g', 0, 'd', 'e', 'u', 3};
    auto const languages = ParseLanguages(data);
    ASSERT_EQ(languages.size(), 2u);
    EXPECT_EQ(languages[0].language, "eng");
    EXPECT_EQ(languages[0].audioType, 0);
    EXPECT_EQ(languages[1].language, "deu");
    EXPECT_EQ(languages[1].audioType, 3);
}

TEST(Descriptors, TeletextPagesKeepAllTheirEntries)
{
    Bytes const data{'d', 'e', 'u', 0x09, 0x00,  // initial page, magazine 1, page 00
                     'd', 'e', 'u', 0x17, 0x77,  // subtitles, magazine 7, page 77
                     'e', 'n', 'g', 0x28, 0x88}; // hearing impaired, magazine 0, which is 8, page 88
    auto const pages = ParseTeletextPages(data);
    ASSERT_EQ(pages.size(), 3u);
    EXPECT_EQ(pages[0].type, 1);
    EXPECT_EQ(pages[0].magazine, 1);
    EXPECT_EQ(pages[0].page, 0x00);
    EXPECT_EQ(pages[1].language, "deu");
    EXPECT_EQ(pages[1].type, 2);
    EXPECT_EQ(pages[1].magazine, 7);
    EXPECT_EQ(pages[1].page, 0x77);
    EXPECT_EQ(pages[2].language, "eng");
    EXPECT_EQ(pages[2].type, 5);
    EXPECT_EQ(pages[2].magazine, 8);
    EXPECT_EQ(pages[2].page, 0x88);
}

TEST(Descriptors, SubtitlePagesKeepAllTheirEntries)
{
    Bytes const data{'e',  'n',  'g',  0x10, 0x00, 0x01, 0x00, 0x02, 'd',  'e',  'u',  0x20,
                     0x12, 0x34, 0x56, 0x78, 'f',  'r',  'a',  0x14, 0xFF, 0xFF, 0x00, 0x00};
    auto const pages = ParseSubtitlePages(data);
    ASSERT_EQ(pages.size(), 3u);
    EXPECT_EQ(pages[0].compositionPage, 1);
    EXPECT_EQ(pages[0].ancillaryPage, 2);
    EXPECT_EQ(pages[1].language, "deu");
    EXPECT_EQ(pages[1].type, 0x20);
    EXPECT_EQ(pages[1].compositionPage, 0x1234);
    EXPECT_EQ(pages[1].ancillaryPage, 0x5678);
    EXPECT_EQ(pages[2].compositionPage, 0xFFFF);
}

TEST(Descriptors, FiftyOneTeletextPagesAreNotTooMany)
{
    Bytes data;
    for (std::uint8_t page = 0; page < 51; ++page) { // 255 bytes, all that a descriptor holds
        data = data + Bytes{'e', 'n', 'g', 0x11, page};
    }
    auto const pages = ParseTeletextPages(data);
    ASSERT_EQ(pages.size(), 51u);
    EXPECT_EQ(pages.back().page, 50);
}

TEST(Descriptors, IgnoresAnIncompleteLastEntry)
{
    EXPECT_TRUE(ParseTeletextPages(Bytes{'e', 'n', 'g', 0x11}).empty());
    EXPECT_EQ(ParseSubtitlePages(Bytes(15, 'a')).size(), 1u);
    EXPECT_EQ(ParseLanguages(Bytes(7, 'a')).size(), 1u);
    EXPECT_TRUE(ParseLanguages(Bytes{}).empty());
}

TEST(Descriptors, LanguagesAreAlwaysThreePrintableCharacters)
{
    EXPECT_EQ(ParseLanguages(Bytes{0x00, 0xFF, 'x', 0})[0].language, "??x");
    EXPECT_EQ(ParseLanguages(Bytes{'\n', 0x7F, 0x1B, 0})[0].language, "???");
}

TEST(Descriptors, SupplementaryAudioReportsItsLanguageIfPresent)
{
    EXPECT_EQ(ParseSupplementaryAudioLanguage(Bytes{0x06, 0x85, 'f', 'r', 'a'}), "fra");
    EXPECT_FALSE(ParseSupplementaryAudioLanguage(Bytes{0x06, 0x84, 'f', 'r', 'a'})) << "flag not set";
    EXPECT_FALSE(ParseSupplementaryAudioLanguage(Bytes{0x06, 0x85, 'f', 'r'})) << "cut off";
    EXPECT_FALSE(ParseSupplementaryAudioLanguage(Bytes{0x15, 0x85, 'f', 'r', 'a'})) << "another extension";
    EXPECT_FALSE(ParseSupplementaryAudioLanguage(Bytes{}));
}

TEST(Descriptors, AListEndsAfterTheLastCompleteEntry)
{
    auto const list = ParseDescriptors(Bytes{0x0A, 1, 'x', 0x52, 0, 0x48, 3, 'y', 'z'});
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].tag, 0x0A);
    EXPECT_EQ(list[0].data, Bytes{'x'});
    EXPECT_EQ(list[1].tag, 0x52);
    EXPECT_TRUE(list[1].data.empty());
    EXPECT_TRUE(ParseDescriptors(Bytes{0x0A}).empty());
}
