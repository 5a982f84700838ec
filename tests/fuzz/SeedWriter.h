// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace zviptv::fuzz {

/// Writes what FuzzedDataProvider reads: bytes and texts from the beginning of the input, numbers from its
/// end.
class SeedWriter
{
public:
    SeedWriter& Bytes(std::string const& bytes)
    {
        m_front += bytes;
        return *this;
    }

    /// For ConsumeRandomLengthString(), with fewer than its most characters.
    SeedWriter& Text(std::string const& text)
    {
        for (char const character : text) {
            m_front += character == '\\' ? "\\\\" : std::string(1, character);
        }
        m_front += "\\.";
        return *this;
    }

    /// A number of one byte, also for ConsumeBool() and for ConsumeIntegralInRange() from 0 on.
    SeedWriter& Number(std::size_t number)
    {
        m_back.insert(m_back.begin(), static_cast<char>(number & 0xFFU));
        return *this;
    }

    /// For ConsumeIntegral<std::uint16_t>().
    SeedWriter& Number16(std::size_t number) { return Number(number >> 8U).Number(number); }

    std::string Seed() const { return m_front + m_back; }

private:
    std::string m_front;
    std::string m_back;
};

/// Writes a seed to `folder`/`name`, without characters of `name` that do not belong in a file name.
inline void WriteSeed(std::filesystem::path const& folder, std::string name, std::string const& seed)
{
    for (char& character : name) {
        bool const isPlain = (character >= 'a' && character <= 'z') ||
                             (character >= 'A' && character <= 'Z') ||
                             (character >= '0' && character <= '9') || character == '_';
        character = isPlain ? character : '-';
    }
    std::filesystem::create_directories(folder);
    std::ofstream file(folder / name, std::ios::binary);
    file << seed;
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + (folder / name).string());
    }
}

} // namespace zviptv::fuzz
