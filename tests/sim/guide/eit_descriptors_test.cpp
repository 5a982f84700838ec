// SPDX-License-Identifier: MIT
#include "EitBuilder.h"
#include "guide/EitDescriptors.h"

#include <gmock/gmock.h>

namespace zviptv::test {
namespace {

using sim::EitEvent;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

EitEvent Read(Bytes const& descriptors)
{
    EitEvent event;
    sim::AddEitDescriptors(descriptors, event);
    return event;
}

TEST(EitDescriptors, ShortEventsByLanguage)
{
    auto const event = Read(MakeShortEvent("eng", FromText("Title"), FromText("Text")) +
                            MakeShortEvent("deu", FromText("K\xC8oln"), {}));
    ASSERT_THAT(event.texts, SizeIs(2));
    EXPECT_EQ(event.texts[0].language, "eng");
    EXPECT_EQ(event.texts[0].title, "Title");
    EXPECT_EQ(event.texts[0].summary, "Text");
    EXPECT_EQ(event.texts[1].language, "deu");
    EXPECT_EQ(event.texts[1].title, "Köln");
    EXPECT_EQ(event.texts[1].summary, "");
}

TEST(EitDescriptors, JoinsExtendedEvents)
{
    auto const event = Read(MakeShortEvent("eng", FromText("Title"), {}) +
                            MakeExtendedEvent("eng", FromText("It was a "), 0) +
                            MakeExtendedEvent("eng", FromText("dark night."), 1));
    ASSERT_THAT(event.texts, SizeIs(1));
    EXPECT_EQ(event.texts[0].description, "It was a dark night.");
}

TEST(EitDescriptors, ContentAppearsOnce)
{
    auto const event =
        Read(MakeDescriptor(0x54, {0x10, 0x00, 0x14, 0x00, 0xB0, 0x00, 0x00, 0x01, 0xF3, 0x00, 0x40}));
    EXPECT_THAT(event.genres, ElementsAre("Movie/Drama", "Special characteristics"));
}

TEST(EitDescriptors, ParentalRatings)
{
    auto const event = Read(MakeDescriptor(0x55, FromText("DEU") + Bytes{0x09} + FromText("FRA") +
                                                     Bytes{0x00} + FromText("ESP") + Bytes{0x10} +
                                                     FromText("GBR") + Bytes{0x0F} + FromText("IT")));
    ASSERT_THAT(event.ratings, SizeIs(2));
    EXPECT_EQ(event.ratings[0].country, "DEU");
    EXPECT_EQ(event.ratings[0].minimumAge, 12u);
    EXPECT_EQ(event.ratings[1].country, "GBR");
    EXPECT_EQ(event.ratings[1].minimumAge, 18u);
}

TEST(EitDescriptors, CutShortAtAnyPlace)
{
    Bytes const whole = MakeShortEvent("eng", FromText("Title"), FromText("Text")) +
                        MakeExtendedEvent("eng", FromText("More"), 0) +
                        MakeDescriptor(0x55, FromText("DEU\x09"));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        Bytes const part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        auto const event = Read(part);
        EXPECT_THAT(event.ratings, IsEmpty()) << size;
        EXPECT_EQ(!event.texts.empty() && event.texts[0].title == "Title", size >= 11) << size;
    }
    EXPECT_THAT(Read(whole).ratings, SizeIs(1));
}

TEST(EitTimes, ModifiedJulianDateAndBcd)
{
    EXPECT_EQ(sim::ParseMjdTime(Bytes{0xC0, 0x79, 0x12, 0x45, 0x00}),
              750516300u); // 1993-10-13 12:45, EN 300 468
    EXPECT_EQ(sim::ParseMjdTime(Bytes{0x9E, 0x8B, 0x00, 0x00, 0x01}), 1u);
    EXPECT_EQ(sim::ParseMjdTime(Bytes{0xFF, 0xFE, 0x23, 0x59, 0x59}), (65534u - 40587u) * 86400 + 86399);
}

TEST(EitTimes, UndefinedOrImpossible)
{
    EXPECT_EQ(sim::ParseMjdTime(Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), std::nullopt);
    EXPECT_EQ(sim::ParseMjdTime(Bytes{0x9E, 0x8A, 0x00, 0x00, 0x00}), std::nullopt);
    EXPECT_EQ(sim::ParseMjdTime(Bytes{0xC0, 0x79, 0x24, 0x00, 0x00}), std::nullopt);
    EXPECT_EQ(sim::ParseMjdTime(Bytes{0xC0, 0x79, 0x1A, 0x00, 0x00}), std::nullopt);
    EXPECT_EQ(sim::ParseMjdTime(Bytes{}), std::nullopt);
    EXPECT_EQ(sim::ParseBcdDuration(Bytes{0xFF, 0xFF, 0xFF}), std::nullopt);
    EXPECT_EQ(sim::ParseBcdDuration(Bytes{0x00, 0x60, 0x00}), std::nullopt);
}

TEST(EitTimes, Durations)
{
    EXPECT_EQ(sim::ParseBcdDuration(Bytes{0x01, 0x45, 0x30}), 6330u); // the example of EN 300 468
    EXPECT_EQ(sim::ParseBcdDuration(Bytes{0x99, 0x59, 0x59}), 359999u);
}

} // namespace
} // namespace zviptv::test
