// SPDX-License-Identifier: MIT
#pragma once

#include "Arguments.h"
#include "Methods.h"
#include "ProtocolTypes.h"
#include "session/Session.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::ctl {

/// One call of a method: takes the arguments of the command line in order, calls the service, and collects
/// the answer.
class Call
{
public:
    Call(Method const& method, Session& session, std::vector<std::string> const& arguments)
        : m_method(method), m_session(session), m_arguments(arguments)
    {
    }

    /// The next argument. @throws Failure that says what was expected
    template <typename Value>
    Value Take()
    {
        std::size_t const index = m_taken++;
        return ParseArgument<Value>(m_arguments.at(index), {m_method.name, m_method.inputs.at(index).name});
    }

    /// The next argument; nullopt if it was left out.
    std::optional<std::string> TakeOptional()
    {
        std::size_t const index = m_taken++;
        return index < m_arguments.size() ? std::optional<std::string>(m_arguments[index]) : std::nullopt;
    }

    /// Calls `ask` with the object of the interface.
    template <typename Interface, typename Function>
    void Ask(Function ask)
    {
        m_answer.result = m_session.Ask(m_method.name, [&] { return ask(m_session.Get<Interface>()); });
        m_answer.text = "result: " + ToText(m_answer.result) + "\n";
    }

    /// Adds the next out-parameter to the answer.
    template <typename Value>
    void Add(Value const& value)
    {
        m_answer.Add(m_method.outputs.at(m_added++).name, value);
    }

    Answer const& Result() const { return m_answer; }

private:
    Method const& m_method;
    Session& m_session;
    std::vector<std::string> const& m_arguments;
    std::size_t m_taken = 0;
    std::size_t m_added = 0;
    Answer m_answer;
};

} // namespace zviptv::ctl
