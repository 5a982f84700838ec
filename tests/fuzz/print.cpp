// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include "commands/PacketLine.h"
#include "common/PrintableText.h"
#include "output/Answer.h"
#include "output/Table.h"
#include "output/TrackText.h"
#include "output/Words.h"

#include <algorithm>
#include <cstring>
#include <sstream>

// The output of the command line for values of a service: records, texts and packets with any bytes.

using namespace zviptv;
using namespace zviptv::ctl;
using namespace zviptv::fuzz;

namespace {

/// Lines of text; at its end a line break.
void CheckText(std::string const& text)
{
    Require(IsUtf8(text), "text is UTF-8");
    Require(!text.empty() && text.back() == '\n', "text ends with its line");
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        line.erase(std::remove(line.begin(), line.end(), '\t'), line.end());
        Require(!HasControls(line) && !HasLateControls(line), "a line has no control characters but tabs");
    }
}

void CheckPrinted(Answer const& answer)
{
    std::ostringstream text;
    Print(text, answer, false);
    CheckText(text.str());
    std::ostringstream json;
    Print(json, answer, true);
    std::string line = json.str();
    Require(!line.empty() && line.back() == '\n', "JSON is a line");
    line.pop_back();
    Json::Value value;
    Require(ParseJsonLine(line, value) && value["result"].isBool(), "an object with a result");
    Require(!HasControls(line) && !HasLateControls(line), "JSON has no control characters");
}

template <typename Record>
Record Consume(FuzzedDataProvider& input)
{
    Record record{};
    std::string const bytes = input.ConsumeBytesAsString(sizeof(Record));
    std::memcpy(&record, bytes.data(), bytes.size());
    return record;
}

template <typename... Records>
void CheckRecords(FuzzedDataProvider& input)
{
    Answer answer;
    (answer.Add("record", Consume<Records>(input)), ...);
    auto const count = input.ConsumeIntegralInRange<std::size_t>(0, 5);
    answer.Add("ratings", std::vector<ZVRatingInfo>(count, Consume<ZVRatingInfo>(input)));
    answer.Add("language", static_cast<EZVLanguageCode>(input.ConsumeIntegral<std::int32_t>()));
    answer.Add("state", static_cast<EZVSourceState>(input.ConsumeIntegral<std::int32_t>()));
    answer.Add("code", input.ConsumeIntegral<char>());
    answer.Add("text", input.ConsumeRandomLengthString());
    CheckPrinted(answer);
}

void CheckPacket(FuzzedDataProvider& input)
{
    auto const type = input.ConsumeIntegral<std::int32_t>();
    auto const pid = input.ConsumeIntegral<std::uint16_t>();
    auto const pts = input.ConsumeIntegral<std::uint32_t>();
    bool const isPes = input.ConsumeBool();
    std::vector<std::uint8_t> const data = Rest(input);
    Packet const packet{type, isPes ? std::optional(pid) : std::nullopt,
                        isPes ? std::optional(pts) : std::nullopt, data};
    CheckText(PacketLine(packet, false));
    std::string line = PacketLine(packet, true);
    line.pop_back();
    Json::Value value;
    Require(ParseJsonLine(line, value) && value["size"].asUInt64() == data.size(), "a packet's JSON");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    if (input.ConsumeBool()) {
        CheckPacket(input);
        return 0;
    }
    ZVAudio const audio = Consume<ZVAudio>(input);
    Require(IsUtf8(AudioText(audio)) && IsJsonLine(Compact(KnownJson(audio))), "a track's line");
    Require(IsJsonLine(Compact(KnownJson(Consume<ZVResolution>(input)))), "a picture's JSON");
    CheckRecords<ZVAudio, ZVTTX, ZVHybridSBT, ZVISDBText, ZVDualSound, ZVResolution, IPGProgramId>(input);
    std::string const text = input.ConsumeRemainingBytesAsString();
    CheckText(PrintableText(text) + "\n");
    CheckText(EscapeText(text) + "\n");
    return 0;
}
