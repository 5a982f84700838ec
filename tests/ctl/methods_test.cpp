// SPDX-License-Identifier: MIT
#include "commands/Methods.h"

#include "output/Failure.h"

#include <gmock/gmock.h>

#include <map>

using namespace zviptv::ctl;

namespace {

std::string UsageError(std::string const& name, std::size_t arguments)
{
    try {
        FindMethod(name, arguments);
    } catch (Failure const& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Usage);
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
    EXPECT_EQ(Methods().size(), 54U);
    EXPECT_EQ(callable, 50);
}

TEST(MethodsTest, SignaturesAreDeduced)
{
    EXPECT_EQ(Signature(FindMethod("MuteAudio", 1)), "MuteAudio(bool on)");
    EXPECT_EQ(Signature(FindMethod("UnMuteByRatingPin", 0)), "UnMuteByRatingPin()");
    EXPECT_EQ(Signature(FindMethod("GetHybridSBT", 1)),
              "GetHybridSBT(uint32 index) -> EZVLanguageCode language, ZVHybridSBT subtitle");
    EXPECT_EQ(Signature(FindMethod("GetRatingInfo", 0)),
              "GetRatingInfo() -> std::vector<ZVRatingInfo> ratings");
    EXPECT_EQ(Signature(FindMethod("GetProgram", 5)),
              "GetProgram(uint64 serviceId, uint16 eventId, uint32 startTime, uint32 duration, "
              "Program_IPG program) -> std::string out");
    EXPECT_EQ(Signature(FindMethod("GetProgram", 1)), "GetProgram(uint32 index) -> std::string program");
}

TEST(MethodsTest, ArgumentsAreCounted)
{
    EXPECT_EQ(UsageError("SetAppID", 0), "");
    EXPECT_EQ(UsageError("SetAppID", 1), "");
    EXPECT_EQ(UsageError("SetAppID", 2), "SetAppID takes 1 argument ([appId]), not 2");
    EXPECT_EQ(UsageError("SetAudioFormat", 1), "SetAudioFormat takes 2 arguments (type preferred), not 1");
    EXPECT_EQ(UsageError("GetSTCCount", 1), "GetSTCCount takes no arguments, not 1");
    EXPECT_EQ(
        UsageError("GetProgram", 2),
        "GetProgram takes 1 argument (index) or 5 arguments (serviceId eventId startTime duration program), "
        "not 2");
}

TEST(MethodsTest, UnknownNamesGetSuggestions)
{
    EXPECT_EQ(UsageError("GetSTCCuont", 0), "unknown method 'GetSTCCuont'; did you mean GetSTCCount?");
    EXPECT_EQ(UsageError("muteaudio", 1), "unknown method 'muteaudio'; did you mean MuteAudio?");
    EXPECT_EQ(UsageError("xyz", 0), "unknown method 'xyz'; 'zviptvctl methods' lists all of them");
}

TEST(MethodsTest, SubscribingIsAnotherCommand)
{
    EXPECT_EQ(UsageError("SubscribeForPES", 0), "SubscribeForPES needs a callback: use 'zviptvctl pes'");
    EXPECT_EQ(UsageError("UnsubscribeForCaption", 1),
              "UnsubscribeForCaption needs a callback: use 'zviptvctl caption'");
}

TEST(MethodsTest, TheListNamesAllOfThem)
{
    Answer const list = ListMethods();
    EXPECT_THAT(list.text, testing::HasSubstr("IIPTVDataSubscriber\n  SubscribeForCaption("));
    EXPECT_THAT(list.text, testing::HasSubstr("UnSubscribeForPES(int32 key)   (use 'zviptvctl pes')\n"));
    ASSERT_EQ(list.json["methods"].size(), 54U);
    Json::Value const& first = list.json["methods"][0];
    EXPECT_EQ(Compact(first), "{\"callable\":true,\"function\":\"SetCurrentAudioByIndex\",\"in\":[{\"name\":"
                              "\"index\",\"type\":\"int32\"}],\"interface\":"
                              "\"IPlayerControl\","
                              "\"name\":\"SetCurrentAudioByIndex\",\"out\":[]}");
}

/// The member of the list that has this text as its `name`.
Json::Value Find(Json::Value const& list, char const* name, std::string const& text)
{
    for (Json::Value const& entry : list) {
        if (entry[name] == text) {
            return entry;
        }
    }
    ADD_FAILURE() << "no " << text;
    return {};
}

TEST(MethodsTest, TheJsonDescribesFunctions)
{
    Json::Value const json = ListMethods().json;
    ASSERT_EQ(json["endpoints"].size(), 4U);
    Json::Value const player = Find(json["endpoints"], "type", "PLAYERCONTROL");
    EXPECT_EQ(player["functions"].size(), 16U);
    EXPECT_EQ(Find(json["endpoints"], "type", "BROADCASTDATA")["functions"].size(), 24U);
    EXPECT_EQ(Find(json["endpoints"], "type", "IPGUTIL")["functions"].size(), 10U);
    EXPECT_EQ(Compact(Find(player["functions"], "name", "GetSTCCount")),
              "{\"handle\":true,\"in\":[],\"method\":\"GetSTCCount\",\"name\":\"GetSTCCount\",\"out\":[{"
              "\"key\":\"stcCount\",\"summary\":"
              "\"system time clock, 33 bits\",\"type\":\"u64\",\"unit\":\"1/90000 s\"}],\"summary\":"
              "\"Reports the system time clock of the playback.\"}");
    Json::Value const appId = Find(player["functions"], "name", "SetAppID");
    EXPECT_FALSE(appId["handle"].asBool());
    EXPECT_TRUE(appId["in"][0]["optional"].asBool());
    Json::Value const subscriber = Find(json["endpoints"], "type", "IPTVDATASUBSCRIBER");
    Json::Value const pes = Find(subscriber["notifications"], "name", "PESCB");
    EXPECT_EQ(pes["in"][0]["key"].asString(), "pesDataSize");
    EXPECT_EQ(pes["in"][0]["counts"].asString(), "pesData");
    EXPECT_EQ(json["helper"]["interface"].asString(), "org.corvel.zviptvapi.dbushelper");
    EXPECT_EQ(json["channel"]["request"].asString(), "Send");
}

TEST(MethodsTest, TheJsonLinksFunctionsAndMethods)
{
    Json::Value const json = ListMethods().json;
    Json::Value const guide = Find(json["endpoints"], "type", "IPGUTIL")["functions"];
    EXPECT_EQ(Find(guide, "name", "GetProgramIPG")["method"].asString(), "GetProgram");
    EXPECT_EQ(Find(guide, "name", "GetProgram")["method"].asString(), "GetProgram");
    Json::Value const byId = Find(json["methods"], "function", "GetProgramIPG");
    EXPECT_EQ(byId["name"].asString(), "GetProgram");
    EXPECT_EQ(byId["in"].size(), 5U);
    EXPECT_EQ(Find(json["methods"], "function", "GetProgram")["in"].size(), 1U);
    Json::Value const subscriber = Find(json["endpoints"], "type", "IPTVDATASUBSCRIBER");
    EXPECT_FALSE(Find(subscriber["functions"], "name", "requestPESCB").isMember("method"));
    EXPECT_FALSE(Find(subscriber["notifications"], "name", "PESCB").isMember("method"));
    EXPECT_FALSE(Find(json["methods"], "name", "SubscribeForPES").isMember("function"));
}

/// All values of the members "none", wherever they stand.
void CollectNone(Json::Value const& json, std::vector<Json::Value>& found)
{
    for (Json::Value const& member : json) {
        CollectNone(member, found);
    }
    if (json.isObject() && json.isMember("none")) {
        found.push_back(json["none"]);
    }
}

bool IsEmptyText(Json::Value const& json)
{
    return json.isString() && json.asString().empty();
}

TEST(MethodsTest, TheValueForNoneIsTheValueItself)
{
    Json::Value const json = ListMethods().json;
    std::vector<Json::Value> all;
    CollectNone(json, all);
    EXPECT_GT(all.size(), 40U);
    for (Json::Value const& none : all) {
        EXPECT_TRUE(none == 0 || none == -1 || IsEmptyText(none)) << none.toStyledString();
    }
    Json::Value const player = Find(json["endpoints"], "type", "PLAYERCONTROL")["functions"];
    EXPECT_TRUE(Find(player, "name", "GetSourceState")["out"][0]["none"] == -1);
    Json::Value const guide = Find(json["endpoints"], "type", "IPGUTIL")["functions"];
    EXPECT_TRUE(IsEmptyText(Find(guide, "name", "GetRating")["out"][0]["none"]));
    Json::Value const audio = Find(json["records"], "name", "ZVAudio")["fields"];
    EXPECT_TRUE(Find(audio, "name", "language")["none"] == 0);
    EXPECT_TRUE(Find(audio, "name", "sampleRate")["none"] == 0);
    EXPECT_TRUE(Find(json["enumerations"], "name", "EZVSourceState")["none"] == -1);
    EXPECT_TRUE(Find(json["enumerations"], "name", "EZVLanguageCode")["none"] == 0);
}

TEST(MethodsTest, TheJsonDescribesRecordsAndEnumerations)
{
    Json::Value const json = ListMethods().json;
    Json::Value const audio = Find(json["records"], "name", "ZVAudio");
    EXPECT_EQ(audio["size"].asInt(), 32);
    Json::Value const rate = Find(audio["fields"], "name", "sampleRate");
    EXPECT_EQ(rate["offset"].asInt(), 12);
    EXPECT_EQ(rate["size"].asInt(), 4);
    EXPECT_EQ(rate["type"].asString(), "u32");
    EXPECT_EQ(rate["unit"].asString(), "Hz");
    EXPECT_EQ(Find(json["records"], "name", "IPGProgramId")["form"].asString(), "json");
    Json::Value const states = Find(json["enumerations"], "name", "EZVSourceState")["values"];
    EXPECT_EQ(Find(states, "name", "UNKNOWN")["value"].asInt(), -1);
    EXPECT_EQ(
        Find(Find(json["enumerations"], "name", "EZVLanguageCode")["values"], "name", "ENG")["value"].asInt(),
        0x656e67);
    EXPECT_EQ(json["enumerations"].size(), 13U);
}

} // namespace
