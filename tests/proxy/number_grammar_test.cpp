// SPDX-License-Identifier: MIT
#include "MethodTable.h"

#include <limits>

using namespace zviptv::test;

namespace {

/// How applications read the decimal texts of a service: as strtol does.
class NumberGrammar : public ServiceTest
{
protected:
    /// The value that an application gets for `text` as a signed number of 32 bits.
    std::string Index(std::string const& text)
    {
        m_service.AnswerWith("GetCurrentAudioInfo",
                             Entries({{"result_internal", "1"}, {"landCode", "0"}, {"index", text}}));
        EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
        int index = -7;
        std::string const failure =
            FailureOf([&] { EXPECT_TRUE(CreateBroadcast()->GetCurrentAudioInfo(language, index)); });
        return failure == "none" ? std::to_string(index) : failure;
    }

    /// The same for an unsigned number of 64 bits.
    std::string Clock(std::string const& text)
    {
        m_service.AnswerWith("GetSTCCount", Entries({{"result_internal", "1"}, {"stcCount", text}}));
        unsigned long long stc = 7;
        std::string const failure = FailureOf([&] { EXPECT_TRUE(CreatePlayer()->GetSTCCount(stc)); });
        return failure == "none" ? std::to_string(stc) : failure;
    }
};

TEST_F(NumberGrammar, ReadsAsFarAsTheDecimalNumberGoes)
{
    EXPECT_EQ(Index("0x2"), "0");
    EXPECT_EQ(Index("2.0"), "2");
    EXPECT_EQ(Index(std::string("2\0", 2)), "2");
    EXPECT_EQ(Index("2e3"), "2");
    EXPECT_EQ(Index(" \t+02"), "2");
    EXPECT_EQ(Index("-2"), "-2");
    EXPECT_EQ(Clock("0x2"), "0");
    EXPECT_EQ(Clock("8589934591"), "8589934591");
}

TEST_F(NumberGrammar, ThrowsWithoutADigit)
{
    for (char const* const text : {"", " ", "two", "-", ".5", "true"}) {
        EXPECT_EQ(Index(text), "invalid_argument: stoi") << text;
        EXPECT_EQ(Clock(text), "invalid_argument: stoull") << text;
    }
}

TEST_F(NumberGrammar, ThrowsForANumberThatDoesNotFit)
{
    EXPECT_EQ(Index("2147483647"), "2147483647");
    EXPECT_EQ(Index("2147483648"), "out_of_range: stoi");
    EXPECT_EQ(Index("-2147483649"), "out_of_range: stoi");
    EXPECT_EQ(Clock("18446744073709551615"), "18446744073709551615");
    EXPECT_EQ(Clock("18446744073709551616"), "out_of_range: stoull");
}

/// So do strtoul and strtoull.
TEST_F(NumberGrammar, TakesANegativeUnsignedNumberModuloItsRange)
{
    EXPECT_EQ(Clock("-1"), std::to_string(std::numeric_limits<unsigned long long>::max()));
}

TEST_F(ServiceTest, ChannelsOfAProcessHaveOneBusName)
{
    CreatePlayer();
    CreateBroadcast();
    CreateSubscriber();
    CreateGuide();
    std::string const name = m_service.ClientOf("PLAYERCONTROL");
    EXPECT_EQ(name.substr(0, 1), ":");
    for (char const* const type : {"BROADCASTDATA", "IPTVDATASUBSCRIBER", "IPGUTIL"}) {
        EXPECT_EQ(m_service.ClientOf(type), name);
    }
    for (Announcement const& announcement : m_service.Announcements()) {
        EXPECT_EQ(announcement.message.sender, name);
    }
}

} // namespace
