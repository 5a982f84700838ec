// SPDX-License-Identifier: MIT
#include "LiveInput.h"

#include "../stream/NaiveReassembly.h"

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// A web server that prints its port, then the path of each request. /whole is the sample with its length,
/// /broken a part of it without, after which the connection is closed, and all else is not found.
constexpr char Server[] = R"(
import http.server, sys, time
sample = open(sys.argv[1], 'rb').read()
class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        print(self.path, flush=True)
        if self.path == '/missing':
            return self.send_error(404)
        if self.path == '/busy':
            return self.send_error(503)
        self.send_response(200)
        if self.path == '/whole':
            self.send_header('Content-Length', str(len(sample)))
        if self.path == '/short':
            self.send_header('Content-Length', str(2 * len(sample)))
        self.end_headers()
        self.wfile.write(sample)
    def log_message(self, *arguments):
        pass
server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), Handler)
print(server.server_address[1], flush=True)
server.serve_forever()
)";

class LiveHttp : public LiveInput
{
protected:
    LiveHttp() : m_server({"/usr/bin/python3", "-c", Server, ZVIPTV_SAMPLE_FILE})
    {
        EXPECT_TRUE(m_server.WaitForOutput("\n", Patience));
        std::string const output = m_server.Output();
        m_address = "http://127.0.0.1:" + output.substr(0, output.find('\n'));
    }

    std::size_t Requests(std::string const& path) const
    {
        std::string const output = m_server.Output();
        std::size_t count = 0;
        for (std::size_t at = 0; (at = output.find(path + "\n", at)) != std::string::npos; ++at) {
            ++count;
        }
        return count;
    }

    ChildProcess m_server;
    std::string m_address;
};

TEST_F(LiveHttp, PlaysABodyToItsEnd)
{
    StartLive(m_address + "/whole", {"--wait-for", "1"});
    Subscribe();
    ASSERT_TRUE(m_simulator->WaitForErrors("the stream has ended", Patience));
    std::vector<std::string> wanted;
    for (Bytes const& pes : ReassembleNaively(ReadWholeFile(ZVIPTV_SAMPLE_FILE), 0x101)) {
        wanted.emplace_back(pes.begin(), pes.end());
    }
    ASSERT_TRUE(m_subscriber.WaitForPackets("257", wanted.size()));
    EXPECT_EQ(m_subscriber.Packets("257"), wanted);
    EXPECT_TRUE(WaitForState("3"));
    EXPECT_EQ(Requests("/whole"), 1U);
}

/// Without a length, and short of the length announced.
TEST_F(LiveHttp, ReconnectsWhenTheConnectionBreaks)
{
    for (char const* const path : {"/broken", "/short"}) {
        SCOPED_TRACE(path);
        m_simulator.reset();
        ASSERT_TRUE(m_watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
        StartLive(m_address + path);
        EXPECT_TRUE(WaitUntil([&] { return Requests(path) >= 2; }, Patience));
        ASSERT_TRUE(WaitForState("2"));
    }
}

TEST_F(LiveHttp, ReportsThatItReconnects)
{
    StartLive(m_address + "/broken");
    ASSERT_TRUE(WaitForState("2"));
    m_server.Signal(SIGKILL);
    Json::Value const input =
        InputWhere([](Json::Value const& now) { return now["state"] == "reconnecting"; });
    EXPECT_NE(input["error"], "");
    EXPECT_TRUE(WaitForState("1")); // stalled
}

TEST_F(LiveHttp, ReportsWhyItCannotOpen)
{
    UdpSender const unused("127.0.0.1");
    std::string const https = "https" + m_address.substr(4);
    for (auto const& [url, reason] : std::map<std::string, std::string>{
             {m_address + "/missing", "the server answered 404 Not Found; check the address"},
             {m_address + "/busy", "the server answered 503 Service Unavailable; check the address"},
             {"http://127.0.0.1:" + std::to_string(unused.Port()) + "/",
              "Could not connect to 127.0.0.1: Connection refused"},
             {https + "/whole", ""}, // the words are the TLS library's
             {"http://no.such.host.invalid/", ""},
             {"http://", "it is not an address; write http://HOST/PATH"},
             {"http:///x", "it is not an address; write http://HOST/PATH"},
         }) {
        ChildProcess process({ZVIPTV_SIM, "--ts", url, "--", "true"});
        EXPECT_EQ(process.Wait(Patience), (ExitStatus{1, 0})) << url;
        EXPECT_THAT(process.Errors(), StartsWith("zviptv-sim: cannot open " + url + ": " + reason));
        EXPECT_THAT(process.Errors(), testing::Not(HasSubstr("GLib")));
    }
}

} // namespace
} // namespace zviptv::test
