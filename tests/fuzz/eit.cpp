// SPDX-License-Identifier: MIT
#include "GuideChecks.h"
#include "Sections.h"

#include "guide/EitGuide.h"
#include "guide/EitReader.h"

// Event information: sections whose check sums are right, whatever they say, and transport packets of any
// kind.

using namespace zviptv;
using namespace zviptv::sim;
using namespace zviptv::fuzz;
namespace test = zviptv::test;

namespace {

void Check(EitEvent const& event)
{
    for (EitText const& text : event.texts) {
        Require(text.language.size() == 3 && IsUtf8(text.language), "a language is three characters");
        for (std::string const& part : {text.title, text.summary, text.description}) {
            Require(IsUtf8(part) && !HasControls(part), "texts are UTF-8 without control characters");
            Require(part.size() <= 4 * EventSections.largest, "texts do not grow without bound");
        }
    }
    for (EitRating const& rating : event.ratings) {
        Require(rating.minimumAge >= 4 && rating.minimumAge <= 18, "an age in years");
    }
    Require(event.runningStatus < 8, "a running status has three bits");
    Require(event.duration.value_or(0) < 100 * 3600, "a duration has two digits of hours");
}

test::Bytes Packets(FuzzedDataProvider& input)
{
    test::Bytes stream = Rest(input);
    CheckSections(stream, EitReader::Pid, EventSections);
    CheckSections(stream, EitReader::Pid, ServiceSections);
    return stream;
}

test::Bytes Sections(FuzzedDataProvider& input)
{
    auto const sections = ConsumeSections(input, {EitReader::Pid}, EventSections.largest);
    test::Bytes stream = StreamOf(sections);
    CheckArrival(sections, stream, EitReader::Pid, EventSections);
    return stream;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    bool const arePackets = input.ConsumeBool();
    test::Bytes const stream = arePackets ? Packets(input) : Sections(input);
    EitReader reader;
    bool changed = false;
    zviptv::test::ForEachPacket(stream,
                                [&](TsPacket const& packet) { changed = reader.Push(packet) || changed; });
    std::vector<EitEvent> const events = reader.Table().Events();
    Require(changed || events.empty(), "new events are reported as a change");
    std::size_t known = 0;
    for (EitEvent const& event : events) {
        Check(event);
        known += event.start ? 1U : 0U;
        EitEvent const* const present = reader.Table().Present(event.serviceId);
        Require(!present || present->serviceId == event.serviceId, "the present event is the service's");
    }
    LoadedGuide const loaded = MakeGuide(reader.Table(), {{"News", 28106}});
    CheckGuide(*loaded.guide);
    Require(loaded.guide->All().count <= known, "no programme is made up");
    return 0;
}
