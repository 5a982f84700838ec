// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Client.h>

#include "Captions.h"
#include "PythonRecords.h"

#include <pybind11/pybind11.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

// Values of the client layer as Python objects, and back. Functions are called with the GIL.

namespace zviptv::python {

namespace py = pybind11;

/// A class of the Python package, by the names of its module and of the class.
py::object Class(char const* module, char const* name);

/// A zviptv.Failure.
py::object ToException(Failure const& failure);
/// Raises it.
[[noreturn]] void Raise(Failure const& failure);

py::object ToPython(bool value);
py::object ToPython(char value); ///< a str of one character
py::object ToPython(std::uint64_t value);
py::object ToPython(std::int64_t value);
py::object ToPython(std::string const& value); ///< what is not UTF-8 becomes U+FFFD
py::object ToPython(Language value);
py::object ToPython(std::chrono::system_clock::time_point value); ///< a datetime in UTC
py::object ToPython(std::chrono::milliseconds value); ///< a timedelta; its largest value for longer times
py::object ToPython(ProgrammeRating const& value);
py::object ToPython(Translation const& value);
py::object ToPython(ProgrammeId const& value);
py::object ToPython(Programme const& value);

template <class Number, class = std::enable_if_t<std::is_integral_v<Number>>>
py::object ToPython(Number value)
{
    return ToPython(
        static_cast<std::conditional_t<std::is_signed_v<Number>, std::int64_t, std::uint64_t>>(value));
}

template <class Value>
py::object ToPython(std::vector<Value> const& values)
{
    py::list list;
    for (Value const& value : values) {
        list.append(ToPython(value));
    }
    return std::move(list);
}

template <class Value>
py::object ToPython(std::optional<Value> const& value)
{
    return value ? ToPython(*value) : py::none();
}

/// The value of a result; raises its failure.
template <class Value>
py::object ToPython(Result<Value> const& result)
{
    if (!result) {
        Raise(result.GetFailure());
    }
    if constexpr (std::is_void_v<Value>) {
        return py::none();
    } else {
        return ToPython(*result);
    }
}

/// A number of seconds, 0 or more, in milliseconds: rounded up, and at most 10^9 s. Raises TypeError or
/// ValueError, with the name of the argument.
std::chrono::milliseconds Milliseconds(py::handle seconds, char const* name);

/// An integer from `least` to `most`. Raises TypeError or ValueError, with the name of the argument.
std::int64_t Integer(py::handle object, char const* name, std::int64_t least, std::int64_t most);
std::uint64_t Unsigned(py::handle object, char const* name);
/// The argument `limit` of a stream: a number of items, 0 for all.
std::size_t Limit(py::handle object);

void FromPython(py::handle object, char const* name, bool& value);
void FromPython(py::handle object, char const* name, std::uint64_t& value);
void FromPython(py::handle object, char const* name, std::string& value);
void FromPython(py::handle object, char const* name, std::chrono::system_clock::time_point& value);
void FromPython(py::handle object, char const* name, std::chrono::seconds& value);
void FromPython(py::handle object, char const* name, ProgrammeId& value);

/// Integers and enumerations of up to 32 bits.
template <class Number, class = std::enable_if_t<std::is_integral_v<Number> || std::is_enum_v<Number>>>
void FromPython(py::handle object, char const* name, Number& value)
{
    using Limits =
        std::numeric_limits<typename std::conditional_t<std::is_enum_v<Number>, std::underlying_type<Number>,
                                                        std::common_type<Number>>::type>;
    value = static_cast<Number>(Integer(object, name, Limits::min(), Limits::max()));
}

/// An argument of a function.
template <class Value>
Value FromPython(py::handle object, char const* name)
{
    Value value{};
    FromPython(object, name, value);
    return value;
}

} // namespace zviptv::python
