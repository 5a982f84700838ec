// SPDX-License-Identifier: MIT
#pragma once

#include "input/InputCounters.h"
#include "stream/ByteSource.h"

#include <functional>
#include <utility>

namespace zviptv::sim {

/// Bytes that arrive while the input is read. Used on the thread whose default main context calls back.
class ArrivingBytes : public ByteSource
{
public:
    /// `wake` is called, never inside Read(), when Read() may have new data after it has returned 0.
    void SetWakeUp(std::function<void()> wake) { m_wake = std::move(wake); }

    /// Calls `done` once, now or later, when it is known whether the source can be read: with an empty text
    /// if it can, otherwise with a line for the user.
    virtual void WhenOpen(std::function<void(std::string const& error)> done) { done({}); }

    /// Adds its counters: transport, losses, jitter. Sets `state` unless it is waiting, receiving, stalled or
    /// ended.
    virtual void AddTo(InputCounters& counters) const { static_cast<void>(counters); }

    /// @throws StreamError always
    void Rewind() override;
    bool IsLive() const override { return true; }

protected:
    void Wake() const
    {
        if (m_wake) {
            m_wake();
        }
    }

private:
    std::function<void()> m_wake;
};

} // namespace zviptv::sim
