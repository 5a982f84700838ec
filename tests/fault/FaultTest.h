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

constexpr char HelperName[] = "org.corvel.zviptvapi.dbushelper";

/// True with ZVIPTV_FAULTS=long: tests use the full counts and durations instead of about a second each.
bool IsLongForm();

template <typename Value>
Value ShortOrLong(Value shortForm, Value longForm)
{
    return IsLongForm() ? longForm : shortForm;
}

/// Repeats a fault on a private bus, with partners in separate processes. The process must hold the same
/// resources before and after. Each test prints a row, and appends it to the file that ZVIPTV_FAULTS_TABLE
/// names.
class FaultTest : public testing::Test
{
protected:
    explicit FaultTest(BusOptions bus = {}) : m_bus(std::move(bus)) {}

    void TearDown() override;

    /// Runs one or two rounds to warm up, then the given number of rounds.
    void Repeat(int rounds, std::function<void()> const& round);
    /// Runs rounds for the given time, at least three. The first tenth of the time is a warm-up.
    void RepeatFor(std::chrono::milliseconds duration, std::function<void()> const& round);

    /// The additional memory that is normal, in KiB: memory that the allocator keeps, and messages in
    /// transit.
    void AllowMemory(long kibibytes) { m_allowed = kibibytes; }

    /// Sets the text in the last column of the table.
    void SetRemark(std::string const& text) { m_remark = text; }

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

/// A partner that executes orders, and a channel to it.
class PartnerTest : public FaultTest
{
protected:
    /// Sends an order whose answer does not matter. Returns the result of the send.
    static int Order(TestChannel& channel, std::initializer_list<TextEntry> entries, int async = 0);
    /// Sends an order and returns its answer. Fails the test if there is none.
    static CMessageBuffer Ask(TestChannel& channel, std::initializer_list<TextEntry> entries);
    /// Orders signals or, with the member "Send", a call to the channel itself. When this returns, they have
    /// been received and wait for the context.
    static void OrderEvents(TestChannel& channel, std::string const& member,
                            std::initializer_list<TextEntry> more);

    using FaultTest::FaultTest;

    WirePeer m_observer;
    /// Keeps the process's connection to the bus.
    CProxyDBusHelper m_other{"PLAYERCONTROL"};
};

} // namespace zviptv::test
