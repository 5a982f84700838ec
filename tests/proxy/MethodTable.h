// SPDX-License-Identifier: MIT
#pragma once

#include "ProxyTest.h"

#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace zviptv::test {

inline std::string HexOf(std::string const& bytes)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string hex;
    for (char const byte : bytes) {
        hex += digits[static_cast<unsigned char>(byte) >> 4U];
        hex += digits[static_cast<unsigned char>(byte) & 15U];
    }
    return hex;
}

/// Numbers and enumerations in decimal, texts as they are, records in hexadecimal.
template <typename Value>
std::string Show(Value const& value)
{
    if constexpr (std::is_same_v<Value, char>) {
        return std::string(1, value);
    } else if constexpr (std::is_arithmetic_v<Value>) {
        return std::to_string(value);
    } else if constexpr (std::is_enum_v<Value>) {
        return std::to_string(static_cast<std::underlying_type_t<Value>>(value));
    } else if constexpr (std::is_same_v<Value, std::string>) {
        return value;
    } else {
        return HexOf(BytesOf(value));
    }
}

/// "a, b, c"
template <typename... Values>
std::string ShowAll(Values const&... values)
{
    std::string shown;
    ((shown += (shown.empty() ? "" : ", ") + Show(values)), ...);
    return shown;
}

/// A record of bytes 0xee, so that an untouched one shows.
template <typename Record>
Record Untouched()
{
    Record record;
    std::memset(&record, 0xee, sizeof(record));
    return record;
}

/// The outcome of a call: its result and its out-parameters.
struct Outcome
{
    bool result;
    std::string outputs;
};

/// Calls a getter without arguments. `outputs` are the start values of its out-parameters.
template <typename Interface, typename... Outputs>
std::function<Outcome(Interface&)> Getter(bool (Interface::*method)(Outputs&...), Outputs... outputs)
{
    return [method, values = std::make_tuple(outputs...)](Interface& object) {
        return std::apply(
            [&](auto... out) {
                bool const result = (object.*method)(out...);
                return Outcome{result, ShowAll(out...)};
            },
            values);
    };
}

enum class Decoding
{
    Text,
    Record,
    Stoi,
    Stoul,
    Stoull
};

struct ReplyValue
{
    std::string key;
    std::string value;
    Decoding decoding;
};

inline char const* NameOf(Decoding decoding)
{
    switch (decoding) {
    case Decoding::Stoul:
        return "stoul";
    case Decoding::Stoull:
        return "stoull";
    default:
        return "stoi";
    }
}

inline bool IsNumber(ReplyValue const& value)
{
    return value.decoding != Decoding::Text && value.decoding != Decoding::Record;
}

/// One row of a proxy's table.
template <typename Interface>
struct Method
{
    /// Name of the row.
    std::string name;
    /// The C++ method, as the log names it.
    std::string function;
    std::function<Outcome(Interface&)> call;
    /// The whole request.
    WireEntries request;
    /// The service's answer without its result.
    std::vector<ReplyValue> reply;
    /// The out-parameters after that answer.
    std::string decoded;
    /// The out-parameters after a failed exchange.
    std::string start;
    /// A line with the result ends the call.
    bool logsResult = false;
};

template <typename Interface>
void PrintTo(Method<Interface> const& method, std::ostream* out)
{
    *out << method.name;
}

template <typename Interface>
bool HasNumbers(Method<Interface> const& method)
{
    for (ReplyValue const& value : method.reply) {
        if (IsNumber(value)) {
            return true;
        }
    }
    return false;
}

template <typename Interface>
bool HasRecords(Method<Interface> const& method)
{
    for (ReplyValue const& value : method.reply) {
        if (value.decoding == Decoding::Record) {
            return true;
        }
    }
    return false;
}

/// The rows for which `wanted` returns true.
template <typename Interface>
std::vector<Method<Interface>> Select(std::vector<Method<Interface>> const& methods,
                                      bool (*wanted)(Method<Interface> const&))
{
    std::vector<Method<Interface>> selected;
    for (Method<Interface> const& method : methods) {
        if (wanted(method)) {
            selected.push_back(method);
        }
    }
    return selected;
}

/// "out_of_range: stoi" and the like; "none" when nothing is thrown.
template <typename Work>
std::string FailureOf(Work const& work)
{
    try {
        work();
    } catch (std::invalid_argument const& failure) {
        return std::string("invalid_argument: ") + failure.what();
    } catch (std::out_of_range const& failure) {
        return std::string("out_of_range: ") + failure.what();
    } catch (std::length_error const& failure) {
        return std::string("length_error: ") + failure.what();
    }
    return "none";
}

} // namespace zviptv::test
