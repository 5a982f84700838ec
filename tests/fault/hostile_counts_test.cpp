// SPDX-License-Identifier: MIT
#include "FakeService.h"
#include "Footprint.h"
#include "SubscriberTest.h"

#include <climits>
#include <stdexcept>

using namespace zviptv::test;

namespace {

/// The service announces more elements than it sends. The library throws an exception or uses the memory of
/// the sent data, never that of the announced number.
class HostileCounts : public SubscriberTest, public testing::WithParamInterface<int>
{
protected:
    static constexpr long Bound = 64 * 1024; // KiB

    ~HostileCounts() override
    {
        if (MemoryCounts()) {
            EXPECT_LT(PeakMemory() - m_before, Bound);
        }
    }

    static std::string Count() { return std::to_string(GetParam()); }
    static bool IsPossible() { return GetParam() == 0; }

    /// Dispatches the messages of the service. Returns whether this threw a length error.
    bool DispatchThrows(bool const& delivered)
    {
        try {
            EXPECT_TRUE(RunUntil([&] { return delivered; }));
        } catch (std::length_error const&) {
            return true;
        }
        return false;
    }

    long const m_before = PeakMemory();
};

INSTANTIATE_TEST_SUITE_P(Count, HostileCounts, testing::Values(-1, 0, 31 * 1024 * 1024, INT_MAX, INT_MIN),
                         [](auto const& parameter) {
                             return parameter.param < 0
                                        ? "Minus" + std::to_string(-std::int64_t{parameter.param})
                                        : std::to_string(parameter.param);
                         });

TEST_P(HostileCounts, RatingInfoSize)
{
    m_service.Answer("GetRatingInfo",
                     {{"result_internal", "1"}, {"ratingInfoSize", Count()}, {"ratingInfo", "abcdef"}});
    std::vector<ZVRatingInfo> ratings(3);
    if (IsPossible()) {
        EXPECT_TRUE(CreateBroadcast()->GetRatingInfo(ratings));
    } else {
        EXPECT_THROW(CreateBroadcast()->GetRatingInfo(ratings), std::length_error);
    }
    EXPECT_TRUE(ratings.empty());
}

bool delivered = false;
std::size_t size = 0;

template <typename Record>
void Take(Record& record, void*)
{
    size = record.data.size();
    delivered = true;
}

TEST_P(HostileCounts, PesDataSize)
{
    SubscribeForPES(Take<ZVPESData>);
    Notify(PESOf(Count(), "abcdef"));
    EXPECT_EQ(DispatchThrows(delivered), !IsPossible());
    EXPECT_EQ(delivered, IsPossible());
    EXPECT_EQ(size, 0U);
}

TEST_P(HostileCounts, CaptionDataSize)
{
    SubscribeForCaption(Take<ZVCaption>);
    Notify(CaptionOf(Count(), "abcdef"));
    EXPECT_EQ(DispatchThrows(delivered), !IsPossible());
    EXPECT_EQ(delivered, IsPossible());
    EXPECT_EQ(size, 0U);
}

} // namespace
