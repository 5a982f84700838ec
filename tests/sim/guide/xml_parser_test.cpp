// SPDX-License-Identifier: MIT
#include "TestSupport.h"

#include <gmock/gmock.h>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(XmlParser, ErrorsNameFileLineAndColumn)
{
    EXPECT_EQ(ErrorOf("<tv>\n  <programme>\n  </tv>"), "test.xml:3:5: mismatched tag");
    EXPECT_EQ(ErrorOf(""), "test.xml:1:1: no element found");
    EXPECT_EQ(ErrorOf("<tv>"), "test.xml:1:5: no element found");
    EXPECT_THAT(ErrorOf("<tv>\n\xFF\xFE</tv>"), StartsWith("test.xml:2:1: not well-formed"));
    EXPECT_THAT(ErrorOf("<tv/>\n<tv/>"), StartsWith("test.xml:2:1: junk after document element"));
}

TEST(XmlParser, InvalidUtf8IsAnError)
{
    for (char const* bytes : {"\xC0\x80", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xE2\x82", "\x80", "\x01"}) {
        EXPECT_THAT(ErrorOf(Tv(Programme("1", "2026", "", std::string("<title>") + bytes + "</title>"))),
                    HasSubstr("not well-formed"));
    }
}

TEST(XmlParser, EntityBombIsRefusedAtItsFirstDeclaration)
{
    std::string bomb = "<?xml version=\"1.0\"?>\n<!DOCTYPE tv [\n<!ENTITY a \"aaaaaaaaaa\">\n";
    for (char c = 'b'; c <= 'z'; ++c) {
        bomb += std::string("<!ENTITY ") + c + " \"&" + static_cast<char>(c - 1) + ";&" +
                static_cast<char>(c - 1) + ";\">\n";
    }
    EXPECT_THAT(ErrorOf(bomb + "]>\n<tv>&z;</tv>"), StartsWith("test.xml:3:"));
    EXPECT_THAT(ErrorOf(bomb + "]>\n<tv>&z;</tv>"), HasSubstr("entity declarations are not allowed"));
}

TEST(XmlParser, ExternalAndParameterEntitiesAreRefused)
{
    EXPECT_THAT(ErrorOf("<!DOCTYPE tv [<!ENTITY x SYSTEM \"file:///etc/passwd\">]><tv>&x;</tv>"),
                HasSubstr("entity declarations are not allowed"));
    EXPECT_THAT(ErrorOf("<!DOCTYPE tv [<!ENTITY % x \"y\">%x;]><tv/>"),
                HasSubstr("entity declarations are not allowed"));
}

TEST(XmlParser, ExternalDtdIsNotFetchedAndItsEntitiesStayUnchanged)
{
    auto const loaded =
        ReadText("<!DOCTYPE tv SYSTEM \"/nowhere/xmltv.dtd\">" +
                 Tv(Programme("1", "2026", "", "<title>Caf&eacute; &amp; Bar</title>")).substr(38));
    EXPECT_EQ(loaded.guide->At(0).main.title, "Caf&eacute; & Bar");
}

/// Declarations of `count` attributes of <a>, which are like `attribute` with a number.
std::string Attributes(std::size_t count, std::string const& attribute)
{
    std::string list = "<!ATTLIST a";
    for (std::size_t i = 0; i < count; ++i) {
        list += " a" + std::to_string(i) + " " + attribute;
    }
    return list + ">";
}

std::string Repeated(std::string const& text, std::size_t bytes)
{
    std::string all;
    while (all.size() < bytes) {
        all += text;
    }
    return all;
}

std::string WithDtd(std::string const& declarations, std::string const& elements)
{
    return "<!DOCTYPE tv [" + declarations + "]><tv>" + elements + "</tv>";
}

constexpr std::size_t Kilobyte = 1024;

TEST(XmlParser, AttributeBombsAreRefusedAtOnce)
{
    std::string const small = WithDtd(Attributes(30'000, "CDATA \"\""), Repeated("<a/>", 400 * Kilobyte));
    EXPECT_EQ(small.size() / (100 * Kilobyte), 8U);
    EXPECT_THAT(ErrorOf(small), HasSubstr("the DTD declares over 256 attributes; remove the declarations"));
    std::string lists;
    for (int i = 0; i < 6; ++i) {
        lists += Attributes(60'000, "CDATA \"\"");
    }
    std::string const large = WithDtd(lists, Repeated("<a/>", 1600 * Kilobyte));
    EXPECT_EQ(large.size() / (1000 * Kilobyte), 7U);
    EXPECT_THAT(ErrorOf(large), HasSubstr("the DTD declares over 256 attributes; remove the declarations"));
}

TEST(XmlParser, AttributeDefaultsMayDoubleADocumentButNoMore)
{
    std::string const dtd = Attributes(1, "CDATA \"" + std::string(1000, 'x') + "\"");
    EXPECT_NO_THROW(ReadText(WithDtd(dtd, Repeated("<a/>", 4 * Kilobyte)), {}, 4096));
    EXPECT_THAT(ErrorOf(WithDtd(dtd, Repeated("<a/>", 8 * Kilobyte))),
                HasSubstr("attribute defaults more than double the document; remove them from the DTD"));
    EXPECT_NO_THROW(ReadText(WithDtd(dtd, Repeated("<a a0=''/>", 100 * Kilobyte)), {}, 4096));
}

TEST(XmlParser, AttributesWithoutDefaultsAreCheap)
{
    std::string const xml = WithDtd(Attributes(256, "CDATA #IMPLIED"), Repeated("<a/>", 8'000 * Kilobyte));
    EXPECT_NO_THROW(ReadText(xml, {}, 64 * Kilobyte));
}

TEST(XmlParser, AttributeDefaultsAreApplied)
{
    EXPECT_EQ(ReadText("<!DOCTYPE tv [<!ATTLIST title lang CDATA \"de\">]><tv>" + Programme("1", "2026", "") +
                       "</tv>")
                  .guide->At(0)
                  .main.language,
              "de");
}

TEST(XmlParser, UndeclaredEntityWithoutDtdIsAnError)
{
    EXPECT_THAT(ErrorOf(Tv("&eacute;")), HasSubstr("undefined entity"));
}

TEST(XmlParser, HugeTokensAreRefused)
{
    std::string const huge(3 << 20, 'x');
    for (std::string const& xml :
         {"<tv source=\"" + huge + "\"></tv>", "<tv><!--" + huge + "--></tv>", "<tv><" + huge + "/></tv>"}) {
        EXPECT_THAT(ErrorOf(xml, 64 * Kilobyte), HasSubstr("a tag, comment or declaration over 1 MiB"))
            << xml.substr(0, 20);
    }
}

TEST(XmlParser, AcceptsLargeTokensBelowTheLimit)
{
    std::string const large(1000 * 1000, 'x');
    EXPECT_NO_THROW(ReadText("<tv source=\"" + large + "\"><!--" + large + "--></tv>", {}, 64 * Kilobyte));
}

TEST(XmlParser, DeepNestingIsRefused)
{
    std::string deep = "<tv>";
    for (int i = 0; i < 63; ++i) {
        deep += "<a>";
    }
    std::string end;
    for (int i = 0; i < 63; ++i) {
        end += "</a>";
    }
    EXPECT_NO_THROW(ReadText(deep + end + "</tv>"));
    EXPECT_THAT(ErrorOf(deep + "<a></a>" + end + "</tv>"), HasSubstr("elements are nested too deeply"));
}

TEST(XmlParser, RefusesAnotherRoot)
{
    EXPECT_EQ(ErrorOf("<?xml version=\"1.0\"?>\n<rss><channel id=\"1\"/></rss>"),
              "test.xml:2:1: the document is not a programme guide: <rss>, not <tv>");
}

TEST(XmlParser, OtherEncodings)
{
    auto const title = [](std::string const& xml) {
        auto const loaded = ReadText(xml);
        return loaded.guide->At(0).main.title;
    };
    auto const document = [](std::string const& encoding, std::string const& text) {
        return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?><tv>" +
               Programme("1", "2026", "", "<title>" + text + "</title>") + "</tv>";
    };
    EXPECT_EQ(title(document("ISO-8859-1", "K\xF6ln")), "Köln");
    EXPECT_EQ(title(document("ISO-8859-15", "5 \xA4")), "5 €");
    EXPECT_EQ(title(document("windows-1252", "\x80\x97\xE9")), "€—é");
    EXPECT_EQ(title(document("KOI8-R", "\xED\xC9\xD2")), "Мир");
    EXPECT_THAT(ErrorOf(document("no-such-thing", "x")), HasSubstr("unknown encoding"));
    EXPECT_THAT(ErrorOf(document("SHIFT_JIS", "x")), HasSubstr("unknown encoding"));
    EXPECT_THAT(ErrorOf(document("IBM037", "x")), HasSubstr("unknown encoding"));
}

TEST(XmlParser, Utf16)
{
    std::string xml = "\xFF\xFE";
    for (char const c : "<tv>" + Programme("1", "2026", "", "<title>A") + "</tv>") {
        (xml += c) += '\0';
    }
    xml.insert(xml.find('A') + 2, "\x3D\xD8\x00\xDE", 4); // one character outside the base plane
    xml.replace(xml.find(std::string("<\0/\0p\0", 6)), 0, std::string("<\0/\0t\0i\0t\0l\0e\0>\0", 16));
    auto const loaded = ReadText(xml);
    EXPECT_EQ(loaded.guide->At(0).main.title, "A😀");
}

} // namespace
} // namespace zviptv::test
