// SPDX-License-Identifier: MIT
#include "PeerProcess.h"

#include "MessageLog.h"
#include "WaitUntil.h"

#include <signal.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace zviptv::test {

namespace {

std::vector<std::string> Command(std::vector<std::string> const& mode)
{
    std::vector<std::string> command{FAULT_PEER};
    command.insert(command.end(), mode.begin(), mode.end());
    return command;
}

/// The state letter of a process, 'T' if it is stopped. It is after the name, which may contain any
/// characters.
char StateOf(pid_t pid)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string const text(std::istreambuf_iterator<char>(file), {});
    std::size_t const end = text.rfind(')');
    return end == std::string::npos || end + 2 >= text.size() ? '?' : text[end + 2];
}

} // namespace

PeerProcess::PeerProcess(std::vector<std::string> const& mode) : m_process(Command(mode))
{
    if (!m_process.WaitForOutput("\n", patience)) {
        throw std::runtime_error("the peer process is not on the bus: " + m_process.Errors());
    }
    std::string const output = m_process.Output();
    m_name = output.substr(0, output.find('\n'));
}

void PeerProcess::Kill()
{
    m_process.Signal(SIGKILL);
    m_process.Wait(patience);
}

void PeerProcess::Stop()
{
    m_process.Signal(SIGSTOP);
    if (!WaitUntil([this] { return StateOf(m_process.Pid()) == 'T'; }, patience)) {
        throw std::runtime_error("the peer process does not stop");
    }
}

void PeerProcess::Continue()
{
    m_process.Signal(SIGCONT);
}

std::size_t PeerProcess::Sent() const
{
    std::string const output = m_process.Output();
    std::string const word = "sent ";
    std::size_t const last = output.rfind(word);
    return last == std::string::npos ? 0 : std::stoul(output.substr(last + word.size()));
}

bool PeerProcess::WaitForDone() const
{
    return m_process.WaitForOutput("done\n", patience);
}

} // namespace zviptv::test
