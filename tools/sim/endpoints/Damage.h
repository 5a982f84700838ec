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

/// The combined effect of several faults on one message.
class Damage
{
public:
    /// Adds a fault, which replaces the faults that it contradicts. `number` identifies it in InForce().
    void Add(FaultRule const& rule, std::size_t number);

    /// The numbers of the faults that no other fault has replaced.
    std::vector<std::size_t> InForce() const;

    bool IsNone() const { return m_faults.empty(); }

    /// The delay of the message; zero to send it at once.
    std::chrono::milliseconds Delay() const
    {
        return std::chrono::milliseconds(NumberOf(FaultRule::Kind::Delay));
    }
    /// The factor to the rate at which held messages are sent; zero if they are not held.
    int Burst() const { return NumberOf(FaultRule::Kind::Burst); }

    bool IsDrop() const { return Has(FaultRule::Kind::Drop); }
    bool IsError() const { return Has(FaultRule::Kind::Error); }
    bool IsDuplicate() const { return Has(FaultRule::Kind::Duplicate); }
    bool IsReorder() const { return Has(FaultRule::Kind::Reorder); }

    /// False if the request must not be carried out.
    bool TakesEffect() const;

    /// The message after the faults.
    CMessageBuffer Corrupt(CMessageBuffer const& message) const;

private:
    /// Of several faults in the same place, the last one counts.
    struct Place
    {
        FaultRule::Kind kind; ///< Drop for the whole message, Missing for a value
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
