// SPDX-License-Identifier: MIT
#include "SimulatorTest.h"

#include "../stream/NaiveReassembly.h"

#include <set>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

/// A list for --pes and the PIDs of the sample that pass.
struct Filter
{
    char const* list;
    std::set<std::uint16_t> pids;
};

void PrintTo(Filter const& filter, std::ostream* out)
{
    *out << filter.list;
}

class PesFilter : public Simulator, public testing::WithParamInterface<Filter>
{
};

/// Plays the sample once, to an application that receives from the first packet.
TEST_P(PesFilter, LetsThrough)
{
    Start({"--ts", ZVIPTV_SAMPLE_FILE, "--speed", "50", "--wait-for", "1", "--pes", GetParam().list});
    Application application;
    application.Announce("IPTVDATASUBSCRIBER");
    application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    Bytes const stream = ReadWholeFile(ZVIPTV_SAMPLE_FILE);
    for (std::uint16_t const pid : GetParam().pids) {
        std::size_t const count = ReassembleNaively(stream, pid).size();
        ASSERT_GT(count, 0U);
        EXPECT_TRUE(application.WaitForPackets(std::to_string(pid), count)) << pid;
    }
    // The streams are interleaved: any other packet would have arrived before the last of these.
    std::set<std::string> wanted;
    for (std::uint16_t const pid : GetParam().pids) {
        wanted.insert(std::to_string(pid));
    }
    std::set<std::string> seen;
    for (WireMessage const& message : application.Peer().Received().All()) {
        if (message.Value("functionname") == "PESCB") {
            seen.insert(message.Value("pesPID"));
        }
    }
    EXPECT_EQ(seen, wanted);
}

std::set<std::uint16_t> const Everything{0x100, 0x101, 0x102, 0x103, 0x104, 0x105};

INSTANTIATE_TEST_SUITE_P(Kinds, PesFilter,
                         testing::Values(Filter{"", Everything}, Filter{"video", {0x100}},
                                         Filter{"audio", {0x101, 0x102}}, Filter{"subtitle", {0x103}},
                                         Filter{"teletext", {0x104}}, Filter{"caption", {0x105}}));

// 0257 is 257 and 0401 is 401, which the sample has not; as octal numbers they would be 175 and 257.
INSTANTIATE_TEST_SUITE_P(Pids, PesFilter,
                         testing::Values(Filter{"257", {0x101}}, Filter{"0x102", {0x102}},
                                         Filter{"0X103", {0x103}}, Filter{"0257", {0x101}},
                                         Filter{"0401,0x105", {0x105}}));

INSTANTIATE_TEST_SUITE_P(Mixes, PesFilter,
                         testing::Values(Filter{"audio,259,0x104", {0x101, 0x102, 0x103, 0x104}},
                                         Filter{"caption,0x105,8191", {0x105}}));

TEST(PesFilterWords, UnknownAreRefused)
{
    for (char const* const word : {"Audio", "teletexts", "-1", "+257", " 257", "257x", "0x", "0xx1", "101h",
                                   "", "8192", "0x2000", "65793", "none"}) {
        ChildProcess process(
            {ZVIPTV_SIM, "--ts", ZVIPTV_SAMPLE_FILE, "--pes", std::string("video,") + word + ",audio"});
        EXPECT_EQ(process.Wait(Patience), (ExitStatus{2, 0})) << word;
        EXPECT_THAT(process.Errors(),
                    HasSubstr(std::string("zviptv-sim: '") + word +
                              "' is not a kind of PES packet: use audio, subtitle, teletext, "
                              "caption, video, a PID up to 8191 or 0x1FFF"));
    }
}

} // namespace
} // namespace zviptv::test
