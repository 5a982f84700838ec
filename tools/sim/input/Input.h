// SPDX-License-Identifier: MIT
#pragma once

#include "input/ArrivingBytes.h"
#include "input/ContinuityWatch.h"
#include "stream/TsReader.h"

#include <chrono>
#include <optional>

namespace zviptv::sim {

/// What to open.
struct InputOptions
{
    std::string url;     ///< as ParseInputUrl() takes it; nothing ever comes from the empty one
    bool follow = false; ///< a file is being written: wait at its end for more; a FIFO outlives its writers
};

/// The transport packets of an input, and how they come. Lives on the thread whose default main context calls
/// back. Not thread-safe.
class Input : public PacketSource
{
public:
    /// An input that has given nothing for so long is stalled.
    static constexpr std::chrono::seconds StallTime{1};

    /// @throws StreamError as TsReader does
    explicit Input(std::unique_ptr<ByteSource> bytes);
    explicit Input(std::unique_ptr<ArrivingBytes> bytes);

    bool Read(TsBytes& packet) override;
    void Rewind() override;
    bool HasEnded() const override { return m_reader.HasEnded(); }
    bool IsLive() const override { return m_reader.IsLive(); }

    /// More may come later: it is live, or a file that is being written.
    bool IsArriving() const { return m_arriving != nullptr; }

    /// `wake` is called from the main context, never from within Read(), when Read() may have more to give
    /// than when it last returned false.
    void SetWakeUp(std::function<void()> wake);

    /// Calls `done` once, now or later, with the empty text when the input is open, else with a line for the
    /// user. It may delete the input.
    void WhenOpen(std::function<void(std::string const& error)> done);

    /// Nothing has come for StallTime, and something had come before.
    bool IsStalled() const;

    /// What has come so far; `packets` is the caller's to count.
    InputCounters Counters() const;

private:
    Input(std::unique_ptr<ByteSource> bytes, ArrivingBytes* arriving);

    std::string m_url;
    ArrivingBytes* m_arriving; ///< the reader's source; null for a file
    TsReader m_reader;
    ContinuityWatch m_continuity;
    std::function<void()> m_wake;
    bool m_hasBegun = false;
    std::uint64_t m_skipped = 0; ///< bytes, at the last Read() that gave nothing
    std::optional<std::chrono::steady_clock::time_point> m_emptySince;
    std::uint64_t m_stalls = 0; ///< that are over
};

/// Opens what the options name. @throws StreamError with a line for the user when that is known at once to
/// fail; else WhenOpen() tells.
std::unique_ptr<Input> OpenInput(InputOptions const& options);

/// Opens it and waits, iterating the default main context, until it is open. @throws StreamError
std::unique_ptr<Input> OpenInputAndWait(InputOptions const& options);

} // namespace zviptv::sim
