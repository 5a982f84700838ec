// SPDX-License-Identifier: MIT
#pragma once

#include "input/ArrivingBytes.h"

namespace zviptv::sim {

/// A live source that never sends anything, for a service without a stream.
class SilentBytes : public ArrivingBytes
{
public:
    std::size_t Read(std::uint8_t* /*bytes*/, std::size_t /*size*/) override { return 0; }
    bool HasEnded() const override { return false; }
    std::string const& Name() const override { return m_name; }

private:
    std::string const m_name;
};

} // namespace zviptv::sim
