// SPDX-License-Identifier: MIT
#include "Remote.h"

#include "Files.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

class Properties : public ControlTest
{
protected:
    Application m_application;
};

TEST_F(Properties, ShowTheTelevision)
{
    StartControlled(
        {"--loop", "--time", "1774735200", "--guide", ZVIPTV_SAMPLE_GUIDE, "--rating-limit", "12"});
    ASSERT_TRUE(m_remote->WaitFor("SourceState", "'playing'"));
    ASSERT_TRUE(WaitUntil([this] { return m_remote->Get("Resolution") != "@a{sv} {}"; }, Patience));
    ASSERT_TRUE(WaitUntil([this] { return m_remote->Number("Duration") > 0; }, Patience));
    ASSERT_TRUE(WaitUntil(
        [this] {
            return m_remote->Get("AudioTracks").find("<uint32 0>") == std::string::npos &&
                   m_remote->Get("Captions").find("'jpn'") != std::string::npos;
        },
        Patience))
        << "the tracks' frames have passed";
    for (auto const& [property, value] : std::vector<std::pair<char const*, std::string>>{
             {"Running", "true"},
             {"ServicePid", "uint32 " + std::to_string(ServicePid())},
             {"Input", std::string("'") + ZVIPTV_SAMPLE_FILE + "'"},
             {"Duration", "11.986814814814815"},
             {"Speed", "1.0"},
             {"Paused", "false"},
             {"Programme", "uint32 1"},
             {"Programmes", "[(uint32 1, 'ZV Sample One')]"},
             {"AudioTracks",
              "[{'language': <'eng'>, 'pid': <uint32 257>, 'coding': <'mpeg'>, 'channels': <uint32 1>, "
              "'sampleRate': <uint32 48000>}, {'language': <'deu'>, 'pid': <uint32 258>, 'coding': "
              "<'mpeg'>, 'channels': <uint32 1>, 'sampleRate': <uint32 48000>}]"},
             {"Subtitles",
              "[{'language': <'eng'>, 'pid': <uint32 259>, 'kind': <'dvb'>, 'page': <uint32 1>, "
              "'hardOfHearing': <false>}, {'language': <'eng'>, 'pid': <uint32 260>, 'kind': "
              "<'teletext'>, 'page': <uint32 888>, 'hardOfHearing': <false>}, {'language': <'deu'>, "
              "'pid': <uint32 260>, 'kind': <'teletext'>, 'page': <uint32 889>, 'hardOfHearing': <true>}]"},
             {"TeletextPages",
              "[{'language': <'eng'>, 'pid': <uint32 260>, 'page': <uint32 100>, 'subtitles': <false>}, "
              "{'language': <'eng'>, 'pid': <uint32 260>, 'page': <uint32 888>, 'subtitles': <true>}, "
              "{'language': <'deu'>, 'pid': <uint32 260>, 'page': <uint32 889>, 'subtitles': <true>}]"},
             {"Captions", "[{'language': <'jpn'>, 'pid': <uint32 261>, 'componentTag': <uint32 48>}]"},
             {"SuperimposedTexts", "@aa{sv} []"},
             {"Present",
              "{'title': <'Cellar Door'>, 'subtitle': <''>, 'description': <'Nobody who went down has come "
              "up again.'>, 'start': <int64 1774733400>, 'duration': <uint32 10800>, 'minimumAge': <uint32 "
              "17>}"},
             {"Following",
              "{'title': <'Night Trains'>, 'subtitle': <''>, 'description': <'On the rails through the hour "
              "that is not there: on air for one hour.'>, 'start': <int64 1774744200>, 'duration': <uint32 "
              "3600>, 'minimumAge': <uint32 0>}"},
             {"Audio", "uint32 0"},
             {"Subtitle", "uint32 0"},
             {"Teletext", "uint32 0"},
             {"Caption", "uint32 0"},
             {"Superimpose", "uint32 0"},
             {"DualSound", "'stereo'"},
             {"AudioMuted", "false"},
             {"AudioMutedBy", "''"},
             {"VideoMuted", "false"},
             {"VideoMutedBy", "''"},
             {"ProgrammeLocked", "true"},
             {"ServiceLocked", "false"},
             {"Replay", "''"},
             {"LockStopsPushes", "false"},
             {"ApplicationId", "''"},
             {"Resolution",
              "{'width': <uint32 320>, 'height': <uint32 180>, 'frameRateNumerator': <uint32 25>, "
              "'frameRateDenominator': <uint32 1>, 'interlaced': <false>}"},
             {"Faults", "@aa{sv} []"},
             {"Clients", "@as []"},
             {"Applications", "@aa{sv} []"},
             {"Subscribers", "@aa{sv} []"},
             {"Sent", "uint64 0"},
             {"Dropped", "uint64 0"},
         }) {
        EXPECT_EQ(m_remote->Get(property), value) << property;
    }
    EXPECT_NEAR(m_remote->Number("GuideTime"), 1774735200, 10);
    EXPECT_THAT(m_remote->Get("Position"), MatchesRegex("[0-9]+\\.[0-9]+"));
}

TEST_F(Properties, ShowTheActionsOfApplications)
{
    StartControlled();
    auto const ask = [this](std::initializer_list<TextEntry> entries) {
        m_application.Announce("PLAYERCONTROL");
        EXPECT_EQ(Number(m_application.Ask("PLAYERCONTROL", entries), "result_internal"), "1");
    };
    ask({{"functionname", "SetCurrentAudioByIndex"}, {"index", "1"}});
    ask({{"functionname", "SetCurrentHybridSBT"}, {"index", "2"}});
    ask({{"functionname", "SetCurrentTTX"}, {"index", "1"}});
    ask({{"functionname", "SetDigitalDualSound"}, {"mode", "2"}});
    ask({{"functionname", "SetAppID"}, {"AppID", "org.example.one"}});
    ask({{"functionname", "MuteAudio"}, {"onoff", "1"}});
    EXPECT_EQ(m_remote->Get("Audio"), "uint32 1");
    EXPECT_EQ(m_remote->Get("Subtitle"), "uint32 2");
    EXPECT_EQ(m_remote->Get("Teletext"), "uint32 1");
    EXPECT_EQ(m_remote->Get("DualSound"), "'sub'");
    EXPECT_EQ(m_remote->Get("ApplicationId"), "'org.example.one'");
    EXPECT_EQ(m_remote->Get("AudioMutedBy"), "'" + m_application.Peer().Name() + "'");
    EXPECT_EQ(m_remote->Get("Clients"), "['" + m_application.Peer().Name() + "']");
    EXPECT_EQ(m_remote->Get("Applications"), "[{'name': <'" + m_application.Peer().Name() +
                                                 "'>, 'id': <'org.example.one'>, 'endpoints': "
                                                 "<['PLAYERCONTROL']>}]");
}

TEST_F(Properties, ShowThatALockStopsPushes)
{
    StartControlled({"--lock-stops-pushes", "--lock-service"});
    EXPECT_EQ(m_remote->Get("LockStopsPushes"), "true");
    EXPECT_EQ(m_remote->Get("ServiceLocked"), "true");
    ASSERT_EQ(m_remote->Call("Unlock", "('service',)"), Done);
    EXPECT_EQ(m_remote->Get("LockStopsPushes"), "true");
}

TEST_F(Properties, CountThePacketsOfSubscribers)
{
    StartControlled();
    m_application.Announce("IPTVDATASUBSCRIBER");
    m_application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    ASSERT_TRUE(m_application.WaitForPackets("257", 2));
    EXPECT_THAT(m_remote->Get("Subscribers"),
                MatchesRegex("\\[\\{'application': <'" + m_application.Peer().Name() +
                             "'>, 'sent': <uint64 [1-9][0-9]*>, 'dropped': <uint64 0>, 'queued': <uint64 "
                             "[0-9]+>, 'pes': <true>, 'captions': <false>\\}\\]"));
    EXPECT_GE(m_remote->Number("Sent"), 2);
}

/// Introspection returns the members of the description file.
TEST_F(Properties, AreIntrospectable)
{
    StartControlled();
    std::string const shown = m_remote->CallOn("org.freedesktop.DBus.Introspectable", "Introspect", "()");
    std::string const file = ReadFile(ZVIPTV_CONTROL_XML);
    std::size_t members = 0;
    for (char const* const kind : {"<method name=\"", "<property name=\"", "<signal name=\""}) {
        for (std::size_t at = file.find(kind); at != std::string::npos; at = file.find(kind, at + 1)) {
            std::size_t const begin = at + std::string(kind).size();
            std::string const member = file.substr(begin, file.find('"', begin) - begin);
            EXPECT_THAT(shown, HasSubstr(" name=\"" + member + "\""));
            ++members;
        }
    }
    EXPECT_GT(members, 45U);
}

TEST_F(Properties, CannotBeSet)
{
    StartControlled();
    EXPECT_THAT(m_remote->CallOn("org.freedesktop.DBus.Properties", "Set",
                                 "('org.corvel.zviptvapi.Simulator1', 'Speed', <2.0>)"),
                testing::StartsWith("org.freedesktop.DBus.Error.InvalidArgs: "));
}

} // namespace
} // namespace zviptv::test
