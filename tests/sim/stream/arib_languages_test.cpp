// SPDX-License-Identifier: MIT
#include "StreamBuilder.h"

#include "mpegts/AribCaptions.h"

#include <gtest/gtest.h>

using namespace zviptv;
using namespace zviptv::test;

namespace {

/// A packet of captions with one data group.
Bytes Caption(std::uint8_t group, Bytes const& data)
{
    Bytes payload{0x80, 0xFF, 0xF1, 0xAA, static_cast<std::uint8_t>(group << 2), 0, 0, 0};
    payload.push_back(static_cast<std::uint8_t>(data.size()));
    payload.insert(payload.end(), data.begin(), data.end());
    payload.insert(payload.end(), {0x12, 0x34});
    return MakePes(1, payload);
}

Bytes const Japanese{0x3F, 1, 0x10, 'j', 'p', 'n', 0x80, 0, 0, 0};

} // namespace

TEST(AribLanguages, ReadsManagementData)
{
    for (std::uint8_t const group : Bytes{0x00, 0x20}) {
        auto const languages = ParseAribLanguages(Caption(group, Japanese));
        ASSERT_TRUE(languages);
        ASSERT_EQ(languages->size(), 1u);
        EXPECT_EQ(languages->front().tag, 0);
        EXPECT_EQ(languages->front().language, "jpn");
    }
}

TEST(AribLanguages, ReadsTheLongerForms)
{
    Bytes const data{0xBF, 1,    2,   3,   4,    5,         // a time offset
                     2,    0x1C, 7,   'j', 'p',  'n', 0x80, // shown on a condition
                     0x30, 'e',  'n', 'g', 0x80, 0,   0,    0};
    auto const languages = ParseAribLanguages(Caption(0x20, data));
    ASSERT_TRUE(languages);
    ASSERT_EQ(languages->size(), 2u);
    EXPECT_EQ(languages->at(0).language, "jpn");
    EXPECT_EQ(languages->at(1).language, "eng");
    EXPECT_EQ(languages->at(1).tag, 1);
}

TEST(AribLanguages, IgnoresOtherData)
{
    EXPECT_FALSE(ParseAribLanguages(Caption(0x01, Japanese))) << "a caption";
    EXPECT_FALSE(ParseAribLanguages(Caption(0x00, {0x3F, 8, 0x10, 'j', 'p', 'n', 0x80}))) << "cut off";
    EXPECT_FALSE(ParseAribLanguages(MakePes(1, {0x10, 0xFF, 0xF0, 0, 0, 0, 0, 10}))) << "teletext";
    EXPECT_FALSE(ParseAribLanguages(MakePes(1, {})));
    EXPECT_FALSE(ParseAribLanguages(Bytes{}));
    for (std::size_t size = 0; size < 300; ++size) {
        ParseAribLanguages(Caption(0x00, Noise(size)));
    }
}
