// SPDX-License-Identifier: MIT
#pragma once

#include "process/FileHandle.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <string>

namespace zviptv::test {

/// A pseudo-terminal.
class Terminal
{
public:
    explicit Terminal(unsigned short columns) : m_master(posix_openpt(O_RDWR | O_NOCTTY))
    {
        grantpt(m_master.Get());
        unlockpt(m_master.Get());
        m_slave = FileHandle(open(ptsname(m_master.Get()), O_RDWR | O_NOCTTY));
        winsize const size{24, columns, 0, 0};
        ioctl(m_slave.Get(), TIOCSWINSZ, &size);
    }

    int Replica() const { return m_slave.Get(); }

    /// To open the slave by.
    std::string Name() const { return ptsname(m_master.Get()); }

    /// As if typed on its keyboard.
    bool Type(std::string const& text) const
    {
        return write(m_master.Get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
    }

    /// What was written to the terminal and not read yet; waits so long for the first of it.
    std::string Read(std::chrono::milliseconds wait = {}) const
    {
        std::string text;
        pollfd polled{m_master.Get(), POLLIN, 0};
        while (poll(&polled, 1, text.empty() ? static_cast<int>(wait.count()) : 0) == 1) {
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

} // namespace zviptv::test
