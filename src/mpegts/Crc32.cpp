// SPDX-License-Identifier: MIT
#include "mpegts/Crc32.h"

namespace zviptv {

std::uint32_t Crc32(ByteView bytes)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (std::uint8_t const byte : bytes) {
        crc ^= std::uint32_t{byte} << 24;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc << 1) ^ ((crc & 0x80000000) ? 0x04C11DB7u : 0u);
        }
    }
    return crc;
}

} // namespace zviptv
