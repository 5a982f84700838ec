// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <utility>

namespace zviptv {

/// Owns a file descriptor.
class FileHandle
{
public:
    FileHandle() = default;
    explicit FileHandle(int descriptor) : m_descriptor(descriptor) {}
    ~FileHandle() { Reset(); }
    FileHandle(FileHandle&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    FileHandle& operator=(FileHandle&& other) noexcept
    {
        if (this != &other) {
            Reset();
            m_descriptor = std::exchange(other.m_descriptor, -1);
        }
        return *this;
    }

    int Get() const { return m_descriptor; }
    explicit operator bool() const { return m_descriptor >= 0; }
    void Reset()
    {
        if (m_descriptor >= 0) {
            close(std::exchange(m_descriptor, -1));
        }
    }

private:
    int m_descriptor = -1;
};

} // namespace zviptv
