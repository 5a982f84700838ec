// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/testing/Functions.h>

#include <charconv>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace zviptv::simulated {

/// The expected value of an argument: a bool, a number, a value of an enumeration or a text. Numbers are
/// compared as numbers, everything else letter by letter.
class Value
{
public:
    /// A flag.
    Value(bool value) : m_text(value ? "1" : "0") {}
    /// A text.
    Value(char const* text) : m_text(text) {}
    /// A text.
    Value(std::string text) : m_text(std::move(text)) {}
    /// A number, or a value of an enumeration.
    template <typename T, std::enable_if_t<std::is_integral_v<T> || std::is_enum_v<T>, int> = 0>
    Value(T value) : m_text(std::to_string(static_cast<long long>(value)))
    {
    }

    /// The value as it is sent.
    std::string const& Text() const { return m_text; }

    /// Whether an argument has this value.
    bool Fits(std::string const& text) const
    {
        std::optional<long long> const number = Number(m_text);
        return number ? Number(text) == number : text == m_text;
    }

private:
    static std::optional<long long> Number(std::string const& text)
    {
        long long number = 0;
        auto const [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
        return failure == std::errc() && end == text.data() + text.size() ? std::optional(number)
                                                                          : std::nullopt;
    }

    std::string m_text;
};

/// Arguments by their keys in the protocol.
using Arguments = std::map<std::string, Value>;

/// A request that the service has answered.
struct Request
{
    std::string function;                         ///< its name: "MuteAudio"
    std::map<std::string, std::string> arguments; ///< as texts; flags are 0 and 1, enumerations are numbers
    std::string application;                      ///< unique bus name
    std::string endpoint;                         ///< PLAYERCONTROL, BROADCASTDATA, ...
    std::optional<int> result;                    ///< result_internal; nothing without a reply
    std::string fault;                            ///< what a fault did to the answer; otherwise empty
    double seconds = 0;                           ///< since the reset

    /// Whether it is a request of this function with these arguments; others may be there, too.
    bool Fits(std::string const& wanted, Arguments const& expected) const
    {
        for (auto const& [key, value] : expected) {
            auto const found = arguments.find(key);
            if (found == arguments.end() || !value.Fits(found->second)) {
                return false;
            }
        }
        return function == wanted;
    }

    /// "MuteAudio onoff=1"
    std::string Text() const
    {
        std::string text = function;
        for (auto const& [key, value] : arguments) {
            text += " " + key + "=" + value;
        }
        return text;
    }

    /// "done", "refused" or "no answer", and the fault.
    std::string Answer() const
    {
        std::string const words = !result ? "no answer" : *result == 0 ? "refused" : "done";
        return fault.empty() ? words : words + " (fault: " + fault + ")";
    }
};

/// "MuteAudio onoff=1" @throws std::invalid_argument if the protocol has no such function or argument
inline std::string CheckedText(std::string const& function, Arguments const& expected)
{
    std::string text = function;
    std::string const keys = KeysOf(function);
    for (auto const& [key, value] : expected) {
        if ((" " + keys + " ").find(" " + key + " ") == std::string::npos) {
            throw std::invalid_argument(function + " has no argument '" + key + "'; " +
                                        (keys.empty() ? "it has none" : "use " + keys));
        }
        text += " " + key + "=" + value.Text();
    }
    return text;
}

} // namespace zviptv::simulated
