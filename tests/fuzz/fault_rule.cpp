// SPDX-License-Identifier: MIT
#include "Fuzz.h"
#include "endpoints/Faults.h"

#include <stdexcept>

// Any text as a fault, and any messages for it to meet.

using namespace zviptv::sim;
using namespace zviptv::fuzz;

namespace {

constexpr char const* Functions[] = {"MuteAudio", "requestPESCB", "PESCB", "CaptionCB", "Announcement", "*"};
constexpr FaultRule::Target Targets[] = {FaultRule::Target::Answer, FaultRule::Target::Push,
                                         FaultRule::Target::Announcement};

/// The text of a fault parses to the same text. The error for an invalid text quotes it, and nothing changes.
bool Add(Faults& faults, std::string const& text)
{
    std::size_t const count = faults.List().size();
    try {
        std::string const normal = faults.Add(text);
        Require(FaultRule::Parse(normal).Text() == normal, "a normalised text stays as it is");
        return true;
    } catch (std::invalid_argument const& failure) {
        Require(std::string(failure.what()).rfind("cannot use the fault '" + text + "': ", 0) == 0,
                "the message quotes the refused text");
        Require(faults.List().size() == count, "nothing is half applied");
        return false;
    }
}

/// How many messages a fault may still meet.
std::uint64_t Left(Faults const& faults)
{
    auto const list = faults.List();
    return list.empty() ? 0 : list.front().left.value_or(UINT64_MAX);
}

/// A message, and the time until the next one.
struct Step
{
    FaultRule::Target target;
    char const* function;
    bool followsHeld;
    std::chrono::milliseconds pause;
};

Step ConsumeStep(FuzzedDataProvider& input)
{
    return {input.PickValueInArray(Targets), input.PickValueInArray(Functions), input.ConsumeBool(),
            std::chrono::milliseconds(input.ConsumeIntegral<std::uint8_t>()) * 100};
}

void CheckMessage(Faults& faults, Step const& step)
{
    CMessageBuffer message;
    message.AddValue("result_internal", "1");
    message.AddValue("dbusname", ":1.7");
    std::uint64_t const left = Left(faults);
    Damage const damage =
        faults.To({step.target, step.function, ":1.7", "org.example.player", step.followsHeld});
    bool const isPush = step.target == FaultRule::Target::Push;
    Require(damage.Corrupt(message).Size() <= message.Size(), "nothing is added to a message");
    Require(damage.Delay().count() >= 0 && (damage.Burst() == 0 || damage.Burst() >= 2),
            "a time and a factor");
    Require(!isPush || (!damage.IsError() && damage.TakesEffect()), "a push is no error and takes effect");
    Require(left == UINT64_MAX || Left(faults) == left - (damage.IsNone() ? 0 : 1),
            "a count goes down with each message that is met");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    Faults::Time now{};
    Faults faults([&now] { return now; }, input.ConsumeIntegral<std::uint64_t>());
    std::vector<Step> steps(input.ConsumeIntegralInRange<std::size_t>(0, 20));
    for (Step& step : steps) {
        step = ConsumeStep(input);
    }
    // An argument ends at a zero byte. NOLINTNEXTLINE(readability-redundant-string-cstr)
    std::string const text = input.ConsumeRemainingBytesAsString().c_str();
    if (!Add(faults, text)) {
        return 0;
    }
    for (Step const& step : steps) {
        if (!faults.List().empty()) {
            CheckMessage(faults, step);
        }
        now += step.pause;
    }
    bool const isThere = !faults.List().empty();
    Require(faults.Remove(text) || !isThere, "a fault is removed by its text");
    Require(faults.List().empty(), "and is gone");
    return 0;
}
