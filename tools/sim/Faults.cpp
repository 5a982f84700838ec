#include "Faults.h"

#include <zviptv/Protocol.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace zviptv::sim {

namespace {

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

bool Applies(Fault const& fault, std::string const& function)
{
    return fault.function == "*" || fault.function == function;
}

void AddSpoiled(CMessageBuffer& reply, Fault const* fault, std::string const& key, std::string const& value)
{
    if (fault != nullptr && fault->kind == Fault::Kind::Missing) {
        return;
    }
    std::string sent = value;
    if (fault != nullptr && fault->kind == Fault::Kind::Garbage) {
        sent = "garbage";
    } else if (fault != nullptr && fault->kind == Fault::Kind::Short) {
        sent.resize(sent.size() / 2);
    } else if (fault != nullptr && fault->kind == Fault::Kind::Result) {
        sent = std::to_string(fault->result);
    }
    reply.AddValue(key.c_str(), static_cast<int>(sent.size()), sent.data());
}

} // namespace

void Faults::Add(std::string const& text)
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
    fault.function = text.substr(0, equals);
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
    m_faults.push_back(fault);
}

Fault const* Faults::Find(std::string const& function, Fault::Kind kind) const
{
    auto const found = std::find_if(m_faults.begin(), m_faults.end(), [&](Fault const& fault) {
        return fault.kind == kind && Applies(fault, function);
    });
    return found == m_faults.end() ? nullptr : &*found;
}

std::chrono::milliseconds Faults::Delay(std::string const& function) const
{
    Fault const* const fault = Find(function, Fault::Kind::Delay);
    return fault == nullptr ? std::chrono::milliseconds(0) : fault->delay;
}

CMessageBuffer Faults::Spoil(std::string const& function, CMessageBuffer const& reply) const
{
    CMessageBuffer spoiled;
    for (int i = 0; i < reply.Size(); ++i) {
        std::string const key = reply.GetKey(i);
        auto const fault = std::find_if(m_faults.begin(), m_faults.end(), [&](Fault const& candidate) {
            return Applies(candidate, function) && candidate.key == key;
        });
        AddSpoiled(spoiled, fault == m_faults.end() ? nullptr : &*fault, key, reply.GetValue(i));
    }
    return spoiled;
}

} // namespace zviptv::sim
