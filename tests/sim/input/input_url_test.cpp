// SPDX-License-Identifier: MIT
#include "input/InputUrl.h"

#include "stream/PacketSource.h"

#include <gmock/gmock.h>

namespace zviptv::test {
namespace {

using sim::InputUrl;
using sim::ParseInputUrl;

struct Good
{
    char const* text;
    InputUrl::Kind kind;
    char const* host;
    int port;
    char const* interface;
};

TEST(InputUrl, ReturnsItsParts)
{
    using Kind = InputUrl::Kind;
    for (Good const& good : {
             Good{"capture.ts", Kind::File, "", 0, ""},
             Good{"/a/b://c", Kind::File, "", 0, ""},
             Good{"odd?name:1.ts", Kind::File, "", 0, ""},
             Good{"", Kind::File, "", 0, ""},
             Good{"-", Kind::StandardInput, "", 0, ""},
             Good{"udp://239.1.2.3:1234", Kind::Udp, "239.1.2.3", 1234, ""},
             Good{"udp://@239.1.2.3:1234", Kind::Udp, "239.1.2.3", 1234, ""},
             Good{"udp://@239.1.2.3:1234/", Kind::Udp, "239.1.2.3", 1234, ""},
             Good{"udp://@239.1.2.3:1234?iface=eth0", Kind::Udp, "239.1.2.3", 1234, "eth0"},
             Good{"rtp://[ff15::7]:65535?iface=lo", Kind::Rtp, "ff15::7", 65535, "lo"},
             Good{"rtp://@[::1]:1", Kind::Rtp, "::1", 1, ""},
             Good{"UDP://@:5000", Kind::Udp, "", 5000, ""},
             Good{"udp://:5000", Kind::Udp, "", 5000, ""},
             Good{"http://host/a?iface=x", Kind::Http, "", 0, ""},
             Good{"https://host", Kind::Http, "", 0, ""},
         }) {
        InputUrl const url = ParseInputUrl(good.text);
        EXPECT_EQ(url.kind, good.kind) << good.text;
        EXPECT_EQ(url.text, good.text);
        EXPECT_EQ(url.host, good.host) << good.text;
        EXPECT_EQ(url.port, good.port) << good.text;
        EXPECT_EQ(url.interface, good.interface) << good.text;
    }
}

TEST(InputUrl, ErrorsShowTheProblemAndTheFix)
{
    for (auto const& [text, reason] : std::map<std::string, std::string>{
             {"ftp://host/a.ts", "unknown kind of input 'ftp'; use a file, -, udp://"},
             {"udp://", "there is no port; write udp://GROUP:PORT"},
             {"udp://@239.1.1.1", "there is no port; write udp://GROUP:PORT"},
             {"udp://@239.1.1.1:", "'' is not a port, 1 to 65535; write udp://GROUP:PORT"},
             {"udp://@239.1.1.1:0", "'0' is not a port, 1 to 65535"},
             {"rtp://@:0",
              "'0' is not a port, 1 to 65535; write rtp://GROUP:PORT, for example rtp://@239.1.1.1:1234"},
             {"rtp://@239.1.1.1",
              "there is no port; write rtp://GROUP:PORT, for example rtp://@239.1.1.1:1234"},
             {"rtp://@ff15::1:1234",
              "an IPv6 address is written in brackets, for example rtp://@[ff15::1]:1234"},
             {"udp://@239.1.1.1:65536", "'65536' is not a port"},
             {"udp://@239.1.1.1:12x", "'12x' is not a port"},
             {"udp://@239.1.1.1:-1", "'-1' is not a port"},
             {"udp://@ff15::1:1234", "an IPv6 address is written in brackets, for example"},
             {"udp://@239.1.1.1:1234?pkt_size=1316", "unknown option 'pkt_size'; use iface=NAME"},
             {"udp://@239.1.1.1:1234?iface", "iface needs one name of a network interface"},
             {"udp://@239.1.1.1:1234?iface=", "iface needs one name"},
             {"udp://@239.1.1.1:1234?iface=a&iface=b", "iface needs one name"},
         }) {
        try {
            ParseInputUrl(text);
            ADD_FAILURE() << text;
        } catch (sim::StreamError const& error) {
            EXPECT_THAT(error.what(), testing::StartsWith("cannot open " + text + ": " + reason));
        }
    }
}

} // namespace
} // namespace zviptv::test
