// SPDX-License-Identifier: MIT
#pragma once

#include "input/ArrivingBytes.h"
#include "input/ContinuityWatch.h"
#include "stream/TsReader.h"

#include <chrono>
#include <optional>

namespace zviptv::sim {

/// The input to open.
struct InputOptions
{
    std::string url;     ///< for ParseInputUrl(); the empty URL is an input that never sends anything
    bool follow = false; ///< the file is being written: wait at its end for more, or for a FIFO's next writer
};

/// The transport packets of an input, and its counters. Used on the thread whose default main context calls
/// back. Not thread-safe.
class Input : public PacketSource
{
public:
    /// An input without data for this time is stalled.
    static constexpr std::chrono::seconds StallTime{1};

    /// @throws StreamError like TsReader
    explicit Input(std::unique_ptr<ByteSource> bytes);
    explicit Input(std::unique_ptr<ArrivingBytes> bytes);

    bool Read(TsBytes& packet) override;
    void Rewind() override;
    bool HasEnded() const override { return m_reader.HasEnded(); }
    bool IsLive() const override { return m_reader.IsLive(); }

    /// Whether more data may arrive later: it is live, or a file that is being written.
    bool IsArriving() const { return m_arriving != nullptr; }

    /// `wake` is called from the main context, never inside Read(), when Read() may have new data after it
    /// has returned false.
    void SetWakeUp(std::function<void()> wake);

    /// Calls `done` once, now or later: with an empty text if the input is open, otherwise with a line for
    /// the user. `done` may delete the input.
    void WhenOpen(std::function<void(std::string const& error)> done);

    /// Whether no data has arrived for StallTime, after some had arrived.
    bool IsStalled() const;

    /// The counters so far; the caller counts `packets`.
    InputCounters Counters() const;

private:
    Input(std::unique_ptr<ByteSource> bytes, ArrivingBytes* arriving);

    std::string m_url;
    ArrivingBytes* m_arriving; ///< source of the reader; null for a file
    TsReader m_reader;
    ContinuityWatch m_continuity;
    std::function<void()> m_wake;
    bool m_hasBegun = false;
    std::uint64_t m_skipped = 0; ///< bytes, at the last Read() without data
    std::optional<std::chrono::steady_clock::time_point> m_emptySince;
    std::uint64_t m_stalls = 0; ///< stalls that are over
};

/// Opens the input of the options. @throws StreamError with a line for the user if it fails at once;
/// otherwise WhenOpen() reports the outcome.
std::unique_ptr<Input> OpenInput(InputOptions const& options);

/// Opens it and waits, iterating the default main context, until it is open. @throws StreamError
std::unique_ptr<Input> OpenInputAndWait(InputOptions const& options);

} // namespace zviptv::sim
