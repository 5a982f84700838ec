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
    EXPECT_EQ("the service's answer to MuteAudio lacks a number or spells it badly (result)",
              ExplainedNumber("MuteAudio", ""));
    EXPECT_EQ("the service's answer to GetResolution lacks a number or spells it badly (result or res)",
              ExplainedNumber("GetResolution", "high"));
    EXPECT_EQ("the service's answer to ExistXmlForIPG lacks a number or spells it badly (exist)",
              ExplainedNumber("ExistXmlForIPG", ""));
    EXPECT_EQ("the service's answer to GetSourceState has a number that is out of range (result or state)",
              ExplainedNumber("GetSourceState", "4294967296"));
    EXPECT_EQ("the service's answer to GetRatingInfo lacks a number or spells it badly (result or size of "
              "ratings)",
              ExplainedNumber("GetRatingInfo", ""));
    EXPECT_EQ("the service's answer to Whatever lacks a number or spells it badly",
              ExplainedNumber("Whatever", ""));
}

TEST(ExplanationsTest, OtherValuesToo)
{
    EXPECT_EQ("the service's answer to GetCaptionLanguage lacks a character (koreanCode)",
              Explained("GetCaptionLanguage", [] { static_cast<void>(std::string().at(0)); }));
    EXPECT_EQ("the service's answer to GetRatingInfo announces a size that no message can have (ratings)",
              Explained("GetRatingInfo", [] { throw std::length_error("too long"); }));
    EXPECT_EQ("a notification cannot be read: it announces a size that no message can have",
              UnreadableNotification(std::length_error("too long")));
}

TEST(ExplanationsTest, EndpointsHaveNames)
{
    EXPECT_EQ("this service has no player control endpoint (PLAYERCONTROL)", MissingEndpoint("MuteAudio"));
    EXPECT_EQ("this service has no broadcast data endpoint (BROADCASTDATA)", MissingEndpoint("GetTTX"));
    EXPECT_EQ("this service has no data subscriber endpoint (IPTVDATASUBSCRIBER)",
              MissingEndpoint("SubscribeForPES"));
    EXPECT_EQ("this service has no programme guide endpoint (IPGUTIL)", MissingEndpoint("GetGenre"));
}

} // namespace
