// SPDX-License-Identifier: MIT
#include "BusMonitor.h"
#include "ReplayTest.h"
#include "trace/Monitor.h"

#include <fstream>
#include <map>

namespace zviptv::test {
namespace {

using testing::SizeIs;

/// Every function that an application can call, and both subscriptions.
constexpr char Session[] = R"(
set -u
call() { "$CTL" call "$@"; }
call SetAppID org.example.session
call GetSourceState
call GetSTCCount
call GetSTCCount
call GetFirstPTS
call GetResolution
call MuteAudio true
call MuteAudio false
call MuteVideo true
call MuteVideo false
call SetCurrentAudioByIndex 1
call SetCurrentAudioByIndex 99
call SetAudioFormat 1 true
call SetDigitalDualSound 1
call SetCurrentTTX 0
call SetCurrentHybridSBT 1
call SetCurrentISDBText 0 0
call SetCurrentISDBTextService 0 48
call GetCaptionDataMode
call GetDefaultCaptionService
call GetAudioFormat
call GetDigitalDualSound
call GetCurrentAudioInfo
call SizeOfAudio
call GetAudio 0
call GetAudio 1
call SizeOfTTX
call GetTTX 0
call GetCurrentTTX
call SizeOfHybridSBT
call GetHybridSBT 0
call CheckHardOfHearingSBT
call GetPreferredHybridSBT
call GetCurrentHybridSBT
call GetPreferredTTXSubtitle
call SizeOfISDBText 0
call GetISDBText 0 0
call GetCurrentISDBText 0
call GetCaptionLanguage 1
call GetRatingInfo
call GetRatingLockState
call UnMuteByRatingPin
call SetUnlockedInfo 2
call GetRatingLockState
call SetUnlockedInfoWhenFactoryMode true
call FlagServiceLocked
call ExistXmlForIPG
call GetProgram 1 4 1774733400 10800 1
call GetProgramListSize 1 1774735200 14400
call GetProgram 0
call GetPresentProgram 1
call GetProgramList 1 1774735200 14400
call FindProgram 1 4
call GetRating 4
call GetGenre 4
call CloneUSBToTV /no/such/file
"$CTL" guide now 1
"$CTL" pes --count 40
"$CTL" caption --count 3
true
)";

/// Names of connections as they come: the service is S, applications are A1, A2 and so on.
class Aliases
{
public:
    explicit Aliases(std::string const& service) : m_names{{service, "S"}} {}

    std::string Of(std::string const& name)
    {
        if (name.empty() || name[0] != ':') {
            return name;
        }
        return m_names.emplace(name, "A" + std::to_string(m_names.size())).first->second;
    }

private:
    std::map<std::string, std::string> m_names;
};

struct Seen
{
    std::vector<WireMessage> conversation; ///< calls, replies and errors of applications and the service
    std::map<std::string, std::vector<WireMessage>> pushes; ///< by application and function
    std::string output;                                     ///< of the commands
};

/// Without the service's checks whether an application keeps up, which depend on time.
Seen Sort(std::vector<WireMessage> const& messages, std::string const& service)
{
    Aliases aliases(service);
    Seen seen;
    std::map<std::pair<std::string, std::uint32_t>, bool> isOurs; // by caller and serial of a call
    for (WireMessage message : messages) {
        bool const isHelper = message.interface == "org.corvel.zviptvapi.dbushelper";
        bool const isChannel = message.interface == "org.corvel.zviptvapi.DbusCommunication";
        bool const isAnswer = message.kind == WireKind::Reply || message.kind == WireKind::Error;
        if (message.kind == WireKind::Call && (isHelper || isChannel) && message.sender != service) {
            isOurs[{message.sender, message.serial}] = true;
        } else if (isAnswer ? isOurs.count({message.destination, message.replySerial}) == 0
                            : message.kind != WireKind::Signal || !isChannel) {
            continue;
        }
        for (WirePair& pair : message.pairs) {
            pair.second = aliases.Of(pair.second);
        }
        message.sender = aliases.Of(message.sender);
        message.destination = aliases.Of(message.destination);
        if (message.kind == WireKind::Signal) {
            seen.pushes[message.destination + " " + message.Value("functionname")].push_back(message);
        } else {
            seen.conversation.push_back(message);
        }
    }
    return seen;
}

class ReplayFidelity : public Replaying
{
protected:
    /// Runs the session on a simulator with these options, and records it.
    Seen Play(std::vector<std::string> const& options, std::string const& recordTo)
    {
        std::string const script = m_folder / "session.sh";
        std::ofstream(script) << Session;
        trace::CaptureWriter writer(recordTo, "test");
        trace::Monitor recorder(
            m_bus.Address(), {[&writer](trace::Message const& message) { writer.Write(message); }, {}, {}});
        BusMonitor monitor(m_bus.Address());
        Start(options);
        std::string const service = m_watcher.GetNameOwner("org.corvel.zviptvapi.dbushelper");
        ChildProcess session({"bash", script}, {{"CTL", ZVIPTVCTL}});
        EXPECT_TRUE(WaitUntil(
            [&session] {
                while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
                }
                return session.Wait(std::chrono::milliseconds(0)).has_value();
            },
            std::chrono::seconds(90)));
        WirePeer last; // what was sent before is seen before
        std::string const mark = last.Name();
        last.Disconnect();
        EXPECT_TRUE(monitor.WaitFor([&mark](WireMessage const& message) {
            return message.member == "NameOwnerChanged" && message.strings.front() == mark &&
                   message.strings.back().empty();
        }));
        recorder.CatchUp();
        writer.Flush();
        Seen seen = Sort(monitor.Seen().All(), service);
        seen.output = session.Output() + session.Errors();
        m_simulator.reset();
        EXPECT_TRUE(m_watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
        return seen;
    }
};

TEST_F(ReplayFidelity, AReplayedSessionAgreesInAllButTimesAndNames)
{
    Seen const recorded =
        Play({"--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--guide", ZVIPTV_SAMPLE_GUIDE, "--time", "1774735200",
              "--rating-limit", "12", "--fault", "SetAppID=error", "--fault", "GetTTX=drop"},
             m_folder / "recorded.pcapng");
    Seen const replayed = Play({"--replay", m_folder / "recorded.pcapng"}, m_folder / "again.pcapng");
    ASSERT_GT(recorded.conversation.size(), 200U);
    ASSERT_THAT(replayed.conversation, SizeIs(recorded.conversation.size()));
    for (std::size_t i = 0; i < recorded.conversation.size(); ++i) {
        ASSERT_EQ(replayed.conversation[i], recorded.conversation[i]) << "message " << i;
    }
    ASSERT_EQ(recorded.pushes.size(), 2U);
    for (auto const& [line, pushes] : recorded.pushes) {
        auto const found = replayed.pushes.find(line);
        ASSERT_NE(found, replayed.pushes.end()) << line;
        // How many are on their way when the application has enough depends on time.
        std::size_t const common = std::min(pushes.size(), found->second.size());
        ASSERT_GE(common, line.find("PESCB") != std::string::npos ? 40U : 3U);
        for (std::size_t i = 0; i < common; ++i) {
            ASSERT_EQ(found->second[i], pushes[i]) << line << " " << i;
        }
    }
}

} // namespace
} // namespace zviptv::test
