// SPDX-License-Identifier: MIT
#include "Faults.h"

#include "RequestCheck.h"

#include <zviptv/Protocol.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace zviptv::sim {

namespace {

constexpr char All[] = "*";
constexpr char Usage[] =
    "METHOD=delay:MS, drop, error, result:N, missing:KEY, garbage:KEY or short:KEY, METHOD a "
    "method's name or *";

struct Word
{
    char const* text;
    Fault::Kind kind;
    bool takesNumber;
    bool takesKey;
};

constexpr Word Words[] = {
    {"delay", Fault::Kind::Delay, true, false},     {"drop", Fault::Kind::Drop, false, false},
    {"error", Fault::Kind::Error, false, false},    {"result", Fault::Kind::Result, true, false},
    {"missing", Fault::Kind::Missing, false, true}, {"garbage", Fault::Kind::Garbage, false, true},
    {"short", Fault::Kind::Short, false, true},
};

[[noreturn]] void Refuse(std::string const& text)
{
    throw std::invalid_argument("'" + text + "' is no fault: use " + Usage);
}

std::string RequireFunction(std::string const& function, std::string const& text)
{
    std::vector<std::string> const functions = DescribedFunctions();
    if (function == All || std::find(functions.begin(), functions.end(), function) != functions.end()) {
        return function;
    }
    std::string known;
    for (std::string const& one : functions) {
        known += (known.empty() ? "" : ", ") + one;
    }
    throw std::invalid_argument("'" + text + "' is no fault: '" + function +
                                "' is no method of the service: use * for all, or one of " + known);
}

std::string Spoilt(Fault const& fault, std::string const& value)
{
    switch (fault.kind) {
    case Fault::Kind::Result:
        return std::to_string(fault.result);
    case Fault::Kind::Garbage:
        return "garbage";
    case Fault::Kind::Short:
        return value.substr(0, value.size() / 2);
    default:
        return value;
    }
}

} // namespace

void Faults::Add(std::string const& text, std::optional<unsigned> count, std::optional<Time> until)
{
    std::size_t const equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        Refuse(text);
    }
    std::string const action = text.substr(equals + 1);
    std::size_t const colon = action.find(':');
    std::string const name = action.substr(0, colon);
    std::string const argument = colon == std::string::npos ? "" : action.substr(colon + 1);
    auto const* const word = std::find_if(std::begin(Words), std::end(Words),
                                          [&name](Word const& candidate) { return name == candidate.text; });
    if (word == std::end(Words) || argument.empty() == (word->takesNumber || word->takesKey)) {
        Refuse(text);
    }
    Fault fault;
    fault.function = RequireFunction(text.substr(0, equals), text);
    fault.kind = word->kind;
    fault.key = word->kind == Fault::Kind::Result ? protocol::key::Result : argument;
    if (word->takesNumber) {
        int number = 0;
        auto const [end, failure] =
            std::from_chars(argument.data(), argument.data() + argument.size(), number);
        bool const isNumber = failure == std::errc() && end == argument.data() + argument.size();
        if (!isNumber || (word->kind == Fault::Kind::Delay && number < 0)) {
            Refuse(text);
        }
        fault.result = number;
        fault.delay = std::chrono::milliseconds(number);
    }
    fault.text = text;
    fault.left = count;
    fault.until = until;
    m_faults.push_back(fault);
}

bool Faults::Remove(std::string const& text)
{
    auto const removed = std::remove_if(m_faults.begin(), m_faults.end(),
                                        [&text](Fault const& fault) { return fault.text == text; });
    bool const isKnown = removed != m_faults.end();
    m_faults.erase(removed, m_faults.end());
    return isKnown;
}

std::vector<Fault> const& Faults::At(Time now)
{
    m_faults.erase(std::remove_if(m_faults.begin(), m_faults.end(),
                                  [now](Fault const& fault) {
                                      return fault.left == 0U || (fault.until && *fault.until <= now);
                                  }),
                   m_faults.end());
    return m_faults;
}

Damage Faults::To(std::string const& function, Time now)
{
    At(now);
    Damage damage;
    for (std::string const& wanted : {std::string(All), function}) {
        for (Fault& fault : m_faults) {
            if (fault.function == wanted) {
                damage.Add(fault);
                fault.left = fault.left ? std::optional(*fault.left - 1) : std::nullopt;
            }
        }
    }
    return damage;
}

void Damage::Add(Fault const& fault)
{
    if (fault.kind == Fault::Kind::Delay) {
        m_delay = fault.delay;
    } else if (fault.kind == Fault::Kind::Drop || fault.kind == Fault::Kind::Error) {
        m_whole = fault.kind == Fault::Kind::Drop ? Whole::Drop : Whole::Error;
        m_values.clear();
    } else {
        m_whole = Whole::Reply;
        m_values[fault.key] = fault;
    }
}

CMessageBuffer Damage::Spoil(CMessageBuffer const& reply) const
{
    CMessageBuffer spoiled;
    for (int i = 0; i < reply.Size(); ++i) {
        std::string const key = reply.GetKey(i);
        std::string value = reply.GetValue(i);
        auto const fault = m_values.find(key);
        if (fault != m_values.end()) {
            if (fault->second.kind == Fault::Kind::Missing) {
                continue;
            }
            value = Spoilt(fault->second, value);
        }
        spoiled.AddValue(key.c_str(), static_cast<int>(value.size()), value.data());
    }
    return spoiled;
}

} // namespace zviptv::sim
