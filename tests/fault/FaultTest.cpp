// SPDX-License-Identifier: MIT
#include "FaultTest.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <glib.h>
#include <malloc.h>

namespace zviptv::test {

namespace {

std::string Row(std::string const& fault, int rounds, bool passed, Footprint const& before,
                Footprint const& after, double seconds, std::string const& remark)
{
    char row[400];
    std::snprintf(row, sizeof row, "%-58s %6d  %-7s %8ld %8ld %6zu %6zu %8.1f  %s", fault.c_str(), rounds,
                  passed ? "held" : "FAILED", before.memory, after.memory, before.descriptors,
                  after.descriptors, seconds, remark.c_str());
    return row;
}

} // namespace

bool IsLongForm()
{
    char const* const form = std::getenv("ZVIPTV_FAULTS");
    return form != nullptr && std::strcmp(form, "long") == 0;
}

void FaultTest::Begin()
{
    // A block of this size is returned to the system when it is freed. By default, malloc raises the limit.
    mallopt(M_MMAP_THRESHOLD, 65536);
    g_main_context_default(); // has a descriptor
    m_before = CurrentFootprint();
}

void FaultTest::End()
{
    // Other threads may still be releasing resources of the last round, and a test that runs no loop leaves
    // events to it.
    auto const isBack = [this] {
        if (g_main_context_acquire(nullptr) != FALSE) {
            // A number of times, since a flood of messages may never end.
            for (int i = 0; i < 10000 && g_main_context_iteration(nullptr, FALSE) != FALSE; ++i) {
            }
            g_main_context_release(nullptr);
        }
        m_after = CurrentFootprint();
        return m_after->descriptors <= m_before->descriptors &&
               (!MemoryCounts() || m_after->memory - m_before->memory < m_allowed);
    };
    EXPECT_TRUE(WaitUntil(isBack, patience))
        << "memory grew by " << m_after->memory - m_before->memory << " KiB; " << m_before->descriptors
        << " descriptors before, " << m_after->descriptors << " after";
}

void FaultTest::Repeat(int rounds, std::function<void()> const& round)
{
    for (int i = 0; i < std::min(rounds, 2) && !HasFatalFailure(); ++i) {
        round();
    }
    Begin();
    for (m_rounds = 0; m_rounds < rounds && !HasFatalFailure(); ++m_rounds) {
        round();
    }
    End();
}

void FaultTest::RepeatFor(std::chrono::milliseconds duration, std::function<void()> const& round)
{
    auto const end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end - duration * 9 / 10 && !HasFatalFailure()) {
        round();
    }
    Begin();
    for (m_rounds = 0; (m_rounds < 3 || std::chrono::steady_clock::now() < end) && !HasFatalFailure();
         ++m_rounds) {
        round();
    }
    End();
}

void FaultTest::TearDown()
{
    testing::TestInfo const& info = *testing::UnitTest::GetInstance()->current_test_info();
    Footprint const nothing{0, 0};
    double const seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    std::string const row = Row(info.name(), m_rounds, !HasFailure(), m_before.value_or(nothing),
                                m_after.value_or(nothing), seconds, m_remark);
    std::printf("%s\n", row.c_str());
    if (char const* const table = std::getenv("ZVIPTV_FAULTS_TABLE")) {
        std::ofstream(table, std::ios::app) << row << '\n';
    }
}

int PartnerTest::Order(TestChannel& channel, std::initializer_list<TextEntry> entries, int async)
{
    CMessageBuffer request = Message(entries);
    CMessageBuffer reply;
    return channel->SendMessage(request, reply, async);
}

CMessageBuffer PartnerTest::Ask(TestChannel& channel, std::initializer_list<TextEntry> entries)
{
    CMessageBuffer request = Message(entries);
    CMessageBuffer reply;
    EXPECT_EQ(channel->SendMessage(request, reply, 0), 1);
    return reply;
}

void PartnerTest::OrderEvents(TestChannel& channel, std::string const& member,
                              std::initializer_list<TextEntry> more)
{
    WireTarget const target = channel.Target(member);
    CMessageBuffer request = Message({{"do", member == "Send" ? "call" : "emit"},
                                      {"to", target.destination},
                                      {"path", target.path},
                                      {"member", member}});
    for (auto const& [key, value] : more) {
        request.AddValue(key.c_str(), static_cast<int>(value.size()), value.data());
    }
    CMessageBuffer reply;
    EXPECT_EQ(channel->SendMessage(request, reply, 0), 1);
}

} // namespace zviptv::test
