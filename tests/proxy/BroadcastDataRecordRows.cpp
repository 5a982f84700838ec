// SPDX-License-Identifier: MIT
#include "BroadcastDataRows.h"

namespace zviptv::test {

namespace {

std::string UntouchedHex(std::size_t size)
{
    return HexOf(std::string(size, '\xee'));
}

} // namespace

std::vector<Method<IBroadcastData>> BroadcastDataRecordRows()
{
    std::string const current = PatternBytes(8);
    std::string const next = PatternBytes(16).substr(8);
    std::string const bytes16 = PatternBytes(16);
    std::string const bytes24 = PatternBytes(24);
    std::string const bytes32 = PatternBytes(32);
    return {
        {"GetDigitalDualSound",
         "GetDigitalDualSound",
         Getter(&IBroadcastData::GetDigitalDualSound, Untouched<ZVDualSound>(), Untouched<ZVDualSound>()),
         Entries({{"functionname", "GetDigitalDualSound"}, {"handleID", "256"}}),
         {{"currentMode", current, Decoding::Record}, {"nextMode", next, Decoding::Record}},
         HexOf(current) + ", " + HexOf(next),
         UntouchedHex(8) + ", " + UntouchedHex(8)},
        {"GetAudio",
         "GetAudio",
         [](IBroadcastData& broadcast) {
             auto audio = Untouched<ZVAudio>();
             bool const result = broadcast.GetAudio(4294967293U, audio);
             return Outcome{result, ShowAll(audio)};
         },
         Entries({{"functionname", "GetAudio"}, {"handleID", "256"}, {"index", "4294967293"}}),
         {{"audio", bytes32, Decoding::Record}},
         HexOf(bytes32),
         UntouchedHex(32)},
        {"GetTTX",
         "GetTTX",
         [](IBroadcastData& broadcast) {
             auto ttx = Untouched<ZVTTX>();
             bool const result = broadcast.GetTTX(4294967295U, ttx);
             return Outcome{result, ShowAll(ttx)};
         },
         Entries({{"functionname", "GetTTX"}, {"handleID", "256"}, {"index", "4294967295"}}),
         {{"ttx", bytes16, Decoding::Record}},
         HexOf(bytes16),
         UntouchedHex(16)},
        {"GetHybridSBT",
         "GetHybridSBT",
         [](IBroadcastData& broadcast) {
             EZVLanguageCode language = OtherLanguage;
             auto subtitle = Untouched<ZVHybridSBT>();
             bool const result = broadcast.GetHybridSBT(2147483648U, language, subtitle);
             return Outcome{result, ShowAll(language, subtitle)};
         },
         Entries({{"functionname", "GetHybridSBT"}, {"handleID", "256"}, {"index", "2147483648"}}),
         {{"landCode", "-9", Decoding::Stoi}, {"hybridSbt", bytes24, Decoding::Record}},
         "-9, " + HexOf(bytes24),
         "77, " + UntouchedHex(24)},
        {"GetPreferredHybridSBT",
         "GetPreferredHybridSBT",
         Getter(&IBroadcastData::GetPreferredHybridSBT, OtherLanguage, Untouched<ZVHybridSBT>()),
         Entries({{"functionname", "GetPreferredHybridSBT"}, {"handleID", "256"}}),
         {{"landCode", "6578549", Decoding::Stoi}, {"hybridSbt", bytes24, Decoding::Record}},
         "6578549, " + HexOf(bytes24),
         "77, " + UntouchedHex(24)},
        {"GetPreferredTTXSubtitle",
         "GetPreferredTTXSubtitle",
         Getter(&IBroadcastData::GetPreferredTTXSubtitle, Untouched<ZVTTX>()),
         Entries({{"functionname", "GetPreferredTTXSubtitle"}, {"handleID", "256"}}),
         {{"ttxSubtitle", bytes16, Decoding::Record}},
         HexOf(bytes16),
         UntouchedHex(16)},
        {"GetISDBText",
         "GetISDBText",
         [](IBroadcastData& broadcast) {
             auto text = Untouched<ZVISDBText>();
             bool const result = broadcast.GetISDBText(static_cast<EZVISDBTextType>(-1), 4294967295U, text);
             return Outcome{result, ShowAll(text)};
         },
         Entries(
             {{"functionname", "GetISDBText"}, {"handleID", "256"}, {"mode", "-1"}, {"index", "4294967295"}}),
         {{"isdbText", bytes16, Decoding::Record}},
         HexOf(bytes16),
         UntouchedHex(16)},
        {"GetRatingInfo",
         "GetRatingInfo",
         [](IBroadcastData& broadcast) {
             std::vector<ZVRatingInfo> ratings(3, Untouched<ZVRatingInfo>());
             bool const result = broadcast.GetRatingInfo(ratings);
             std::string shown = std::to_string(ratings.size()) + ":";
             for (ZVRatingInfo const& rating : ratings) {
                 shown += HexOf(BytesOf(rating));
             }
             return Outcome{result, shown};
         },
         Entries({{"functionname", "GetRatingInfo"}, {"handleID", "256"}}),
         {{"ratingInfoSize", "2", Decoding::Stoi}, {"ratingInfo", "\1\2\3\4\5\6", Decoding::Record}},
         "2:010203040506",
         "3:" + UntouchedHex(9)},
    };
}

} // namespace zviptv::test
