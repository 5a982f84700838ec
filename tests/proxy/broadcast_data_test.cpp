// SPDX-License-Identifier: MIT
#include "MethodTable.h"

#include <climits>

using namespace zviptv::test;

namespace {

class BroadcastData : public ServiceTest
{
protected:
    void AnswerRatings(std::string const& count, std::string const& bytes, std::string const& result = "1")
    {
        m_service.Answer("GetRatingInfo",
                         {{"result_internal", result}, {"ratingInfoSize", count}, {"ratingInfo", bytes}});
    }

    std::vector<ZVRatingInfo> m_ratings{{1, 1, 1}, {2, 2, 2}, {3, 3, 3}};
};

TEST_F(BroadcastData, SendsTheFactoryModeFlagAlsoAsZero)
{
    EXPECT_TRUE(CreateBroadcast()->SetUnlockedInfoWhenFactoryMode(false));
    EXPECT_EQ(m_service.LastRequest().entries, Entries({{"functionname", "SetUnlockedInfoWhenFactoryMode"},
                                                        {"handleID", "256"},
                                                        {"lockState", "0"}}));
}

TEST_F(BroadcastData, FlagsAreTrueForAnyOtherNumberThanZero)
{
    IBroadcastData& broadcast = *CreateBroadcast();
    using Flag = bool (IBroadcastData::*)(bool&);
    struct
    {
        char const* function;
        char const* key;
        Flag method;
    } const flags[] = {{"CheckHardOfHearingSBT", "exists", &IBroadcastData::CheckHardOfHearingSBT},
                       {"GetRatingLockState", "lockState", &IBroadcastData::GetRatingLockState},
                       {"FlagServiceLocked", "outServiceLocked", &IBroadcastData::FlagServiceLocked}};
    for (auto const& [function, key, method] : flags) {
        SCOPED_TRACE(function);
        for (auto const& [text, expected] : {std::pair("1", true), {"2", true}, {"-1", true}, {"0", false}}) {
            m_service.Answer(function, {{"result_internal", "1"}, {key, text}});
            bool flag = !expected;
            EXPECT_TRUE((broadcast.*method)(flag));
            EXPECT_EQ(flag, expected) << text;
        }
    }
}

TEST_F(BroadcastData, RatingsReplaceTheContentsOfTheVector)
{
    AnswerRatings("2", std::string("\1\2\3\4\5\6", 6));
    EXPECT_TRUE(CreateBroadcast()->GetRatingInfo(m_ratings));
    ASSERT_EQ(m_ratings.size(), 2U);
    EXPECT_EQ(BytesOf(m_ratings.at(0)), "\1\2\3");
    EXPECT_EQ(BytesOf(m_ratings.at(1)), "\4\5\6");
}

TEST_F(BroadcastData, NoRatingsEmptyTheVector)
{
    IBroadcastData& broadcast = *CreateBroadcast();
    AnswerRatings("0", "");
    EXPECT_TRUE(broadcast.GetRatingInfo(m_ratings));
    EXPECT_TRUE(m_ratings.empty());
    m_ratings = {{1, 1, 1}};
    AnswerRatings("0", "abc", "0");
    EXPECT_FALSE(broadcast.GetRatingInfo(m_ratings));
    EXPECT_TRUE(m_ratings.empty());
}

TEST_F(BroadcastData, RatingsThatAreMissingAreZero)
{
    AnswerRatings("2", "\1\2\3\4");
    EXPECT_TRUE(CreateBroadcast()->GetRatingInfo(m_ratings));
    ASSERT_EQ(m_ratings.size(), 2U);
    EXPECT_EQ(BytesOf(m_ratings.at(1)), std::string("\4\0\0", 3));
}

TEST_F(BroadcastData, RatingsBeyondTheCountAreIgnored)
{
    AnswerRatings("1", "\1\2\3\4\5\6");
    EXPECT_TRUE(CreateBroadcast()->GetRatingInfo(m_ratings));
    ASSERT_EQ(m_ratings.size(), 1U);
    EXPECT_EQ(BytesOf(m_ratings.front()), "\1\2\3");
}

TEST_F(BroadcastData, HostileCountsAreALengthError)
{
    IBroadcastData& broadcast = *CreateBroadcast();
    constexpr int mostInAMessage = (32 * 1024 * 1024 - 4096) / 3;
    for (int const count : {-1, INT_MIN, INT_MAX, mostInAMessage + 1}) {
        SCOPED_TRACE(count);
        m_ratings.resize(3);
        AnswerRatings(std::to_string(count), "\1\2\3");
        EXPECT_EQ(FailureOf([&] { broadcast.GetRatingInfo(m_ratings); }),
                  "length_error: vector::_M_default_append");
        EXPECT_TRUE(m_ratings.empty());
    }
}

TEST_F(BroadcastData, MalformedCountLeavesTheVectorUnchanged)
{
    AnswerRatings("many", "\1\2\3");
    IBroadcastData& broadcast = *CreateBroadcast();
    EXPECT_EQ(FailureOf([&] { broadcast.GetRatingInfo(m_ratings); }), "invalid_argument: stoi");
    EXPECT_EQ(m_ratings.size(), 3U);
}

TEST_F(BroadcastData, EmptyKoreanCodeThrowsWithTheLanguageStored)
{
    IBroadcastData& broadcast = *CreateBroadcast();
    for (WireEntries const& answer :
         {Entries({{"result_internal", "1"}, {"landCode", "7040882"}, {"koreanCode", ""}}),
          Entries({{"result_internal", "1"}, {"landCode", "7040882"}})}) {
        m_service.AnswerWith("GetCaptionLanguage", answer);
        EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
        char code = '?';
        EXPECT_EQ(FailureOf([&] { broadcast.GetCaptionLanguage(ZV_CAPTION_SERVICE_1, language, code); }),
                  "out_of_range: basic_string::at: __n (which is 0) >= this->size() (which is 0)");
        EXPECT_EQ(language, ZV_LANGUAGE_KOR);
        EXPECT_EQ(code, '?');
    }
}

TEST_F(BroadcastData, KoreanCodeIsTheFirstCharacter)
{
    m_service.Answer("GetCaptionLanguage",
                     {{"result_internal", "0"}, {"landCode", "0"}, {"koreanCode", "K"}});
    EZVLanguageCode language = ZV_LANGUAGE_ENG;
    char code = '?';
    EXPECT_FALSE(CreateBroadcast()->GetCaptionLanguage(ZV_CAPTION_SERVICE_1, language, code));
    EXPECT_EQ(code, 'K');
}

TEST_F(BroadcastData, MalformedIndexLeavesTheLanguageStored)
{
    m_service.Answer("GetCurrentTTX", {{"result_internal", "1"}, {"landCode", "5"}, {"index", "4294967295"}});
    IBroadcastData& broadcast = *CreateBroadcast();
    EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
    unsigned int index = 77;
    EXPECT_EQ(FailureOf([&] { broadcast.GetCurrentTTX(language, index); }), "out_of_range: stoi");
    EXPECT_EQ(ShowAll(language, index), "5, 77");
}

} // namespace
