// SPDX-License-Identifier: MIT
#include "input/GrowingFile.h"

namespace zviptv::sim {

std::size_t GrowingFile::Read(std::uint8_t* bytes, std::size_t size)
{
    std::size_t const got = m_file.Read(bytes, size);
    if (got > 0) {
        m_timer.Stop();
    } else if (!m_timer.IsRunning()) {
        m_timer = LoopSource::Every(Period, [this] { Wake(); });
    }
    return got;
}

} // namespace zviptv::sim
