// SPDX-License-Identifier: MIT
#include "Convert.h"

#include <algorithm>
#include <cmath>

namespace zviptv::python {

namespace {

char const* const ProgrammeModule = "zviptv._programme";

[[noreturn]] void RaiseType(py::handle object, char const* name, char const* expected)
{
    throw py::type_error(std::string(name) + ": expected " + expected + ", got " +
                         Py_TYPE(object.ptr())->tp_name);
}

py::object Delta(py::object const& value, char const* unit)
{
    return Class("datetime", "timedelta")(py::arg(unit) = value);
}

/// Whole seconds of a timedelta.
std::int64_t Seconds(py::handle delta)
{
    return delta.attr("__floordiv__")(Delta(py::int_(1), "seconds")).cast<std::int64_t>();
}

} // namespace

py::object Class(char const* module, char const* name)
{
    return py::module_::import(module).attr(name);
}

py::object ToException(Failure const& failure)
{
    py::object const kind = Class("zviptv._failure", "FailureKind")(py::str(ToString(failure.kind)));
    return Class("zviptv._failure", "Failure")(kind, ToPython(failure.function), ToPython(failure.key),
                                               ToPython(failure.errorName), ToPython(failure.message));
}

void Raise(Failure const& failure)
{
    py::object const exception = ToException(failure);
    PyErr_SetObject(py::type::of(exception).ptr(), exception.ptr());
    throw py::error_already_set();
}

py::object ToPython(bool value)
{
    return py::bool_(value);
}

py::object ToPython(char value)
{
    return py::reinterpret_steal<py::object>(PyUnicode_DecodeLatin1(&value, 1, nullptr));
}

py::object ToPython(std::uint64_t value)
{
    return py::int_(value);
}

py::object ToPython(std::int64_t value)
{
    return py::int_(value);
}

py::object ToPython(std::string const& value)
{
    PyObject* const text =
        PyUnicode_DecodeUTF8(value.data(), static_cast<Py_ssize_t>(value.size()), "replace");
    if (text == nullptr) {
        throw py::error_already_set();
    }
    return py::reinterpret_steal<py::object>(text);
}

py::object ToPython(Language value)
{
    return ToPython(ToString(value));
}

py::object ToPython(std::chrono::system_clock::time_point value)
{
    auto const seconds = std::chrono::duration_cast<std::chrono::seconds>(value.time_since_epoch());
    return Class(ProgrammeModule, "EPOCH") + Delta(py::int_(seconds.count()), "seconds");
}

py::object ToPython(std::chrono::milliseconds value)
{
    std::chrono::milliseconds const most(86399999999999999); // of a timedelta
    return Delta(py::int_(std::min(value, most).count()), "milliseconds");
}

py::object ToPython(ProgrammeRating const& value)
{
    return Class(ProgrammeModule, "ProgrammeRating")(ToPython(value.system), ToPython(value.value),
                                                     ToPython(value.minimumAge));
}

py::object ToPython(Translation const& value)
{
    return Class(ProgrammeModule, "Translation")(ToPython(value.language), ToPython(value.title),
                                                 ToPython(value.subtitle), ToPython(value.description),
                                                 py::tuple(ToPython(value.genres)));
}

py::object ToPython(ProgrammeId const& value)
{
    return Class(ProgrammeModule, "ProgrammeId")(value.serviceId, value.eventId, ToPython(value.start),
                                                 ToPython(value.duration));
}

py::object ToPython(Programme const& value)
{
    return Class(ProgrammeModule, "Programme")(
        value.serviceId, value.eventId, ToPython(value.start), ToPython(value.duration),
        ToPython(value.channel), ToPython(value.title), ToPython(value.subtitle), ToPython(value.description),
        ToPython(value.language), ToPython(value.episode), ToPython(value.icon),
        py::tuple(ToPython(value.genres)), ToPython(value.rating), py::tuple(ToPython(value.translations)));
}

std::chrono::milliseconds Milliseconds(py::handle seconds, char const* name)
{
    double const longest = 1e9;
    if (PyNumber_Check(seconds.ptr()) == 0) {
        RaiseType(seconds, name, "a number of seconds");
    }
    double time = PyFloat_AsDouble(seconds.ptr());
    if (PyErr_Occurred() != nullptr) {
        py::error_already_set const error;
        if (!error.matches(PyExc_OverflowError)) {
            throw error;
        }
        time = -1;
    }
    if (!(time >= 0)) { // NaN is in no range
        throw py::value_error(std::string(name) + ": " + std::string(py::str(seconds)) +
                              " is not a valid number of seconds; use 0 or more");
    }
    return std::chrono::milliseconds(std::llround(std::ceil(std::min(time, longest) * 1000)));
}

std::int64_t Integer(py::handle object, char const* name, std::int64_t least, std::int64_t most)
{
    if (PyIndex_Check(object.ptr()) == 0) {
        RaiseType(object, name, "an int");
    }
    auto const index = py::reinterpret_steal<py::object>(PyNumber_Index(object.ptr()));
    int overflow = 0;
    long long const value = index ? PyLong_AsLongLongAndOverflow(index.ptr(), &overflow) : -1;
    if (PyErr_Occurred() != nullptr) {
        throw py::error_already_set();
    }
    if (overflow != 0 || value < least || value > most) {
        throw py::value_error(std::string(name) + ": " + std::string(py::str(index)) +
                              " is not in the range " + std::to_string(least) + " to " +
                              std::to_string(most));
    }
    return value;
}

std::uint64_t Unsigned(py::handle object, char const* name)
{
    if (PyIndex_Check(object.ptr()) == 0) {
        RaiseType(object, name, "an int");
    }
    auto const index = py::reinterpret_steal<py::object>(PyNumber_Index(object.ptr()));
    unsigned long long const value = index ? PyLong_AsUnsignedLongLong(index.ptr()) : 0;
    if (PyErr_Occurred() != nullptr) {
        PyErr_Clear();
        throw py::value_error(std::string(name) + ": " + std::string(py::str(object)) +
                              " is not in the range 0 to 18446744073709551615");
    }
    return value;
}

std::size_t Limit(py::handle object)
{
    return static_cast<std::size_t>(Integer(object, "limit", 0, std::numeric_limits<std::int64_t>::max()));
}

void FromPython(py::handle object, char const* name, bool& value)
{
    if (!PyLong_Check(object.ptr())) { // a bool is one, too
        RaiseType(object, name, "a bool");
    }
    value = PyObject_IsTrue(object.ptr()) != 0;
}

void FromPython(py::handle object, char const* name, std::uint64_t& value)
{
    value = Unsigned(object, name);
}

void FromPython(py::handle object, char const* name, std::string& value)
{
    if (!PyUnicode_Check(object.ptr())) {
        RaiseType(object, name, "a str");
    }
    Py_ssize_t size = 0;
    char const* const text = PyUnicode_AsUTF8AndSize(object.ptr(), &size);
    if (text == nullptr) {
        throw py::error_already_set();
    }
    value.assign(text, static_cast<std::size_t>(size));
}

void FromPython(py::handle object, char const* name, std::chrono::system_clock::time_point& value)
{
    if (!py::isinstance(object, Class("datetime", "datetime"))) {
        RaiseType(object, name, "a datetime");
    }
    if (object.attr("utcoffset")().is_none()) {
        throw py::value_error(
            std::string(name) +
            ": the datetime has no time zone; use datetime.datetime.now(datetime.timezone.utc), "
            "or replace(tzinfo=datetime.timezone.utc)");
    }
    value = std::chrono::system_clock::time_point(
        std::chrono::seconds(Seconds(object - Class(ProgrammeModule, "EPOCH"))));
}

void FromPython(py::handle object, char const* name, std::chrono::seconds& value)
{
    if (!py::isinstance(object, Class("datetime", "timedelta"))) {
        RaiseType(object, name, "a timedelta");
    }
    value = std::chrono::seconds(Seconds(object));
}

void FromPython(py::handle object, char const* name, ProgrammeId& value)
{
    if (!py::isinstance(object, Class(ProgrammeModule, "ProgrammeId"))) {
        RaiseType(object, name, "a ProgrammeId");
    }
    value.serviceId = FromPython<std::uint64_t>(object.attr("service_id"), "service_id");
    value.eventId = FromPython<std::uint32_t>(object.attr("event_id"), "event_id");
    value.start = FromPython<std::chrono::system_clock::time_point>(object.attr("start"), "start");
    value.duration = FromPython<std::chrono::seconds>(object.attr("duration"), "duration");
}

} // namespace zviptv::python
