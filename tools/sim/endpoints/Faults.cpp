// SPDX-License-Identifier: MIT
#include "Faults.h"

#include <algorithm>
#include <utility>

namespace zviptv::sim {

namespace {

Faults::Time::duration Seconds(double seconds)
{
    return std::chrono::duration_cast<Faults::Time::duration>(std::chrono::duration<double>(seconds));
}

/// A generator that depends only on the seed and the text, not on other faults.
std::mt19937_64 RandomOf(std::uint64_t seed, std::string const& text)
{
    std::vector<std::uint32_t> values(text.begin(), text.end());
    values.push_back(static_cast<std::uint32_t>(seed));
    values.push_back(static_cast<std::uint32_t>(seed >> 32U));
    std::seed_seq sequence(values.begin(), values.end());
    return std::mt19937_64(sequence);
}

/// A number from 0 to below 1, made from the 53 bits of a double.
double Draw(std::mt19937_64& random)
{
    return static_cast<double>(random() >> 11U) * 0x1p-53;
}

} // namespace

Faults::Faults(Clock clock, std::uint64_t seed, std::function<void()> onRandom)
    : m_clock(std::move(clock)), m_seed(seed), m_onRandom(std::move(onRandom))
{
}

std::string Faults::Add(std::string const& text)
{
    return Add(FaultRule::Parse(text));
}

std::string Faults::Add(FaultRule const& rule)
{
    std::string text = rule.Text();
    Insert(rule, Progress{text, m_clock()});
    return text;
}

void Faults::Resume(Progress const& progress)
{
    Insert(FaultRule::Parse(progress.text), progress);
}

void Faults::Insert(FaultRule const& rule, Progress progress)
{
    std::mt19937_64 random = RandomOf(m_seed, progress.text);
    random.discard(progress.drawn);
    m_faults.push_back(Fault{rule, std::move(progress), random});
    if (rule.probability < 1 && !std::exchange(m_isRandom, true)) {
        m_onRandom();
    }
}

bool Faults::Remove(std::string const& text)
{
    FaultRule const rule = FaultRule::Parse(text);
    bool const isName = rule.Text() == rule.Name();
    auto const removed = std::remove_if(m_faults.begin(), m_faults.end(), [&](Fault const& fault) {
        return isName ? fault.rule.Name() == rule.Name() : fault.progress.text == rule.Text();
    });
    bool const isKnown = removed != m_faults.end();
    m_faults.erase(removed, m_faults.end());
    return isKnown;
}

std::vector<Faults::State> Faults::List() const
{
    std::vector<State> list;
    Time const now = m_clock();
    for (Fault const& fault : m_faults) {
        if (!HasEnded(fault, now)) {
            std::optional<std::uint32_t> const& count = fault.rule.count;
            list.push_back(
                State{fault.progress,
                      count ? std::optional<std::uint64_t>(*count - fault.progress.met) : std::nullopt,
                      BeginOf(fault), EndOf(fault)});
        }
    }
    return list;
}

Damage Faults::To(Message const& message)
{
    Damage damage;
    if (m_faults.empty()) {
        return damage;
    }
    Time const now = m_clock();
    m_faults.erase(std::remove_if(m_faults.begin(), m_faults.end(),
                                  [now](Fault const& fault) { return HasEnded(fault, now); }),
                   m_faults.end());
    for (bool const ofAll : {true, false}) {
        for (std::size_t i = 0; i < m_faults.size(); ++i) {
            std::string const& function = m_faults[i].rule.function;
            bool const isTurn = (function == FaultRule::AllRequests) == ofAll;
            if (isTurn && (ofAll || function == message.function) && AppliesTo(m_faults[i], message, now)) {
                damage.Add(m_faults[i].rule, i);
            }
        }
    }
    for (std::size_t const number : damage.InForce()) {
        ++m_faults[number].progress.met;
    }
    return damage;
}

Faults::Time Faults::BeginOf(Fault const& fault)
{
    return fault.progress.since + Seconds(fault.rule.from);
}

std::optional<Faults::Time> Faults::EndOf(Fault const& fault)
{
    std::optional<double> const& duration = fault.rule.duration;
    return duration ? std::optional(BeginOf(fault) + Seconds(*duration)) : std::nullopt;
}

bool Faults::HasEnded(Fault const& fault, Time now)
{
    std::optional<Time> const end = EndOf(fault);
    return (end && now >= *end) || (fault.rule.count && fault.progress.met >= *fault.rule.count);
}

/// Whether the fault applies, also by its probability, for each message to which it can apply.
bool Faults::AppliesTo(Fault& fault, Message const& message, Time now)
{
    FaultRule const& rule = fault.rule;
    bool const isMeant = rule.application.empty() || rule.application == message.application ||
                         rule.application == message.applicationId;
    bool const isHeldUp = rule.kind == FaultRule::Kind::Reorder && message.followsHeld;
    if (rule.target != message.target || !isMeant || isHeldUp || now < BeginOf(fault)) {
        return false;
    }
    if (rule.probability >= 1) {
        return true;
    }
    ++fault.progress.drawn;
    return Draw(fault.random) < rule.probability;
}

} // namespace zviptv::sim
