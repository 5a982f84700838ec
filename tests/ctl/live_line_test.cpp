#include "LiveLine.h"

#include "Handles.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>

#include <array>

using zviptv::ctl::LiveLine;
using zviptv::test::FileHandle;

namespace {

/// A terminal of 20 columns.
class Terminal
{
public:
    Terminal() : m_master(posix_openpt(O_RDWR | O_NOCTTY))
    {
        grantpt(m_master.Get());
        unlockpt(m_master.Get());
        m_slave = FileHandle(open(ptsname(m_master.Get()), O_RDWR | O_NOCTTY));
        winsize const size{24, 20, 0, 0};
        ioctl(m_slave.Get(), TIOCSWINSZ, &size);
    }

    int Slave() const { return m_slave.Get(); }

    /// What was written to the terminal and not read yet.
    std::string Read() const
    {
        std::string text;
        pollfd polled{m_master.Get(), POLLIN, 0};
        while (poll(&polled, 1, 0) == 1) {
            std::array<char, 256> buffer;
            ssize_t const size = read(m_master.Get(), buffer.data(), buffer.size());
            if (size <= 0) {
                break;
            }
            text.append(buffer.data(), static_cast<std::size_t>(size));
        }
        return text;
    }

private:
    FileHandle m_master;
    FileHandle m_slave;
};

TEST(LiveLineTest, IsRewrittenInPlaceAndErased)
{
    Terminal const terminal;
    ASSERT_GE(terminal.Slave(), 0);
    {
        LiveLine line(terminal.Slave());
        EXPECT_TRUE(line.IsTerminal());
        line.Erase();
        EXPECT_EQ("", terminal.Read());
        line.Show("one");
        line.Show("two");
        EXPECT_EQ("\r\033[Kone\r\033[Ktwo", terminal.Read());
        line.Erase();
        line.Erase();
        EXPECT_EQ("\r\033[K", terminal.Read());
        line.Show("last");
    }
    EXPECT_EQ("\r\033[Klast\r\033[K", terminal.Read());
}

TEST(LiveLineTest, IsCutToTheWidth)
{
    Terminal const terminal;
    LiveLine line(terminal.Slave());
    line.Show("0123456789012345678901234567890");
    EXPECT_EQ("\r\033[K0123456789012345678", terminal.Read());
}

TEST(LiveLineTest, NothingHappensWithoutATerminal)
{
    int ends[2];
    ASSERT_EQ(0, pipe2(ends, O_CLOEXEC | O_NONBLOCK));
    FileHandle const reader(ends[0]);
    FileHandle const writer(ends[1]);
    LiveLine line(writer.Get());
    line.Show("text");
    line.Erase();
    EXPECT_FALSE(line.IsTerminal());
    char byte = 0;
    EXPECT_EQ(-1, read(reader.Get(), &byte, 1));
}

} // namespace
