// SPDX-License-Identifier: MIT
#include <zviptv/IPTVTypes.h>

#include <gtest/gtest.h>

#include <type_traits>

namespace {

TEST(Types, RecordsHaveTheWireSizes)
{
    EXPECT_EQ(sizeof(ZVAudio), 32U);
    EXPECT_EQ(sizeof(ZVTTX), 16U);
    EXPECT_EQ(sizeof(ZVHybridSBT), 24U);
    EXPECT_EQ(sizeof(ZVISDBText), 16U);
    EXPECT_EQ(sizeof(ZVDualSound), 8U);
    EXPECT_EQ(sizeof(ZVRatingInfo), 3U);
    EXPECT_EQ(alignof(ZVRatingInfo), 1U);
    EXPECT_EQ(sizeof(ZVResolution), 32U);
    EXPECT_EQ(alignof(IPGProgramId), 8U);
}

TEST(Types, RatingsAreContiguous)
{
    std::vector<ZVRatingInfo> const ratings(2);
    EXPECT_EQ(reinterpret_cast<char const*>(&ratings[1] + 1) - reinterpret_cast<char const*>(&ratings[0]), 6);
}

template <typename Enumeration>
constexpr bool Is32BitSigned = std::is_same_v<std::underlying_type_t<Enumeration>, std::int32_t>;

TEST(Types, EnumerationsAre32BitSigned)
{
    EXPECT_TRUE(Is32BitSigned<IPTVProfile>);
    EXPECT_TRUE(Is32BitSigned<EZVAudioEncodeType>);
    EXPECT_TRUE(Is32BitSigned<EZVLanguageCode>);
    EXPECT_TRUE(Is32BitSigned<EZVCaptionService>);
    EXPECT_TRUE(Is32BitSigned<EZVISDBTextType>);
    EXPECT_TRUE(Is32BitSigned<EZVParentalLock>);
    EXPECT_TRUE(Is32BitSigned<EZVMultiSoundMode>);
    EXPECT_TRUE(Is32BitSigned<EZVSourceState>);
    EXPECT_TRUE(Is32BitSigned<EZVCaptionDataMode>);
    EXPECT_TRUE(Is32BitSigned<cvtv_resolution_e>);
    EXPECT_TRUE(Is32BitSigned<Program_IPG>);
}

TEST(Types, UnknownHasItsNumbers)
{
    EXPECT_EQ(static_cast<int>(ZV_SOURCE_STATE_UNKNOWN), -1);
    EXPECT_EQ(static_cast<int>(ZV_CAPTION_DATA_MODE_UNKNOWN), -1);
    EXPECT_EQ(static_cast<int>(ZV_CAPTION_SERVICE_UNKNOWN), 0);
    EXPECT_EQ(static_cast<int>(CVTV_RESOLUTION_UNKNOWN), 0);
    EXPECT_EQ(static_cast<int>(IPTV_PROFILE_DEFAULT), 1);
}

TEST(Types, MembersHaveTheirSizes)
{
    EXPECT_TRUE((std::is_same_v<decltype(ZVPESData::type), std::int32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(ZVPESData::pid), std::int16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(ZVPESData::pts), std::uint32_t>));
    EXPECT_EQ(sizeof(decltype(ZVPESData::data)::value_type), 1U);
    EXPECT_TRUE((std::is_same_v<decltype(ZVCaption::type), std::int32_t>));
    EXPECT_EQ(sizeof(decltype(ZVCaption::data)::value_type), 1U);
    EXPECT_TRUE((std::is_same_v<decltype(IPTVHandle::id), std::uint16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(IPGProgramId::serviceId), std::uint64_t>));
    EXPECT_TRUE((std::is_same_v<decltype(IPGProgramId::eventId), std::uint16_t>));
    EXPECT_TRUE((std::is_same_v<decltype(IPGProgramId::startTime), std::uint32_t>));
    EXPECT_TRUE((std::is_same_v<decltype(IPGProgramId::duration), std::uint32_t>));
}

std::uint32_t NumberOf(int profile, std::uint16_t id)
{
    return IPTVHandleNumber({static_cast<IPTVProfile>(profile), id});
}

TEST(Types, HandleNumberAddsTheIdToTheShiftedProfile)
{
    EXPECT_EQ(NumberOf(1, 0), 256U);
    EXPECT_EQ(NumberOf(2, 5), 517U);
    EXPECT_EQ(NumberOf(65537, 0), 256U);
    EXPECT_EQ(NumberOf(0, 256), 256U);
    EXPECT_EQ(NumberOf(1, 300), 556U);
    EXPECT_EQ(NumberOf(2, 44), 556U);
    EXPECT_EQ(NumberOf(-1, 0), 16776960U);
    EXPECT_EQ(NumberOf(65535, 65535), 16842495U);
}

TEST(Languages, CodesBecomeNumbers)
{
    EXPECT_EQ(ZVLanguageFromISO639("eng"), ZV_LANGUAGE_ENG);
    EXPECT_EQ(ZVLanguageFromISO639("KOR"), ZV_LANGUAGE_KOR);
    EXPECT_EQ(ZVLanguageFromISO639("DeU"), ZV_LANGUAGE_DEU);
    EXPECT_EQ(static_cast<int>(ZVLanguageFromISO639("aaa")), 0x616161);
    EXPECT_EQ(static_cast<int>(ZVLanguageFromISO639("zzz")), 0x7a7a7a);
}

TEST(Languages, OtherCodesAreUnknown)
{
    for (char const* const code :
         {"", "e", "en", "engl", "e1g", "e g", "en{", "en`", "@ng", "en[", "\xc3\xa4n"}) {
        EXPECT_EQ(ZVLanguageFromISO639(code), ZV_LANGUAGE_UNKNOWN) << code;
    }
    EXPECT_EQ(ZVLanguageFromISO639(nullptr), ZV_LANGUAGE_UNKNOWN);
}

TEST(Languages, NumbersBecomeCodes)
{
    EXPECT_EQ(ZVLanguageToISO639(ZV_LANGUAGE_JPN), "jpn");
    EXPECT_EQ(ZVLanguageToISO639(ZV_LANGUAGE_QAA), "qaa");
    for (std::string const code :
         {"deu", "eng", "fra", "ita", "jpn", "kor", "por", "qaa", "spa", "und", "xyz"}) {
        EXPECT_EQ(ZVLanguageToISO639(ZVLanguageFromISO639(code.c_str())), code);
    }
}

TEST(Languages, InvalidNumbersBecomeEmpty)
{
    for (int const number :
         {0, 77, -1, 0x656e, 0x656e6700, 0x01656e67, 0x454e47, 0x656e7b, 0x650067, -0x656e67}) {
        EXPECT_EQ(ZVLanguageToISO639(static_cast<EZVLanguageCode>(number)), "") << number;
    }
}

} // namespace
