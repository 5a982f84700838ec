#include "commands/Methods.h"

#include "session/Failure.h"

#include <gmock/gmock.h>

#include <map>

using namespace zviptv::ctl;

namespace {

std::string UsageError(std::string const& name, std::size_t arguments)
{
    try {
        FindMethod(name, arguments);
    } catch (Failure const& failure) {
        EXPECT_EQ(ExitCode::Usage, failure.Code());
        return failure.what();
    }
    return {};
}

TEST(MethodsTest, EveryMethodOfTheInterfacesIsThere)
{
    std::map<std::string, int> counts;
    int callable = 0;
    for (Method const& method : Methods()) {
        ++counts[method.interface];
        callable += method.call != nullptr ? 1 : 0;
    }
    EXPECT_EQ(
        (std::map<std::string, int>{
            {"IPlayerControl", 16}, {"IBroadcastData", 24}, {"IIPTVDataSubscriber", 4}, {"IIPGUtil", 10}}),
        counts);
    EXPECT_EQ(54U, Methods().size());
    EXPECT_EQ(50, callable);
}

TEST(MethodsTest, SignaturesAreDeduced)
{
    EXPECT_EQ("MuteAudio(bool on)", Signature(FindMethod("MuteAudio", 1)));
    EXPECT_EQ("UnMuteByRatingPin()", Signature(FindMethod("UnMuteByRatingPin", 0)));
    EXPECT_EQ("GetHybridSBT(uint32 index) -> EZVLanguageCode language, ZVHybridSBT subtitle",
              Signature(FindMethod("GetHybridSBT", 1)));
    EXPECT_EQ("GetRatingInfo() -> std::vector<ZVRatingInfo> ratings",
              Signature(FindMethod("GetRatingInfo", 0)));
    EXPECT_EQ("GetProgram(uint64 serviceId, uint16 eventId, uint32 startTime, uint32 duration, "
              "Program_IPG program) -> std::string out",
              Signature(FindMethod("GetProgram", 5)));
    EXPECT_EQ("GetProgram(uint32 index) -> std::string program", Signature(FindMethod("GetProgram", 1)));
}

TEST(MethodsTest, ArgumentsAreCounted)
{
    EXPECT_EQ("", UsageError("SetAppID", 0));
    EXPECT_EQ("", UsageError("SetAppID", 1));
    EXPECT_EQ("SetAppID takes 1 argument ([appId]), not 2", UsageError("SetAppID", 2));
    EXPECT_EQ("SetAudioFormat takes 2 arguments (type preferred), not 1", UsageError("SetAudioFormat", 1));
    EXPECT_EQ("GetSTCCount takes no arguments, not 1", UsageError("GetSTCCount", 1));
    EXPECT_EQ(
        "GetProgram takes 1 argument (index) or 5 arguments (serviceId eventId startTime duration program), "
        "not 2",
        UsageError("GetProgram", 2));
}

TEST(MethodsTest, UnknownNamesGetSuggestions)
{
    EXPECT_EQ("unknown method 'GetSTCCuont'; did you mean GetSTCCount?", UsageError("GetSTCCuont", 0));
    EXPECT_EQ("unknown method 'muteaudio'; did you mean MuteAudio?", UsageError("muteaudio", 1));
    EXPECT_EQ("unknown method 'xyz'; 'zviptvctl methods' lists all of them", UsageError("xyz", 0));
}

TEST(MethodsTest, SubscribingIsAnotherCommand)
{
    EXPECT_EQ("SubscribeForPES needs a callback: use 'zviptvctl pes'", UsageError("SubscribeForPES", 0));
    EXPECT_EQ("UnsubscribeForCaption needs a callback: use 'zviptvctl caption'",
              UsageError("UnsubscribeForCaption", 1));
}

TEST(MethodsTest, TheListNamesAllOfThem)
{
    Answer const list = ListMethods();
    EXPECT_THAT(list.text, testing::HasSubstr("IIPTVDataSubscriber\n  SubscribeForCaption("));
    EXPECT_THAT(list.text, testing::HasSubstr("UnSubscribeForPES(int32 key)   (use 'zviptvctl pes')\n"));
    ASSERT_EQ(54U, list.json["methods"].size());
    Json::Value const& first = list.json["methods"][0];
    EXPECT_EQ("{\"callable\":true,\"in\":[{\"name\":\"index\",\"type\":\"int32\"}],\"interface\":"
              "\"IPlayerControl\","
              "\"name\":\"SetCurrentAudioByIndex\",\"out\":[]}",
              Compact(first));
}

} // namespace
