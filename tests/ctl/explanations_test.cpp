// SPDX-License-Identifier: MIT
#include "session/Explanations.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace zviptv::ctl;

namespace {

/// What the standard library throws for this text where a number is wanted.
template <typename Call>
std::string Explained(std::string const& method, Call call)
{
    try {
        call();
    } catch (std::logic_error const& error) {
        return MalformedAnswer(method, error);
    }
    return "nothing was thrown";
}

std::string ExplainedNumber(std::string const& method, std::string const& text)
{
    return Explained(method, [&] { static_cast<void>(std::stoi(text)); });
}

TEST(ExplanationsTest, NumbersAreNamedWhereTheyAreKnown)
{
    EXPECT_EQ(ExplainedNumber("MuteAudio", ""),
              "the service's answer to MuteAudio lacks a number or spells it badly (result)");
    EXPECT_EQ(ExplainedNumber("GetResolution", "high"),
              "the service's answer to GetResolution lacks a number or spells it badly (result or res)");
    EXPECT_EQ(ExplainedNumber("ExistXmlForIPG", ""),
              "the service's answer to ExistXmlForIPG lacks a number or spells it badly (exist)");
    EXPECT_EQ(ExplainedNumber("GetSourceState", "4294967296"),
              "the service's answer to GetSourceState has a number that is out of range (result or state)");
    EXPECT_EQ(ExplainedNumber("GetRatingInfo", ""),
              "the service's answer to GetRatingInfo lacks a number or spells it badly (result or size of "
              "ratings)");
    EXPECT_EQ(ExplainedNumber("Whatever", ""),
              "the service's answer to Whatever lacks a number or spells it badly");
}

TEST(ExplanationsTest, OtherValuesToo)
{
    EXPECT_EQ(Explained("GetCaptionLanguage", [] { static_cast<void>(std::string().at(0)); }),
              "the service's answer to GetCaptionLanguage lacks a character (koreanCode)");
    EXPECT_EQ(Explained("GetRatingInfo", [] { throw std::length_error("too long"); }),
              "the service's answer to GetRatingInfo announces a size that no message can have (ratings)");
    EXPECT_EQ(UnreadableNotification(std::length_error("too long")),
              "a notification cannot be read: it announces a size that no message can have");
}

TEST(ExplanationsTest, EndpointsHaveNames)
{
    EXPECT_EQ(MissingEndpoint("MuteAudio"), "this service has no player control endpoint (PLAYERCONTROL)");
    EXPECT_EQ(MissingEndpoint("GetTTX"), "this service has no broadcast data endpoint (BROADCASTDATA)");
    EXPECT_EQ(MissingEndpoint("SubscribeForPES"),
              "this service has no data subscriber endpoint (IPTVDATASUBSCRIBER)");
    EXPECT_EQ(MissingEndpoint("GetGenre"), "this service has no programme guide endpoint (IPGUTIL)");
}

} // namespace
