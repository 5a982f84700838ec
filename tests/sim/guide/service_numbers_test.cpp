// SPDX-License-Identifier: MIT
#include "guide/ServiceNumbers.h"

#include <gmock/gmock.h>

namespace zviptv::sim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ServiceNumbers : public testing::Test
{
protected:
    std::vector<std::uint64_t> Assign(std::vector<GuideChannel> const& channels,
                                      ServiceNames const& names = {})
    {
        return AssignServiceNumbers(channels, names, m_warnings);
    }

    GuideWarnings m_warnings;
};

TEST_F(ServiceNumbers, TheNameInTheStreamComesFirst)
{
    EXPECT_THAT(Assign({{"9.example", {"Other", "ZV Sample One"}}}, {{"ZV Sample One", 4711}}),
                ElementsAre(4711u));
}

TEST_F(ServiceNumbers, ChannelIdsThatAreNumbers)
{
    EXPECT_THAT(Assign({{"7", {}}, {"12.example.org", {}}, {"18446744073709551615", {}}, {"007", {}}}),
                ElementsAre(7u, 12u, 18446744073709551615u, 1u)); // the last collides with the first
    EXPECT_EQ(m_warnings.Count(), 1u);
}

TEST_F(ServiceNumbers, IdsThatResembleNumbersAreNotNumbers)
{
    EXPECT_THAT(Assign({{"3sat.example", {}},
                        {"-5", {}},
                        {"+6", {}},
                        {"18446744073709551616", {}},
                        {"", {}},
                        {" 9", {}},
                        {".5", {}}}),
                ElementsAre(1u, 2u, 3u, 4u, 5u, 6u, 7u));
    EXPECT_EQ(m_warnings.Count(), 0u);
}

TEST_F(ServiceNumbers, DisplayNamesThatAreNumbers)
{
    EXPECT_THAT(Assign({{"a", {"A", "42", "43"}}, {"b", {"44.b"}}}), ElementsAre(42u, 1u));
}

TEST_F(ServiceNumbers, OtherServicesGetFreeNumbersInFileOrder)
{
    EXPECT_THAT(Assign({{"a", {}}, {"2", {}}, {"b", {}}, {"c", {"1"}}, {"d", {}}}),
                ElementsAre(3u, 2u, 4u, 1u, 5u));
}

TEST_F(ServiceNumbers, TheFirstChannelOfTheFileTakesPrecedence)
{
    EXPECT_THAT(
        Assign({{"5", {"60"}}, {"5.example", {"50"}}, {"x", {"Same"}}, {"8", {"Same"}}}, {{"Same", 3}}),
        ElementsAre(5u, 50u, 3u, 8u));
    EXPECT_THAT(m_warnings.First(),
                ElementsAre(HasSubstr("channel \"8\": service id 3 belongs to another channel"),
                            HasSubstr("channel \"5.example\": service id 5 belongs to another channel")));
}

TEST_F(ServiceNumbers, AnEarlierRulePrecedesTheFileOrder)
{
    EXPECT_THAT(Assign({{"1", {}}, {"x", {"ZV Sample One"}}}, {{"ZV Sample One", 1}}), ElementsAre(2u, 1u));
    EXPECT_EQ(m_warnings.Count(), 1u);
}

} // namespace
} // namespace zviptv::sim
