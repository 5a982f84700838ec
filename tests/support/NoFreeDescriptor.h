// SPDX-License-Identifier: MIT
#pragma once

#include "Sanitizers.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <vector>

namespace zviptv::test {

/// UndefinedBehaviorSanitizer opens a pipe to check the type of an object.
constexpr bool ChecksNeedADescriptor = UnderAddressSanitizer;
constexpr char ReasonToSkip[] =
    "UndefinedBehaviorSanitizer needs a free descriptor to check the type of an object";

/// While it lives, the process has no free descriptor.
class NoFreeDescriptor
{
public:
    NoFreeDescriptor()
    {
        getrlimit(RLIMIT_NOFILE, &m_former);
        rlimit lower = m_former;
        lower.rlim_cur = 128;
        setrlimit(RLIMIT_NOFILE, &lower);
        for (int file = Open(); file >= 0; file = Open()) {
            m_taken.push_back(file);
        }
    }
    ~NoFreeDescriptor()
    {
        for (int const file : m_taken) {
            close(file);
        }
        setrlimit(RLIMIT_NOFILE, &m_former);
    }
    NoFreeDescriptor(NoFreeDescriptor const&) = delete;
    NoFreeDescriptor& operator=(NoFreeDescriptor const&) = delete;

private:
    static int Open() { return open("/dev/null", O_RDONLY | O_CLOEXEC); }

    rlimit m_former = {};
    std::vector<int> m_taken;
};

} // namespace zviptv::test
