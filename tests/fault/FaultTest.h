// SPDX-License-Identifier: MIT
#pragma once

#include "ChannelFixture.h"
#include "Footprint.h"
#include "PeerProcess.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::test {

/// True with ZVIPTV_FAULTS=long: the stated counts and durations instead of a second or so each.
bool IsLongForm();

template <typename Value>
Value ShortOrLong(Value shortForm, Value longForm)
{
    return IsLongForm() ? longForm : shortForm;
}

/// A fault happens, again and again, on a bus of the test's own, to partners in processes of their own. What
/// the process holds before and after must be the same. Each test leaves a row, at the end of the file that
/// ZVIPTV_FAULTS_TABLE names, and on the terminal.
class FaultTest : public testing::Test
{
protected:
    explicit FaultTest(BusOptions bus = {}) : m_bus(std::move(bus)) {}

    void TearDown() override;

    /// A round or two to get warm, then that many that count.
    void Repeat(int rounds, std::function<void()> const& round);
    /// As many rounds as the time allows, three at least; the first tenth of it is to get warm.
    void RepeatFor(std::chrono::milliseconds duration, std::function<void()> const& round);

    /// How much more memory than before is nothing to wonder at, KiB: what the allocator keeps, what is on
    /// its way.
    void AllowMemory(long kibibytes) { m_allowed = kibibytes; }

    /// Something for the table beside the figures.
    void Remark(std::string const& text) { m_remark = text; }

    PrivateBus m_bus;

private:
    void Begin();
    void End();

    int m_rounds = 0;
    std::optional<Footprint> m_before;
    std::optional<Footprint> m_after;
    long m_allowed = 4096;
    std::string m_remark;
    std::chrono::steady_clock::time_point const m_start = std::chrono::steady_clock::now();
};

/// A partner that obeys orders, and a channel to it.
class PartnerTest : public FaultTest
{
protected:
    /// An order without an answer of interest; the result of the send.
    static int Order(TestChannel& channel, std::initializer_list<TextEntry> entries, int async = 0);
    /// An order's answer; fails the test when there is none.
    static CMessageBuffer Ask(TestChannel& channel, std::initializer_list<TextEntry> entries);
    /// Orders signals or, with the member "Send", a call to the channel itself. They have been received, and
    /// wait for the context, when this returns.
    static void OrderEvents(TestChannel& channel, std::string const& member,
                            std::initializer_list<TextEntry> more);

    using FaultTest::FaultTest;

    WirePeer m_observer;
    /// Keeps the process's connection to the bus.
    CProxyDBusHelper m_other{"PLAYERCONTROL"};
};

} // namespace zviptv::test
