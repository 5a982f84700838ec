// SPDX-License-Identifier: MIT
#pragma once

#include "verbs/Arguments.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace zviptv::verbs {

// The control interface of the simulator on the bus.
constexpr char BusName[] = "org.corvel.zviptvapi.Simulator";
constexpr char ObjectPath[] = "/org/corvel/zviptvapi/Simulator";
constexpr char Interface[] = "org.corvel.zviptvapi.Simulator1";

/// "--count N" in words, the entry "count" of the method's last argument on D-Bus.
struct Option
{
    char const* name;
    Form form;
    char const* help;
};

/// An action on the television: words for people, a method on D-Bus.
struct Verb
{
    char const* words; ///< "fault add"
    char const* method;
    std::vector<Form> arguments;
    std::vector<Option> options; ///< if there are any, the method's last argument is an a{sv}
    char const* help;
};

/// All verbs. This is their only list: the D-Bus methods, zviptvctl, its help and its completion come from
/// it.
std::vector<Verb> const& Verbs();

/// {"fault", "add"}
std::vector<std::string> WordsOf(Verb const& verb);

/// "fault add METHOD=FAULT [--count N] [--for SECONDS]"
std::string Synopsis(Verb const& verb);

/// A call of a method, and its arguments: a tuple.
struct Command
{
    Verb const* verb;
    Owned<GVariant> parameters;
    std::vector<std::size_t> arguments; ///< positions of the words that are arguments
};

/// An error line for the user, with the accepted words.
class VerbError : public std::invalid_argument
{
public:
    VerbError(std::string const& text, std::size_t word) : std::invalid_argument(text), m_word(word) {}
    /// The position of the wrong word; the number of words if one is missing.
    std::size_t Word() const { return m_word; }

private:
    std::size_t m_word;
};

/// Reads the words of a verb and its arguments. Options may stand anywhere after the verb.
/// @throws VerbError
Command Parse(std::vector<std::string> const& words);

/// Checks the arguments of a method, whose types are those of the interface.
/// @throws std::invalid_argument like Parse()
void Check(std::string const& method, GVariant* parameters);

} // namespace zviptv::verbs
