// SPDX-License-Identifier: MIT
#include "StreamBuilder.h"

#include "stream/DvbText.h"

#include <glib.h>
#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

std::string Decode(std::string const& text)
{
    return sim::DecodeDvbText(Bytes(text.begin(), text.end()));
}

struct Part
{
    std::uint8_t number;
    char const* characters; ///< 0xA0 to 0xFF; '?': none
};

// The parts of ISO 8859, as Python's codecs have them.
// clang-format off
constexpr Part Parts[] = {
    {1, "\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD®¯°±²³´µ¶·¸¹º»¼½¾¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏ"
        "ÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞßàáâãäåæçèéêëìíîïðñòóôõö÷øùúûüýþÿ"},
    {2, "\u00A0Ą˘Ł¤ĽŚ§¨ŠŞŤŹ\u00ADŽŻ°ą˛ł´ľśˇ¸šşťź˝žżŔÁÂĂÄĹĆÇČÉĘËĚÍÎĎ"
        "ĐŃŇÓÔŐÖ×ŘŮÚŰÜÝŢßŕáâăäĺćçčéęëěíîďđńňóôőö÷řůúűüýţ˙"},
    {3, "\u00A0Ħ˘£¤?Ĥ§¨İŞĞĴ\u00AD?Ż°ħ²³´µĥ·¸ışğĵ½?żÀÁÂ?ÄĊĈÇÈÉÊËÌÍÎÏ"
        "?ÑÒÓÔĠÖ×ĜÙÚÛÜŬŜßàáâ?äċĉçèéêëìíîï?ñòóôġö÷ĝùúûüŭŝ˙"},
    {4, "\u00A0ĄĸŖ¤ĨĻ§¨ŠĒĢŦ\u00ADŽ¯°ą˛ŗ´ĩļˇ¸šēģŧŊžŋĀÁÂÃÄÅÆĮČÉĘËĖÍÎĪ"
        "ĐŅŌĶÔÕÖ×ØŲÚÛÜŨŪßāáâãäåæįčéęëėíîīđņōķôõö÷øųúûüũū˙"},
    {5, "\u00A0ЁЂЃЄЅІЇЈЉЊЋЌ\u00ADЎЏАБВГДЕЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯ"
        "абвгдежзийклмнопрстуфхцчшщъыьэюя№ёђѓєѕіїјљњћќ§ўџ"},
    {6, "\u00A0?\?\?¤?\?\?\?\?\?\?،\u00AD?\?\?\?\?\?\?\?\?\?\?\?\?؛?\?\?؟?ءآأؤإئابةتثجحخد"
        "ذرزسشصضطظعغ?\?\?\?\?ـفقكلمنهوىيًٌٍَُِّْ?\?\?\?\?\?\?\?\?\?\?\?\?"},
    {7, "\u00A0‘’£€₯¦§¨©ͺ«¬\u00AD?―°±²³΄΅Ά·ΈΉΊ»Ό½ΎΏΐΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟ"
        "ΠΡ?ΣΤΥΦΧΨΩΪΫάέήίΰαβγδεζηθικλμνξοπρςστυφχψωϊϋόύώ?"},
    {8, "\u00A0?¢£¤¥¦§¨©×«¬\u00AD®¯°±²³´µ¶·¸¹÷»¼½¾?\?\?\?\?\?\?\?\?\?\?\?\?\?\?\?\?"
        "?\?\?\?\?\?\?\?\?\?\?\?\?\?\?‗אבגדהוזחטיךכלםמןנסעףפץצקרשת?\?\u200E\u200F?"},
    {9, "\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD®¯°±²³´µ¶·¸¹º»¼½¾¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏ"
        "ĞÑÒÓÔÕÖ×ØÙÚÛÜİŞßàáâãäåæçèéêëìíîïğñòóôõö÷øùúûüışÿ"},
    {10, "\u00A0ĄĒĢĪĨĶ§ĻĐŠŦŽ\u00ADŪŊ°ąēģīĩķ·ļđšŧž―ūŋĀÁÂÃÄÅÆĮČÉĘËĖÍÎÏ"
        "ÐŅŌÓÔÕÖŨØŲÚÛÜÝÞßāáâãäåæįčéęëėíîïðņōóôõöũøųúûüýþĸ"},
    {11, "\u00A0กขฃคฅฆงจฉชซฌญฎฏฐฑฒณดตถทธนบปผฝพฟภมยรฤลฦวศษสหฬอฮฯ"
        "ะัาำิีึืฺุู?\?\?\?฿เแโใไๅๆ็่้๊๋์ํ๎๏๐๑๒๓๔๕๖๗๘๙๚๛?\?\?\?"},
    {13, "\u00A0”¢£¤„¦§Ø©Ŗ«¬\u00AD®Æ°±²³“µ¶·ø¹ŗ»¼½¾æĄĮĀĆÄÅĘĒČÉŹĖĢĶĪĻ"
        "ŠŃŅÓŌÕÖ×ŲŁŚŪÜŻŽßąįāćäåęēčéźėģķīļšńņóōõö÷ųłśūüżž’"},
    {14, "\u00A0Ḃḃ£ĊċḊ§Ẁ©ẂḋỲ\u00AD®ŸḞḟĠġṀṁ¶ṖẁṗẃṠỳẄẅṡÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏ"
        "ŴÑÒÓÔÕÖṪØÙÚÛÜÝŶßàáâãäåæçèéêëìíîïŵñòóôõöṫøùúûüýŷÿ"},
    {15, "\u00A0¡¢£€¥Š§š©ª«¬\u00AD®¯°±²³Žµ¶·ž¹º»ŒœŸ¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏ"
        "ÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞßàáâãäåæçèéêëìíîïðñòóôõö÷øùúûüýþÿ"},
};
// clang-format on

TEST(DvbText, DefaultTableIsIso6937AndTheEuro)
{
    EXPECT_EQ(Decode("Plain text ~"), "Plain text ~");
    EXPECT_EQ(Decode("Z\xC8urich"), "Zürich");
    EXPECT_EQ(Decode("\xC1\x61\xC2\x65\xC3\x6F\xC4\x6E\xC5\x69\xC6\x67\xC7\x7A\xC8\x79"), "àéôñīğżÿ");
    EXPECT_EQ(Decode("\xCA\x61\xCB\x63\xCD\x75\xCE\x65\xCF\x73"), "åçűęš");
    EXPECT_EQ(Decode("\xE1\xE2\xE3\xE8\xE9\xEA\xEC\xF1\xF3\xF5\xF8\xF9\xFA\xFB\xFC\xFE"), "ÆĐªŁØŒÞæðıłøœßþŋ");
    EXPECT_EQ(Decode("\xA1\xA3\xA7\xA9\xB9\xAA\xBA\xAB\xBB\xB0\xBD\xBF\xD3\xD4\xD5"), "¡£§‘’“”«»°½¿©™♪");
    EXPECT_EQ(Decode("\xA4 5, 7 \xA4"), "€ 5, 7 €");
}

TEST(DvbText, PartsOfIso8859ByOneByteOrThree)
{
    std::string high;
    for (unsigned byte = 0xA0; byte <= 0xFF; ++byte) {
        high += static_cast<char>(byte);
    }
    for (Part const& part : Parts) {
        std::string const byThree = std::string("\x10\x00", 2) + static_cast<char>(part.number);
        EXPECT_EQ(Decode(byThree + "A~" + high), std::string("A~") + part.characters) << int{part.number};
        if (part.number >= 5) {
            std::string const byOne(1, static_cast<char>(part.number - 4));
            EXPECT_EQ(Decode(byOne + "A~" + high), std::string("A~") + part.characters) << int{part.number};
        }
    }
}

TEST(DvbText, TablesOfManyBytes)
{
    EXPECT_EQ(Decode(std::string("\x11\x00K\x00\xF6\x30\x42", 7)), "Köあ");
    EXPECT_EQ(Decode("\x12\xB0\xA1 \xC8\xFE"), "가 힝");
    EXPECT_EQ(Decode("\x13\xD6\xD0 \xB9\xFA"), "中 国");
    EXPECT_EQ(Decode(std::string("\x14\x4E\x2D\x20\x80", 5)), "中₀");
    EXPECT_EQ(Decode("\x15"
                     "K\xC3\xB6ln"),
              "Köln");
}

TEST(DvbText, LineBreaksAreBlanksAndEmphasisIsDropped)
{
    EXPECT_EQ(Decode("One\x8ATwo \x86three\x87\n"), "One Two three");
    EXPECT_EQ(Decode("\x01One\x8ATwo \x86three\x87"), "One Two three");
    EXPECT_EQ(Decode("\x15One\xEE\x82\x8ATwo \xEE\x82\x86three\xC2\x87"), "One Two three");
    EXPECT_EQ(Decode(std::string("\x11\x00"
                                 "A\xE0\x8A\x00"
                                 "B\x00\x86",
                                 9)),
              "A B");
}

TEST(DvbText, MarksInvalidCharactersAndReadsTheRest)
{
    EXPECT_EQ(Decode("A\xC0"
                     "B K\xC8oln"),
              "A?B Köln");
    EXPECT_EQ(Decode("a\xC8"), "a?") << "cut off";
    EXPECT_EQ(Decode("\x15\xC0\x80"), "??") << "overlong";
    EXPECT_EQ(Decode("\x15\xED\xA0\x80"), "???") << "half of a pair";
    EXPECT_EQ(Decode("\x15"
                     "a\xE2\x82"),
              "a??");
    EXPECT_EQ(Decode("\x15\xF5\xC3\xB6"), "?ö");
    EXPECT_EQ(Decode(std::string("\x11\xDC\x00\x00"
                                 "A\x00",
                                 6)),
              "?A?");
}

TEST(DvbText, ReadsAsciiInUnknownTables)
{
    for (std::string const& table : {std::string("\x1F\x01"), std::string("\x10\x00\x63", 3),
                                     std::string("\x08"), std::string("\x16"), std::string(1, '\0')}) {
        EXPECT_EQ(Decode(table + " A\xE4"), " A?");
    }
    EXPECT_EQ(Decode(""), "");
    EXPECT_EQ(Decode("\x01"), "");
    EXPECT_EQ(Decode("\x10"), "");
}

TEST(DvbText, AnyBytesBecomeUtf8)
{
    for (unsigned seed = 1; seed < 20000; ++seed) {
        Bytes bytes = Noise(1 + seed % 40, seed);
        bytes[0] = static_cast<std::uint8_t>(seed % 0x30);
        std::string const text = sim::DecodeDvbText(bytes);
        ASSERT_TRUE(g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr)) << seed;
    }
}

} // namespace
} // namespace zviptv::test
