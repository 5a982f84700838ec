// SPDX-License-Identifier: MIT
#include "Interruption.h"

namespace zviptv::ctl {

namespace {

volatile std::sig_atomic_t hasCome = 0;

} // namespace

Interruption::Interruption()
{
    hasCome = 0;
    struct sigaction action
    {
    };
    action.sa_handler = [](int) { hasCome = 1; }; // without SA_RESTART: read() returns
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (signal != SIGHUP || !IsIgnored(signal)) {
            sigaction(signal, &action, &m_former[signal]);
        }
    }
}

Interruption::~Interruption()
{
    for (auto const& [signal, action] : m_former) {
        sigaction(signal, &action, nullptr);
    }
}

bool Interruption::HasCome()
{
    return hasCome != 0;
}

bool IsIgnored(int signal)
{
    struct sigaction action
    {
    };
    sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

} // namespace zviptv::ctl
