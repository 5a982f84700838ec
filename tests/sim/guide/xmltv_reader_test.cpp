// SPDX-License-Identifier: MIT
#include "TestSupport.h"
#include "guide/XmltvText.h"

#include <gmock/gmock.h>

namespace zviptv::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

TEST(XmltvReader, EveryTextOfAProgramme)
{
    auto const loaded = ReadText(Tv(R"(
        <channel id="1"><display-name>One</display-name><icon src="logo.png"/></channel>
        <programme channel="1" start="20260101" stop="20260102">
          <title lang="en">Title</title> <sub-title lang="en">Sub</sub-title>
          <desc lang="en">First
              line.   Second <![CDATA[<line>]]>.</desc>
          <credits><director>Somebody</director></credits>
          <category lang="en">News</category> <category lang="en">Weather</category>
          <category lang="en">News</category>
          <icon src="a.png"/><icon src="b.png"/>
          <episode-num system="onscreen">S01E02</episode-num>
          <rating system="FSK"><value>12</value><icon src="fsk.png"/></rating>
          <star-rating><value>3/4</value></star-rating>
        </programme>)"));
    EXPECT_THAT(loaded.warnings.First(), IsEmpty());
    auto const& details = loaded.guide->At(0);
    EXPECT_EQ(details.main.language, "en");
    EXPECT_EQ(details.main.title, "Title");
    EXPECT_EQ(details.main.subtitle, "Sub");
    EXPECT_EQ(details.main.description, "First line. Second <line>.");
    EXPECT_THAT(details.main.genres, ElementsAre("News", "Weather"));
    EXPECT_EQ(details.icon, "a.png");
    EXPECT_EQ(details.episode, "S01E02");
    ASSERT_TRUE(details.rating);
    EXPECT_EQ(details.rating->system, "FSK");
    EXPECT_EQ(details.rating->value, "12");
    EXPECT_EQ(details.rating->minimumAge, 12u);
    EXPECT_THAT(details.translations, IsEmpty());
    EXPECT_EQ(loaded.guide->Services().front().name, "One");
}

TEST(XmltvReader, LanguagesAreSeparate)
{
    auto const loaded = ReadText(Tv(Programme("1", "2026", "", R"(
        <title lang="de">Titel</title><title lang="fr">Titre</title><title lang="de">Noch einer</title>
        <desc lang="fr">Texte</desc><category>News</category><category lang="fr">Infos</category>)")));
    auto const& details = loaded.guide->At(0);
    EXPECT_EQ(details.main.language, "de");
    EXPECT_EQ(details.main.title, "Titel");
    EXPECT_EQ(details.main.description, "Texte") << "there is none in German";
    EXPECT_THAT(details.main.genres, ElementsAre("News"));
    ASSERT_THAT(details.translations, SizeIs(1));
    EXPECT_EQ(details.translations[0].language, "fr");
    EXPECT_EQ(details.translations[0].title, "Titre");
    EXPECT_EQ(details.translations[0].description, "Texte");
    EXPECT_THAT(details.translations[0].genres, ElementsAre("Infos"));
}

TEST(XmltvReader, StrictestRatingCounts)
{
    auto const loaded = ReadText(Tv(Programme("1", "2026", "", R"(<title>T</title>
        <rating><value>PG</value></rating><rating system="FSK"><value>12</value></rating>
        <rating system="X"><value>12</value></rating><rating system="Y"><value>6</value></rating>
        <rating system="Z"/>)")));
    auto const rating = loaded.guide->At(0).rating;
    ASSERT_TRUE(rating);
    EXPECT_EQ(rating->system, "FSK");
}

TEST(XmltvReader, InvalidDatesAreWarningsWithLines)
{
    auto const loaded = ReadText(Tv(Programme("1", "20260229", "") + Programme("1", "20260301", "20260332") +
                                    Programme("1", "", "") + Programme("", "20260304", "") +
                                    Programme("1", "20260305", "20260304") + Programme("1", "1969", "") +
                                    Programme("1", "2107", "") + Programme("1", "20260306", "", "")));
    EXPECT_THAT(loaded.warnings.First(),
                ElementsAre("line 3: no valid start time: \"20260229\", programme left out",
                            "line 4: no valid stop time: \"20260332\", ignored",
                            "line 5: no valid start time: \"\", programme left out",
                            "line 6: programme without channel, left out",
                            "line 7: stop time \"20260304\" is not after the start, ignored",
                            "line 8: no valid start time: \"1969\", programme left out",
                            "line 9: no valid start time: \"2107\", programme left out",
                            "line 10: programme without title"));
    EXPECT_EQ(loaded.guide->All().count, 3u);
}

TEST(XmltvReader, ManyWarningsAreCountedAndTheFirstKept)
{
    std::string programmes;
    for (int i = 0; i < 1000; ++i) {
        programmes += Programme("1", "never", "");
    }
    auto const loaded = ReadText(Tv(programmes));
    EXPECT_EQ(loaded.warnings.Count(), 1000u);
    EXPECT_THAT(loaded.warnings.First(), SizeIs(sim::GuideWarnings::MaxKept));
    EXPECT_THAT(loaded.warnings.First().front(), HasSubstr("line 3:"));
}

TEST(XmltvReader, EventIdsCountEveryProgrammeOfTheFile)
{
    auto const loaded = ReadText(
        Tv(Programme("2", "20260102", "") + Programme("1", "broken", "") + Programme("1", "20260101", "")));
    auto const& guide = *loaded.guide;
    ASSERT_EQ(guide.All().count, 2u);
    EXPECT_EQ(guide.At(0).eventId, 3u); // service 1
    EXPECT_EQ(guide.At(1).eventId, 1u);
}

TEST(XmltvReader, HugeTextsAreCut)
{
    auto const loaded = ReadText(Tv(Programme("1", "2026", "",
                                              "<title>" + std::string(65534, 'x') + "€</title><desc>" +
                                                  std::string(1 << 20, 'y') + "</desc>")),
                                 {}, 4096);
    auto const& details = loaded.guide->At(0);
    EXPECT_EQ(details.main.title, std::string(65534, 'x'));
    EXPECT_EQ(details.main.description, std::string(65535, 'y'));
    EXPECT_THAT(loaded.warnings.First(), ElementsAre(HasSubstr("text over 65535 bytes, cut"),
                                                     HasSubstr("text over 65535 bytes, cut")));
}

TEST(XmltvReader, OmitsTextsAboveTheLimit)
{
    std::string genres = "<title>T</title>";
    for (int i = 0; i < 1200; ++i) {
        genres += "<category>" + std::to_string(i) + "</category>";
    }
    auto const loaded = ReadText(Tv(Programme("1", "2026", "", genres)), {}, 4096);
    EXPECT_THAT(loaded.guide->At(0).main.genres, SizeIs(999));
    EXPECT_EQ(loaded.warnings.Count(), 201u);
}

TEST(XmltvReader, IgnoresMisplacedElements)
{
    auto const loaded = ReadText(Tv(R"(<title>no</title><x><programme channel="1" start="2026"/></x>
        <channel id="5"><title>no</title><display-name> Five <b>TV</b></display-name></channel>
        <programme channel="5" start="20260101"><x><title>no</title></x><title>A <b>bold</b> one</title>
        <value>no</value></programme>text)"));
    auto const& guide = *loaded.guide;
    ASSERT_EQ(guide.All().count, 1u);
    EXPECT_EQ(guide.At(0).main.title, "A bold one");
    EXPECT_FALSE(guide.At(0).rating);
    EXPECT_EQ(guide.Services().front().name, "Five TV");
}

TEST(XmltvReader, ChannelsMayBeLateDuplicateOrMissing)
{
    auto const loaded = ReadText(Tv(Programme("x", "20260101", "") + Programme("y", "20260101", "") +
                                    "<channel id=\"y\"><display-name>Y</display-name></channel>"
                                    "<channel id=\"y\"><display-name>77</display-name></channel>"));
    ASSERT_THAT(loaded.guide->Services(), SizeIs(2));
    EXPECT_EQ(loaded.guide->Services()[0].id, 1u);
    EXPECT_EQ(loaded.guide->Services()[1].id, 77u);
}

TEST(XmltvReader, AcceptsAnEmptyGuide)
{
    EXPECT_EQ(ReadText("<tv/>").guide->All().count, 0u);
}

TEST(XmltvReader, ReadsPiecesOfAnySize)
{
    std::string const xml = ReadFile(ZVIPTV_SAMPLE_GUIDE);
    auto const texts = [&](std::size_t step) {
        auto const loaded = ReadText(xml, {}, step);
        std::vector<std::string> all;
        for (std::uint32_t i = 0; i < loaded.guide->All().count; ++i) {
            auto const& details = loaded.guide->At(i);
            all.emplace_back(details.main.title);
            all.emplace_back(details.main.description);
        }
        return all;
    };
    auto const whole = texts(65536);
    for (std::size_t step : {1u, 2u, 3u, 13u, 1000u}) {
        EXPECT_EQ(texts(step), whole) << step;
    }
}

TEST(CutUtf8, CutsBetweenCharacters)
{
    EXPECT_EQ(sim::CutUtf8("aé€😀", 100), "aé€😀");
    EXPECT_EQ(sim::CutUtf8("aé€😀", 9), "aé€");
    EXPECT_EQ(sim::CutUtf8("aé€😀", 6), "aé€");
    EXPECT_EQ(sim::CutUtf8("aé€😀", 5), "aé");
    EXPECT_EQ(sim::CutUtf8("aé€😀", 2), "a");
    EXPECT_EQ(sim::CutUtf8("aé€😀", 0), "");
}

} // namespace
} // namespace zviptv::test
