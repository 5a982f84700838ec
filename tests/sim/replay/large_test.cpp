// SPDX-License-Identifier: MIT
#include "PeakMemory.h"
#include "ReplayTest.h"

#include <cstdlib>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

constexpr std::size_t CaptionSize = 1'000'000;

class LargeReplay : public Replaying
{
protected:
    /// The most memory of simulator and service, which replay this many captions.
    std::uint64_t MemoryFor(int captions)
    {
        setenv("ASAN_OPTIONS", KeepNoFreedMemory, 1); // of the simulator
        MadeRecording recording(Path());
        recording.Exchange(0, "IPTVDATASUBSCRIBER",
                           Entries({{"functionname", "requestCaptionCB"}, {"handleID", "256"}, {"on", "1"}}),
                           Entries({{"result_internal", "1"}}));
        for (int i = 0; i < captions; ++i) {
            recording.Caption(40 * i, std::string(CaptionSize, 'x'));
        }
        recording.Save();
        Start({"--replay", Path()});
        Application application;
        application.Announce("IPTVDATASUBSCRIBER");
        application.Ask("IPTVDATASUBSCRIBER",
                        {{"functionname", "requestCaptionCB"}, {"handleID", "256"}, {"on", "1"}});
        // On a busy machine the application falls behind, and the service drops some.
        EXPECT_TRUE(application.Peer().Received().WaitForCount(
            [](WireMessage const& message) { return message.Value("functionname") == "CaptionCB"; },
            static_cast<std::size_t>(captions) / 3));
        std::uint64_t const peak = PeakMemory(m_simulator->Pid()) + PeakMemory(ServicePid());
        m_simulator.reset();
        EXPECT_TRUE(m_watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
        return peak;
    }
};

TEST_F(LargeReplay, NeedsNoMemoryForTheNotifications)
{
    std::uint64_t const ofFew = MemoryFor(5);
    std::uint64_t const ofMany = MemoryFor(60);
    EXPECT_LT(ofMany, ofFew + 15 * CaptionSize);
}

TEST_F(LargeReplay, ReportsThatThereIsNoSpace)
{
    for (int i = 0; i < 3; ++i) {
        Recording().Caption(i, std::string(CaptionSize, 'x'));
    }
    Recording().Save();
    ChildProcess process(
        {"sh", "-c", "trap '' XFSZ; ulimit -f 16; exec " ZVIPTV_SIM " --bus private --replay " + Path()},
        {{"TMPDIR", m_folder / ""}});
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{1, 0}));
    EXPECT_THAT(process.Errors(), AllOf(HasSubstr("cannot write a temporary file in " + (m_folder / "")),
                                        HasSubstr(": File too large; set TMPDIR to a folder with room")));
}

} // namespace
} // namespace zviptv::test
