// SPDX-License-Identifier: MIT
#include "GuideChecks.h"
#include "guide/ProgrammeGuide.h"

// Questions to the programme guide with any numbers and any text for a programme's key.

using namespace zviptv::sim;
using namespace zviptv::fuzz;

namespace {

ProgrammeGuide const& SampleGuide()
{
    static ProgrammeGuide const* const sample = [] {
        auto* const guide = new ProgrammeGuide;
        guide->Load(ZVIPTV_SAMPLE_GUIDE);
        Require(guide->Current()->All().count > 0, "the sample has programmes");
        CheckGuide(*guide->Current());
        return guide;
    }();
    return *sample;
}

void CheckAnswer(std::string const& answer)
{
    Require(answer.empty() || IsJsonLine(answer), "an answer is nothing or JSON");
}

/// The id that a programme has, or any number.
std::uint64_t ConsumeService(FuzzedDataProvider& input, Guide const& guide)
{
    auto const& services = guide.Services();
    std::size_t const number = input.ConsumeIntegralInRange<std::size_t>(0, services.size());
    return number < services.size() ? services[number].id : input.ConsumeIntegral<std::uint64_t>();
}

/// As the library writes it.
std::string KeyText(std::uint64_t service, std::uint32_t event, std::uint32_t start, std::uint32_t duration)
{
    Json::Value key;
    key["service_id"] = std::to_string(service);
    key["event_id"] = event;
    key["start_time"] = start;
    key["duration"] = duration;
    return key.toStyledString();
}

void CheckKey(std::uint64_t service, std::uint32_t event, std::uint32_t start, std::uint32_t duration)
{
    auto const key = ParseProgrammeKey(KeyText(service, event & 0xFFFF, start, duration));
    Require(key && key->serviceId == service && key->eventId == (event & 0xFFFF) && key->startTime == start,
            "a key is read as it was written");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    ProgrammeGuide const& sample = SampleGuide();
    FuzzedDataProvider input(data, size);
    std::uint64_t const service = ConsumeService(input, *sample.Current());
    auto const event = input.ConsumeIntegral<std::uint32_t>();
    auto const start = input.ConsumeIntegral<std::uint32_t>();
    auto const duration = input.ConsumeIntegral<std::uint32_t>();
    int const step = input.ConsumeIntegralInRange(-2, 2);
    CheckAnswer(sample.Programme(input.ConsumeRemainingBytesAsString(), step));
    CheckKey(service, event, start, duration);
    CheckAnswer(sample.Programme(KeyText(service, event & 0xFFFF, start, duration), step));
    CheckAnswer(sample.Present(service, static_cast<std::int64_t>(start) - 1));
    CheckAnswer(sample.Find(service, event));
    CheckAnswer(sample.Rating(event));
    CheckAnswer(sample.Genre(event));
    CheckAnswer(sample.List(service, start, duration));
    GuideList const list = sample.Select(service, start, duration);
    Require(list.range.first + list.range.count <= sample.Current()->All().count, "a list is of the guide");
    Require(sample.Programme(list, list.range.count).empty(), "a list ends");
    Require(list.range.count == 0 || !sample.Programme(list, event % list.range.count).empty(),
            "and is whole");
    return 0;
}
