// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>

namespace zviptv::test {

/// AddressSanitizer keeps freed memory for a while by default.
constexpr char KeepNoFreedMemory[] = "quarantine_size_mb=0:thread_local_quarantine_size_kb=0";

/// The most memory that a process has had, in bytes.
inline std::uint64_t PeakMemory(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmHWM:", 0) == 0) {
            return std::stoull(line.substr(6)) * 1024;
        }
    }
    throw std::runtime_error("no VmHWM in the status of process " + std::to_string(process));
}

} // namespace zviptv::test
