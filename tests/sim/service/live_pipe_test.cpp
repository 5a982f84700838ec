// SPDX-License-Identifier: MIT
#include "LiveInput.h"

#include "../stream/NaiveReassembly.h"
#include "Files.h"

#include <sys/stat.h>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

/// The simulator with a pipe or a file that the test writes.
class LivePipe : public LiveInput
{
protected:
    LivePipe() : m_sample(ReadWholeFile(ZVIPTV_SAMPLE_FILE)) {}

    std::string Path() const { return m_bus.Directory() + "/input.ts"; }

    static void Append(std::string const& path, Bytes const& bytes)
    {
        std::ofstream(path, std::ios::binary | std::ios::app)
            .write(reinterpret_cast<char const*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    Bytes Part(std::size_t begin, std::size_t end) const
    {
        return {m_sample.begin() + static_cast<std::ptrdiff_t>(begin),
                m_sample.begin() + static_cast<std::ptrdiff_t>(std::min(end, m_sample.size()))};
    }

    /// All audio packets of the sample, and no others.
    void ExpectSampleSound()
    {
        std::vector<std::string> wanted;
        for (Bytes const& pes : ReassembleNaively(m_sample, 0x101)) {
            wanted.emplace_back(pes.begin(), pes.end());
        }
        ASSERT_TRUE(m_subscriber.WaitForPackets("257", wanted.size()));
        EXPECT_EQ(m_subscriber.Packets("257"), wanted);
    }

    Bytes m_sample;
};

TEST_F(LivePipe, PlaysAFifoUntilItsWriterLeaves)
{
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    StartLive(Path(), {"--wait-for", "1"});
    Subscribe();
    Append(Path(), m_sample);
    ASSERT_TRUE(m_simulator->WaitForErrors("the stream has ended", Patience));
    ExpectSampleSound();
    EXPECT_TRUE(WaitForState("3"));
    EXPECT_EQ(InputWhere([](Json::Value const& input) { return input["state"] == "ended"; })["lost"], 0);
}

TEST_F(LivePipe, FollowsAFifoFromWriterToWriter)
{
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    StartLive(Path(), {"--follow", "--wait-for", "1"});
    Subscribe();
    std::size_t const half = m_sample.size() / 376 * 188;
    Append(Path(), Part(0, half));
    ASSERT_TRUE(WaitForState("2"));
    ASSERT_TRUE(WaitForState("1")); // stalled
    Append(Path(), Part(half, m_sample.size()));
    ASSERT_TRUE(WaitUntil(
        [this] {
            return m_subscriber.Packets("257").size() + 1 >= ReassembleNaively(m_sample, 0x101).size();
        },
        Patience));
    EXPECT_TRUE(WaitForState("1"));
}

TEST_F(LivePipe, PlaysStandardInput)
{
    ChildProcess& simulator = StartLive("-", {"--wait-for", "1"});
    Subscribe();
    ASSERT_TRUE(simulator.WriteInput(std::string(m_sample.begin(), m_sample.end())));
    simulator.CloseInput();
    ASSERT_TRUE(simulator.WaitForErrors("the stream has ended", Patience));
    ExpectSampleSound();
}

TEST_F(LivePipe, ReportsInputThatIsNotATransportStream)
{
    ChildProcess& simulator = StartLive("-");
    ASSERT_TRUE(simulator.WriteInput("no transport stream at all"));
    simulator.CloseInput();
    ASSERT_TRUE(simulator.WaitForErrors("-: no transport stream has arrived: no sync bytes 0x47", Patience));
    EXPECT_TRUE(WaitForState("4"));
    EXPECT_EQ(InputWhere([](Json::Value const& input) { return input["state"] == "failed"; })["packets"], 0);
}

/// A file as standard input is played at its pace, and can loop.
TEST_F(LivePipe, PlaysAFileAsStandardInput)
{
    ChildProcess process({"sh", "-c", "exec \"$0\" --ts - --loop --speed 2 -- \"$1\" pes --count 5 <\"$2\"",
                          ZVIPTV_SIM, ZVIPTVCTL, ZVIPTV_SAMPLE_FILE});
    EXPECT_EQ(process.Wait(Patience), (ExitStatus{0, 0})) << process.Errors();
    EXPECT_THAT(process.Errors(), HasSubstr("5 packets"));
}

TEST_F(LivePipe, FollowsAGrowingFile)
{
    std::size_t const third = m_sample.size() / 564 * 188;
    Append(Path(), {});
    StartLive(Path(), {"--follow", "--wait-for", "1"});
    Subscribe();
    EXPECT_TRUE(WaitForState("1"));
    Append(Path(), Part(0, third + 100)); // in the middle of a packet
    ASSERT_TRUE(m_subscriber.WaitForPackets("257", 1));
    ASSERT_TRUE(WaitForState("2"));
    ASSERT_TRUE(WaitForState("1")); // at its end
    std::size_t const before = m_subscriber.Packets("257").size();
    Append(Path(), Part(third + 100, m_sample.size()));
    ASSERT_TRUE(m_subscriber.WaitForPackets("257", before + 5));
    EXPECT_TRUE(WaitForState("2"));
    Json::Value const input = InputWhere([](Json::Value const& now) { return now["stalls"] != 0; });
    EXPECT_EQ(input["skippedBytes"], 0);
    EXPECT_EQ(input["live"], false);
}

} // namespace
} // namespace zviptv::test
