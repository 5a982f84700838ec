// SPDX-License-Identifier: MIT
#include "MethodTable.h"

using namespace zviptv::test;

namespace {

constexpr auto OtherLanguage = static_cast<EZVLanguageCode>(77);

/// Values are stored in order: those before a malformed one are stored, later ones are not.
class BroadcastDecodeOrder : public ServiceTest
{
protected:
    /// The failure of the call, with the out-parameters at that time.
    template <typename... Outputs>
    std::string Fail(bool (IBroadcastData::*method)(Outputs&...), WireEntries const& answer,
                     std::string const& function, Outputs... outputs)
    {
        m_service.AnswerWith(function, answer);
        IBroadcastData& broadcast = *CreateBroadcast();
        std::string const failure = FailureOf([&] { (broadcast.*method)(outputs...); });
        return failure + " | " + ShowAll(outputs...);
    }

    static WireEntries LanguageThenBadIndex()
    {
        return Entries({{"result_internal", "1"}, {"landCode", "12"}, {"index", "none"}});
    }

    static WireEntries BadLanguageThenRecord()
    {
        return Entries({{"result_internal", "1"}, {"landCode", "none"}, {"hybridSbt", PatternBytes(24)}});
    }
};

TEST_F(BroadcastDecodeOrder, LanguageThenIndex)
{
    EXPECT_EQ(Fail(&IBroadcastData::GetCurrentAudioInfo, LanguageThenBadIndex(), "GetCurrentAudioInfo",
                   OtherLanguage, 77),
              "invalid_argument: stoi | 12, 77");
    EXPECT_EQ(
        Fail(&IBroadcastData::GetCurrentTTX, LanguageThenBadIndex(), "GetCurrentTTX", OtherLanguage, 77U),
        "invalid_argument: stoi | 12, 77");
    EXPECT_EQ(Fail(&IBroadcastData::GetCurrentHybridSBT, LanguageThenBadIndex(), "GetCurrentHybridSBT",
                   OtherLanguage, 77U),
              "invalid_argument: stoi | 12, 77");
}

TEST_F(BroadcastDecodeOrder, LanguageThenIndexOfIsdbText)
{
    m_service.AnswerWith("GetCurrentISDBText", LanguageThenBadIndex());
    IBroadcastData& broadcast = *CreateBroadcast();
    EZVLanguageCode language = OtherLanguage;
    unsigned int index = 77;
    EXPECT_EQ(FailureOf([&] { broadcast.GetCurrentISDBText(ZV_ISDB_TEXT_CAPTION, language, index); }),
              "invalid_argument: stoi");
    EXPECT_EQ(ShowAll(language, index), "12, 77");
}

TEST_F(BroadcastDecodeOrder, LanguageThenSubtitle)
{
    auto subtitle = Untouched<ZVHybridSBT>();
    EXPECT_EQ(Fail(&IBroadcastData::GetPreferredHybridSBT, BadLanguageThenRecord(), "GetPreferredHybridSBT",
                   OtherLanguage, subtitle),
              "invalid_argument: stoi | 77, " + HexOf(BytesOf(subtitle)));
    m_service.AnswerWith("GetHybridSBT", BadLanguageThenRecord());
    IBroadcastData& broadcast = *CreateBroadcast();
    EZVLanguageCode language = OtherLanguage;
    EXPECT_EQ(FailureOf([&] { broadcast.GetHybridSBT(0, language, subtitle); }), "invalid_argument: stoi");
    EXPECT_EQ(BytesOf(subtitle), BytesOf(Untouched<ZVHybridSBT>()));
}

TEST_F(BroadcastDecodeOrder, ResultBeforeAllValues)
{
    EXPECT_EQ(Fail(&IBroadcastData::SizeOfAudio, Entries({{"result_internal", "yes"}, {"size", "3"}}),
                   "SizeOfAudio", 77U),
              "invalid_argument: stoi | 77");
    EXPECT_EQ(Fail(&IBroadcastData::GetRatingLockState,
                   Entries({{"result_internal", ""}, {"lockState", "1"}}), "GetRatingLockState", false),
              "invalid_argument: stoi | 0");
}

} // namespace
