// SPDX-License-Identifier: MIT
#include "stream/NalUnit.h"

namespace zviptv::sim {

namespace {

constexpr std::size_t StartCodeSize = 3;

/// Offset of the next start code; the size of `bytes` if there is none.
std::size_t FindStartCode(ByteView bytes, std::size_t from)
{
    for (std::size_t at = from; at + StartCodeSize <= bytes.Size(); ++at) {
        if (bytes[at] == 0 && bytes[at + 1] == 0 && bytes[at + 2] == 1) {
            return at;
        }
    }
    return bytes.Size();
}

} // namespace

std::optional<ByteView> FindUnit(ByteView bytes, bool (*isWanted)(std::uint8_t))
{
    std::size_t at = FindStartCode(bytes, 0);
    while (at + StartCodeSize < bytes.Size()) {
        std::size_t const begin = at + StartCodeSize;
        at = FindStartCode(bytes, begin);
        if (isWanted(bytes[begin])) {
            return bytes.Part(begin, at - begin);
        }
    }
    return std::nullopt;
}

std::vector<std::uint8_t> Unescape(ByteView nalUnit)
{
    constexpr std::size_t Longest = 4096;
    std::vector<std::uint8_t> plain;
    unsigned zeros = 0;
    for (std::uint8_t const byte : nalUnit.Part(0, Longest)) {
        if (zeros >= 2 && byte == 3) {
            zeros = 0;
            continue;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        plain.push_back(byte);
    }
    return plain;
}

} // namespace zviptv::sim
