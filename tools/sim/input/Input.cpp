// SPDX-License-Identifier: MIT
#include "input/Input.h"

#include <utility>

namespace zviptv::sim {

Input::Input(std::unique_ptr<ByteSource> bytes) : Input(std::move(bytes), nullptr) {}

Input::Input(std::unique_ptr<ArrivingBytes> bytes) : Input(nullptr, bytes.release()) {}

Input::Input(std::unique_ptr<ByteSource> bytes, ArrivingBytes* arriving)
    : m_url(bytes ? bytes->Name() : arriving->Name()), m_arriving(arriving),
      m_reader(bytes ? std::move(bytes) : std::unique_ptr<ByteSource>(arriving))
{
}

bool Input::Read(TsBytes& packet)
{
    if (!m_reader.Read(packet)) {
        bool const hasSkipped = std::exchange(m_skipped, m_reader.SkippedBytes()) != m_skipped;
        if (hasSkipped && !HasEnded() && m_wake) {
            m_wake(); // there may be packets after the skipped bytes
        }
        if (!m_emptySince) {
            m_emptySince = std::chrono::steady_clock::now();
        }
        return false;
    }
    m_stalls += IsStalled() ? 1U : 0U;
    m_emptySince.reset();
    m_hasBegun = true;
    if (IsLive()) {
        m_continuity.Push(packet);
    }
    return true;
}

void Input::Rewind()
{
    m_reader.Rewind();
    m_emptySince.reset();
}

void Input::SetWakeUp(std::function<void()> wake)
{
    m_wake = std::move(wake);
    if (m_arriving != nullptr) {
        m_arriving->SetWakeUp(m_wake);
    }
}

void Input::WhenOpen(std::function<void(std::string const& error)> done)
{
    if (m_arriving != nullptr) {
        m_arriving->WhenOpen(std::move(done));
    } else {
        done({});
    }
}

bool Input::IsStalled() const
{
    return m_hasBegun && m_emptySince && !HasEnded() &&
           std::chrono::steady_clock::now() - *m_emptySince >= StallTime;
}

InputCounters Input::Counters() const
{
    InputCounters counters;
    counters.url = m_url;
    counters.isLive = IsLive();
    counters.skippedBytes = m_reader.SkippedBytes();
    counters.gaps = m_continuity.Gaps();
    counters.stalls = m_stalls + (IsStalled() ? 1U : 0U);
    if (m_arriving != nullptr) {
        m_arriving->AddTo(counters);
    }
    bool const isOver = m_emptySince && HasEnded();
    if (isOver && !m_hasBegun && counters.error.empty()) {
        counters.state = "failed";
        counters.error = "no transport stream has arrived: no sync bytes 0x47 every 188 bytes";
    }
    if (counters.state.empty()) {
        counters.state = isOver ? "ended" : IsStalled() ? "stalled" : m_hasBegun ? "receiving" : "waiting";
    }
    return counters;
}

} // namespace zviptv::sim
