// SPDX-License-Identifier: MIT
#include "BroadcastDataRows.h"

namespace zviptv::test {

namespace {

using Row = Method<IBroadcastData>;

constexpr auto OtherEncoding = static_cast<EZVAudioEncodeType>(77);

/// A method that fills numbers and flags. Untouched numbers remain 77, untouched flags remain 1.
Row NumberRow(std::function<Outcome(IBroadcastData&)> call, WireEntries request,
              std::vector<ReplyValue> reply, std::string decoded, std::string start)
{
    std::string const function = request.front().bytes;
    return {function,         function,           std::move(call), std::move(request),
            std::move(reply), std::move(decoded), std::move(start)};
}

std::vector<Row> Sizes()
{
    return {
        NumberRow(Getter(&IBroadcastData::SizeOfAudio, 77U),
                  Entries({{"functionname", "SizeOfAudio"}, {"handleID", "256"}}),
                  {{"size", "-3", Decoding::Stoi}}, "4294967293", "77"),
        NumberRow(Getter(&IBroadcastData::SizeOfTTX, 77U),
                  Entries({{"functionname", "SizeOfTTX"}, {"handleID", "256"}}),
                  {{"size", "-1", Decoding::Stoi}}, "4294967295", "77"),
        NumberRow(Getter(&IBroadcastData::SizeOfHybridSBT, 77U),
                  Entries({{"functionname", "SizeOfHybridSBT"}, {"handleID", "256"}}),
                  {{"size", "-2147483648", Decoding::Stoi}}, "2147483648", "77"),
        NumberRow(
            [](IBroadcastData& broadcast) {
                unsigned int size = 77;
                bool const result = broadcast.SizeOfISDBText(static_cast<EZVISDBTextType>(-1), size);
                return Outcome{result, ShowAll(size)};
            },
            Entries({{"functionname", "SizeOfISDBText"}, {"handleID", "256"}, {"mode", "-1"}}),
            {{"size", "-1", Decoding::Stoi}}, "4294967295", "77"),
    };
}

std::vector<Row> CurrentEntries()
{
    return {
        NumberRow(Getter(&IBroadcastData::GetAudioFormat, OtherEncoding),
                  Entries({{"functionname", "GetAudioFormat"}, {"handleID", "256"}}),
                  {{"encodeType", "-5", Decoding::Stoi}}, "-5", "77"),
        NumberRow(Getter(&IBroadcastData::GetCurrentAudioInfo, OtherLanguage, 77),
                  Entries({{"functionname", "GetCurrentAudioInfo"}, {"handleID", "256"}}),
                  {{"landCode", "6909541", Decoding::Stoi}, {"index", "-1", Decoding::Stoi}}, "6909541, -1",
                  "77, 77"),
        NumberRow(Getter(&IBroadcastData::GetCurrentTTX, OtherLanguage, 77U),
                  Entries({{"functionname", "GetCurrentTTX"}, {"handleID", "256"}}),
                  {{"landCode", "-2", Decoding::Stoi}, {"index", "-1", Decoding::Stoi}}, "-2, 4294967295",
                  "77, 77"),
        NumberRow(Getter(&IBroadcastData::GetCurrentHybridSBT, OtherLanguage, 77U),
                  Entries({{"functionname", "GetCurrentHybridSBT"}, {"handleID", "256"}}),
                  {{"landCode", "12", Decoding::Stoi}, {"index", "-2", Decoding::Stoi}}, "12, 4294967294",
                  "77, 77"),
        NumberRow(
            [](IBroadcastData& broadcast) {
                EZVLanguageCode language = OtherLanguage;
                unsigned int index = 77;
                auto const type = static_cast<EZVISDBTextType>(-9);
                bool const result = broadcast.GetCurrentISDBText(type, language, index);
                return Outcome{result, ShowAll(language, index)};
            },
            Entries({{"functionname", "GetCurrentISDBText"}, {"handleID", "256"}, {"mode", "-9"}}),
            {{"landCode", "12", Decoding::Stoi}, {"index", "-1", Decoding::Stoi}}, "12, 4294967295",
            "77, 77"),
        NumberRow(
            [](IBroadcastData& broadcast) {
                EZVLanguageCode language = OtherLanguage;
                char code = '?';
                bool const result =
                    broadcast.GetCaptionLanguage(static_cast<EZVCaptionService>(-4), language, code);
                return Outcome{result, ShowAll(language, code)};
            },
            Entries({{"functionname", "GetCaptionLanguage"}, {"handleID", "256"}, {"service", "-4"}}),
            {{"landCode", "7040882", Decoding::Stoi}, {"koreanCode", "KOR", Decoding::Text}}, "7040882, K",
            "77, ?"),
    };
}

std::vector<Row> Flags()
{
    return {
        NumberRow(Getter(&IBroadcastData::CheckHardOfHearingSBT, true),
                  Entries({{"functionname", "CheckHardOfHearingSBT"}, {"handleID", "256"}}),
                  {{"exists", "0", Decoding::Stoi}}, "0", "1"),
        NumberRow(Getter(&IBroadcastData::GetRatingLockState, true),
                  Entries({{"functionname", "GetRatingLockState"}, {"handleID", "256"}}),
                  {{"lockState", "0", Decoding::Stoi}}, "0", "1"),
        NumberRow(Getter(&IBroadcastData::FlagServiceLocked, true),
                  Entries({{"functionname", "FlagServiceLocked"}, {"handleID", "256"}}),
                  {{"outServiceLocked", "0", Decoding::Stoi}}, "0", "1"),
    };
}

std::vector<Row> Setters()
{
    return {
        NumberRow(
            [](IBroadcastData& broadcast) {
                return Outcome{broadcast.SetUnlockedInfo(ZV_PARENTAL_UNLOCKED_ALL), ""};
            },
            Entries({{"functionname", "SetUnlockedInfo"}, {"handleID", "256"}, {"ratingInfo", "3"}}), {}, "",
            ""),
        NumberRow(
            [](IBroadcastData& broadcast) {
                return Outcome{broadcast.UnMuteByRatingPin(), ""};
            },
            Entries({{"functionname", "UnMuteByRatingPin"}, {"handleID", "256"}}), {}, "", ""),
        NumberRow(
            [](IBroadcastData& broadcast) {
                return Outcome{broadcast.SetUnlockedInfoWhenFactoryMode(true), ""};
            },
            Entries({{"functionname", "SetUnlockedInfoWhenFactoryMode"},
                     {"handleID", "256"},
                     {"lockState", "1"}}),
            {}, "", ""),
    };
}

} // namespace

std::vector<Method<IBroadcastData>> BroadcastDataNumberRows()
{
    std::vector<Row> rows;
    for (std::vector<Row> const& part : {Sizes(), CurrentEntries(), Flags(), Setters()}) {
        rows.insert(rows.end(), part.begin(), part.end());
    }
    return rows;
}

} // namespace zviptv::test
