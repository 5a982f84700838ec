// SPDX-License-Identifier: MIT
#include "NaiveReassembly.h"

#include <filesystem>
#include <fstream>
#include <set>

namespace zviptv::test {

namespace {

unsigned PidAt(Bytes const& stream, std::size_t at)
{
    return (stream[at + 1] & 0x1Fu) * 256u + stream[at + 2];
}

} // namespace

Bytes ReadWholeFile(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    Bytes bytes(std::filesystem::file_size(path));
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

std::vector<Bytes> ReassembleNaively(Bytes const& stream, std::uint16_t pid)
{
    Bytes row;
    std::vector<std::size_t> starts;
    for (std::size_t at = 0; at + 188 <= stream.size(); at += 188) {
        unsigned const control = stream[at + 3] / 16 % 4;
        bool const scrambled = stream[at + 3] / 64 != 0;
        if (PidAt(stream, at) != pid || control % 2 == 0 || scrambled) {
            continue;
        }
        std::size_t const skip = control == 3 ? 5u + stream[at + 4] : 4u;
        if (stream[at + 1] & 0x40) {
            starts.push_back(row.size());
        }
        row.insert(row.end(), stream.begin() + static_cast<std::ptrdiff_t>(at + skip),
                   stream.begin() + static_cast<std::ptrdiff_t>(at + 188));
    }
    std::vector<Bytes> packets;
    for (std::size_t i = 0; i < starts.size(); ++i) {
        std::size_t const end = i + 1 < starts.size() ? starts[i + 1] : row.size();
        std::size_t const size = end - starts[i];
        auto const begin = row.begin() + static_cast<std::ptrdiff_t>(starts[i]);
        if (size < 6 || begin[0] != 0 || begin[1] != 0 || begin[2] != 1) {
            continue;
        }
        std::size_t const length = begin[4] * 256u + begin[5];
        std::size_t const whole = length == 0 ? size : length + 6;
        if (whole <= size) {
            packets.emplace_back(begin, begin + static_cast<std::ptrdiff_t>(whole));
        }
    }
    return packets;
}

std::vector<std::uint16_t> PidsOf(Bytes const& stream)
{
    std::set<std::uint16_t> pids;
    for (std::size_t at = 0; at + 188 <= stream.size(); at += 188) {
        pids.insert(static_cast<std::uint16_t>(PidAt(stream, at)));
    }
    return {pids.begin(), pids.end()};
}

} // namespace zviptv::test
