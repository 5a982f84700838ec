// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "guide/GuideBuilder.h"

#include <gtest/gtest.h>
#include <random>

namespace zviptv::test {
namespace {

using sim::Guide;

/// Any programmes: overlapping, without stop, out of order, equal.
std::shared_ptr<Guide const> RandomGuide(std::mt19937& random)
{
    std::uniform_int_distribution<unsigned> any(0, 199);
    sim::GuideBuilder builder;
    for (std::uint32_t id = 1; id <= any(random); ++id) {
        sim::ProgrammeDraft draft;
        draft.eventId = id;
        draft.channel = std::to_string(1 + any(random) % 3);
        draft.start = 1 + any(random);
        draft.stop = any(random) % 3 == 0 ? 0 : draft.start + any(random) % 30;
        builder.AddProgramme(draft);
    }
    sim::GuideWarnings warnings;
    return builder.Build({}, warnings);
}

void ExpectOrder(Guide const& guide)
{
    for (std::uint32_t i = 0; i < guide.All().count; ++i) {
        auto const& entry = guide.At(i);
        ASSERT_GT(entry.duration, 0u);
        if (i == 0) {
            continue;
        }
        auto const& before = guide.At(i - 1);
        std::uint64_t const service = guide.ServiceAt(i).id;
        ASSERT_LE(guide.ServiceAt(i - 1).id, service);
        if (guide.ServiceAt(i - 1).id == service) {
            ASSERT_LE(before.Stop(), entry.start);
        }
    }
}

/// The answers that looking at every programme gives.
void ExpectQueries(Guide const& guide, std::uint64_t service, std::uint32_t time, std::uint32_t duration)
{
    std::optional<std::uint32_t> present;
    std::optional<std::uint32_t> first;
    std::uint32_t count = 0;
    for (std::uint32_t i = 0; i < guide.All().count; ++i) {
        auto const& entry = guide.At(i);
        if (guide.ServiceAt(i).id != service) {
            continue;
        }
        if (entry.start <= time && time < entry.Stop()) {
            present = i;
        }
        bool const overlaps = entry.start < time + duration && entry.Stop() > time;
        first = overlaps && !first ? i : first;
        count += overlaps ? 1 : 0;
    }
    ASSERT_EQ(guide.Present(service, time), present);
    auto const range = guide.List(service, time, duration);
    ASSERT_EQ(range.count, count);
    if (first) {
        ASSERT_EQ(range.first, *first);
    }
}

TEST(GuideProperty, QueriesAgreeWithLookingAtEveryProgramme)
{
    std::mt19937 random(20260329);
    for (int round = 0; round < 200; ++round) {
        auto const guide = RandomGuide(random);
        ASSERT_NO_FATAL_FAILURE(ExpectOrder(*guide));
        for (std::uint64_t service = 0; service <= 4; ++service) {
            for (std::uint32_t time = 0; time < 240; time += 3) {
                for (std::uint32_t duration : {1u, 2u, 17u, 300u}) {
                    ASSERT_NO_FATAL_FAILURE(ExpectQueries(*guide, service, time, duration));
                }
            }
        }
    }
}

TEST(GuideProperty, EveryProgrammeIsFoundByItsIds)
{
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        auto const guide = RandomGuide(random);
        for (std::uint32_t i = 0; i < guide->All().count; ++i) {
            auto const& entry = guide->At(i);
            std::uint64_t const service = guide->ServiceAt(i).id;
            ASSERT_EQ(guide->Find(entry.eventId), i);
            ASSERT_EQ(guide->Find(service, entry.eventId), i);
            ASSERT_EQ(guide->Find({service, static_cast<std::uint16_t>(entry.eventId), entry.start}), i);
            ASSERT_EQ(guide->Find({service, static_cast<std::uint16_t>(entry.eventId), 0}), i);
        }
    }
}

} // namespace
} // namespace zviptv::test
