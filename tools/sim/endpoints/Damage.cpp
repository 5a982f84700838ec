// SPDX-License-Identifier: MIT
#include "Damage.h"

#include <algorithm>
#include <iterator>
#include <tuple>

namespace zviptv::sim {

namespace {

using Kind = FaultRule::Kind;

/// The bus never assigns this name: its unique names begin with ":1.".
constexpr char DeadName[] = ":0.1";

std::string Corrupted(FaultRule const& rule, std::string const& value)
{
    switch (rule.kind) {
    case Kind::Result:
        return std::to_string(rule.number);
    case Kind::Garbage:
        return "garbage";
    case Kind::Short:
        return value.substr(0, value.size() / 2);
    case Kind::Empty:
        return {};
    case Kind::Dead:
        return DeadName;
    default:
        return value;
    }
}

} // namespace

bool Damage::Place::operator<(Place const& other) const
{
    return std::tie(kind, key) < std::tie(other.kind, other.key);
}

Damage::Place Damage::PlaceOf(FaultRule const& rule)
{
    bool const isWhole = rule.kind == Kind::Drop || rule.kind == Kind::Error;
    return {isWhole ? Kind::Drop : rule.key.empty() ? rule.kind : Kind::Missing, rule.key};
}

void Damage::Add(FaultRule const& rule, std::size_t number)
{
    Place const place = PlaceOf(rule);
    if (place.kind == Kind::Missing) {
        m_faults.erase(Place{Kind::Drop, ""});
    } else if (place.kind == Kind::Drop) {
        for (auto fault = m_faults.begin(); fault != m_faults.end();) {
            fault = fault->first.kind == Kind::Missing ? m_faults.erase(fault) : std::next(fault);
        }
    }
    m_faults.insert_or_assign(place, Fault{rule, number});
}

std::vector<std::size_t> Damage::InForce() const
{
    std::vector<std::size_t> numbers;
    for (auto const& [place, fault] : m_faults) {
        numbers.push_back(fault.number);
    }
    return numbers;
}

bool Damage::TakesEffect() const
{
    return std::all_of(m_faults.begin(), m_faults.end(),
                       [](auto const& fault) { return fault.second.rule.takesEffect; });
}

bool Damage::Has(Kind kind) const
{
    return std::any_of(m_faults.begin(), m_faults.end(),
                       [kind](auto const& fault) { return fault.second.rule.kind == kind; });
}

int Damage::NumberOf(Kind kind) const
{
    auto const fault = m_faults.find(Place{kind, ""});
    return fault == m_faults.end() ? 0 : fault->second.rule.number;
}

CMessageBuffer Damage::Corrupt(CMessageBuffer const& message) const
{
    CMessageBuffer spoiled;
    for (int i = 0; i < message.Size(); ++i) {
        std::string const key = message.GetKey(i);
        std::string value = message.GetValue(i);
        auto const fault = m_faults.find(Place{Kind::Missing, key});
        if (fault != m_faults.end()) {
            if (fault->second.rule.kind == Kind::Missing) {
                continue;
            }
            value = Corrupted(fault->second.rule, value);
        }
        spoiled.AddValue(key.c_str(), static_cast<int>(value.size()), value.data());
    }
    return spoiled;
}

} // namespace zviptv::sim
