// SPDX-License-Identifier: MIT
#pragma once

#include "input/ArrivingBytes.h"

#include <string>
#include <utility>

namespace zviptv::sim {

/// Replaces an input that cannot be played: contains nothing, ends, and has the reason.
class FailedBytes : public ArrivingBytes
{
public:
    /// `error` is a line for the user.
    FailedBytes(std::string name, std::string error) : m_name(std::move(name)), m_error(std::move(error)) {}

    std::size_t Read(std::uint8_t* /*bytes*/, std::size_t /*size*/) override
    {
        m_wasRead = true;
        return 0;
    }
    bool HasEnded() const override { return m_wasRead; } // the reader refuses an input that has ended at once
    std::string const& Name() const override { return m_name; }

    void AddTo(InputCounters& counters) const override
    {
        counters.state = "failed";
        counters.error = m_error;
    }

private:
    std::string m_name;
    std::string m_error;
    bool m_wasRead = false;
};

} // namespace zviptv::sim
