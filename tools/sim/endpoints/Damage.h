// SPDX-License-Identifier: MIT
#pragma once

#include "FaultRule.h"

#include <zviptv/MessageBuffer.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace zviptv::sim {

/// What several faults together do to one message. Without any it does nothing.
class Damage
{
public:
    /// One more fault, which replaces those that contradict it. `number` identifies it in InForce().
    void Add(FaultRule const& rule, std::size_t number);

    /// The numbers of the faults that no other one has replaced.
    std::vector<std::size_t> InForce() const;

    bool IsNone() const { return m_faults.empty(); }

    /// How late the message comes; zero for at once.
    std::chrono::milliseconds Delay() const
    {
        return std::chrono::milliseconds(NumberOf(FaultRule::Kind::Delay));
    }
    /// Times the rate at which held messages come; zero when they are not held.
    int Burst() const { return NumberOf(FaultRule::Kind::Burst); }

    bool IsDrop() const { return Has(FaultRule::Kind::Drop); }
    bool IsError() const { return Has(FaultRule::Kind::Error); }
    bool IsDuplicate() const { return Has(FaultRule::Kind::Duplicate); }
    bool IsReorder() const { return Has(FaultRule::Kind::Reorder); }

    /// False when the request is not to be carried out.
    bool TakesEffect() const;

    /// What is left of the message.
    CMessageBuffer Spoil(CMessageBuffer const& message) const;

private:
    /// Of faults in the same place the last one counts.
    struct Place
    {
        FaultRule::Kind kind; ///< Drop for the message as a whole, Missing for a value
        std::string key;      ///< of the value
        bool operator<(Place const& other) const;
    };
    struct Fault
    {
        FaultRule rule;
        std::size_t number;
    };

    static Place PlaceOf(FaultRule const& rule);
    bool Has(FaultRule::Kind kind) const;
    int NumberOf(FaultRule::Kind kind) const;

    std::map<Place, Fault> m_faults;
};

} // namespace zviptv::sim
