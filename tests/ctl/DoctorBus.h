// SPDX-License-Identifier: MIT
#pragma once

#include "process/FileHandle.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <sys/fsuid.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace zviptv::test {

/// Takes root's right to open all files from this thread. Has no effect for other users.
class AsNobody
{
public:
    AsNobody() : m_before(static_cast<uid_t>(setfsuid(65534))) {}
    ~AsNobody() { setfsuid(m_before); }

    AsNobody(AsNobody const&) = delete;
    AsNobody& operator=(AsNobody const&) = delete;

private:
    uid_t const m_before;
};

/// A bus that gets no further than this: it has an answer for each of the client's first lines, and then
/// none.
class ScriptedBus
{
public:
    explicit ScriptedBus(std::vector<std::string> answers) : m_answers(std::move(answers))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::string const name = "zviptv-scripted-" + std::to_string(getpid());
        name.copy(address.sun_path + 1, sizeof address.sun_path - 1);
        m_address = "unix:abstract=" + name;
        auto const length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
        EXPECT_EQ(bind(m_listener.Get(), reinterpret_cast<sockaddr*>(&address), length), 0);
        EXPECT_EQ(listen(m_listener.Get(), 1), 0);
        m_thread = std::thread([this] { Answer(); });
    }
    ~ScriptedBus()
    {
        shutdown(m_listener.Get(), SHUT_RDWR);
        m_thread.join();
    }

    ScriptedBus(ScriptedBus const&) = delete;
    ScriptedBus& operator=(ScriptedBus const&) = delete;

    std::string const& Address() const { return m_address; }

private:
    void Answer()
    {
        FileHandle const peer(accept4(m_listener.Get(), nullptr, nullptr, SOCK_CLOEXEC));
        auto answer = m_answers.begin();
        char byte = 0;
        while (read(peer.Get(), &byte, 1) == 1) {
            if (byte == '\n' && answer != m_answers.end()) {
                std::string const line = *answer++ + "\r\n";
                send(peer.Get(), line.data(), line.size(), MSG_NOSIGNAL);
            }
        }
    }

    std::vector<std::string> const m_answers;
    FileHandle const m_listener{socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::string m_address;
    std::thread m_thread;
};

} // namespace zviptv::test
