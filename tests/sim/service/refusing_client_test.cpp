// SPDX-License-Identifier: MIT
#include "DenseStream.h"
#include "SimulatorTest.h"
#include "WaitUntil.h"

#include "tools/sim/endpoints/Subscriber.h"

namespace zviptv::test {
namespace {

/// Applications that answer the service's question, whether they follow, with an error.
class RefusingClient : public Simulator, public testing::WithParamInterface<char const*>
{
};

TEST_P(RefusingClient, ReceivesItsPacketsNevertheless)
{
    std::string const path = m_bus.Directory() + "/dense.ts";
    WriteDenseStream(path, {50, 100, 4});
    Start({"--ts", path, "--loop", "--speed", "4"});
    Application application;
    application.Peer().SetHandler(
        [](WireMessage const&) { return WireAnswer::Error(GetParam(), "not made for that"); });
    application.Announce("IPTVDATASUBSCRIBER");
    application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    auto const isPacket = [](WireMessage const& message) { return message.Value("functionname") == "PESCB"; };
    EXPECT_TRUE(application.Peer().Received().WaitForCount(isPacket, 4 * sim::Subscriber::Window));
}

/// The bus returns the second and the third error also for an application that has left.
INSTANTIATE_TEST_SUITE_P(Errors, RefusingClient,
                         testing::Values("com.example.Error.Unsupported",
                                         "org.freedesktop.DBus.Error.NoReply",
                                         "org.freedesktop.DBus.Error.ServiceUnknown"),
                         [](auto const& error) {
                             std::string const name = error.param;
                             return name.substr(name.rfind('.') + 1);
                         });

} // namespace
} // namespace zviptv::test
