// SPDX-License-Identifier: MIT
#include "Remote.h"

#include "../input/RtpBytes.h"
#include "../input/UdpSender.h"
#include "Files.h"

#include <map>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The property InputStatus, of RTP that the test sends.
class InputStatus : public ControlTest
{
protected:
    void Load(std::string const& scheme)
    {
        std::string const url = scheme + "://127.0.0.1:" + std::to_string(m_sender.Port());
        ASSERT_EQ(m_remote->Call("Load", "('" + url + "',)"), Done);
    }

    /// One RTP packet of a PAT, a PMT and five null packets.
    void Send(std::uint16_t sequence)
    {
        RtpParts parts;
        parts.sequence = sequence;
        parts.timestamp = 900U * sequence;
        parts.payload = m_tables.Section(0, MakePat({{1, 0x1000}}))
                            .Section(0x1000, MakePmt(1, 0x101, {{0x03, 0x101, {}}}))
                            .Null(5)
                            .Stream();
        m_tables = {};
        m_sender.Send(MakeRtp(parts));
    }

    /// After the first data, the socket is open.
    void Begin()
    {
        ASSERT_TRUE(WaitUntil(
            [this] {
                Send(m_next++);
                return Shows("'state': <'receiving'>");
            },
            Patience));
    }

    bool Shows(char const* member) { return m_remote->Get("InputStatus").find(member) != std::string::npos; }

    bool WaitForMember(char const* member)
    {
        return WaitUntil([&] { return Shows(member); }, Patience);
    }

    UdpSender m_sender{"127.0.0.1"};
    StreamBuilder m_tables;
    std::uint16_t m_next = 100;
};

TEST_F(InputStatus, CountsWhatLiveInputLoses)
{
    StartControlled();
    Load("rtp");
    EXPECT_THAT(m_remote->Get("InputStatus"), HasSubstr("'state': <'waiting'>"));
    Begin();
    std::uint16_t const first = m_next;
    for (int const i : {0, 2, 1, 1, 3}) { // 1 comes late and again
        Send(static_cast<std::uint16_t>(first + i));
    }
    m_sender.Send(std::string("no RTP"));
    for (int i = 5; i < 45; ++i) { // 4 never comes
        Send(static_cast<std::uint16_t>(first + i));
    }
    EXPECT_TRUE(WaitForMember("'lost': <uint64 1>")) << m_remote->Get("InputStatus");
    std::string const status = m_remote->Get("InputStatus");
    for (char const* const member : {"'duplicated': <uint64 1>", "'reordered': <uint64 1>",
                                     "'malformed': <uint64 1>", "'live': <true>", "'error': <''>"}) {
        EXPECT_THAT(status, HasSubstr(member));
    }
    EXPECT_TRUE(WaitForMember("'state': <'stalled'>")) << m_remote->Get("InputStatus");
    EXPECT_FALSE(Shows("'stalls': <uint64 0>"));
}

/// Its counters change with every packet.
TEST_F(InputStatus, IsNotAnnounced)
{
    StartControlled();
    m_remote->Forget();
    ASSERT_EQ(m_remote->Call("SetSpeed", "(2.0,)"), Done);
    ASSERT_TRUE(m_remote->WaitForSignal("PropertiesChanged", "'Speed': <2.0>"));
    std::string const before = m_remote->Get("InputStatus");
    ASSERT_TRUE(WaitUntil([&] { return m_remote->Get("InputStatus") != before; }, Patience));
    ASSERT_EQ(m_remote->Call("SetSpeed", "(3.0,)"), Done);
    ASSERT_TRUE(m_remote->WaitForSignal("PropertiesChanged", "'Speed': <3.0>"));
    for (auto const& signal : m_remote->Signals()) {
        EXPECT_THAT(signal.body, Not(HasSubstr("InputStatus")));
    }
}

/// Name and D-Bus type of each row.
std::map<std::string, std::string> Documented()
{
    std::string const page = ReadFile(ZVIPTV_CONTROL_PAGE);
    std::size_t const begin = page.find("### `InputStatus`");
    std::istringstream lines(page.substr(begin, page.find("\n#", begin + 1) - begin));
    std::map<std::string, std::string> rows;
    for (std::string line; std::getline(lines, line);) {
        std::size_t const end = line.find("` | `");
        if (line.rfind("| `", 0) == 0 && end != std::string::npos) {
            rows[line.substr(3, end - 3)] = line.substr(end + 5, line.find('`', end + 5) - end - 5);
        }
    }
    return rows;
}

TEST_F(InputStatus, HasTheDocumentedMembers)
{
    StartControlled();
    Owned<GVariant> const status(g_variant_parse(G_VARIANT_TYPE_VARDICT, m_remote->Get("InputStatus").c_str(),
                                                 nullptr, nullptr, nullptr));
    ASSERT_TRUE(status);
    std::map<std::string, std::string> members;
    GVariantIter entries;
    g_variant_iter_init(&entries, status.get());
    char const* name = nullptr;
    for (GVariant* raw = nullptr; g_variant_iter_next(&entries, "{&sv}", &name, &raw) != FALSE;) {
        Owned<GVariant> const value(raw);
        members[name] = g_variant_get_type_string(value.get());
    }
    EXPECT_EQ(members, Documented());
    EXPECT_GE(members.size(), 13U);
}

} // namespace
} // namespace zviptv::test
