// SPDX-License-Identifier: MIT
/// @file
/// The compiled module zviptv._native. The package zviptv wraps it; it is not for applications.

#include "Calls.h"
#include "PythonRecords.h"
#include "Streams.h"

#include <pybind11/stl.h>

namespace zviptv::python {

namespace {

std::shared_ptr<Core> MakeCore(py::object const& busAddress, py::object const& profile, py::object const& id,
                               py::object const& applicationId)
{
    Television::Options options;
    options.busAddress = FromPython<std::string>(busAddress, "bus_address");
    options.profile = FromPython<std::uint32_t>(profile, "profile");
    options.id = FromPython<std::uint16_t>(id, "id");
    options.applicationId = FromPython<std::string>(applicationId, "application_id");
    return std::make_shared<Core>(std::move(options));
}

/// The calls that are done: their tokens, and their values or exceptions.
py::list Drain(Completions& completions)
{
    py::list list;
    while (auto const completed = completions.Pop()) {
        try {
            list.append(py::make_tuple(completed->token, completed->value(), py::none()));
        } catch (py::error_already_set const& error) {
            list.append(py::make_tuple(completed->token, py::none(), error.value()));
        }
    }
    return list;
}

} // namespace

PYBIND11_MODULE(_native, module)
{
    py::class_<Call>(module, "Call").def_readonly("token", &Call::token).def("cancel", &Call::Cancel);
    py::class_<Completions, std::shared_ptr<Completions>>(module, "Completions")
        .def(py::init([] { return std::make_shared<Completions>(0); }))
        .def("fileno", &Completions::Descriptor)
        .def("drain", &Drain);
    py::class_<Core, std::shared_ptr<Core>> core(module, "Core");
    core.def(py::init(&MakeCore))
        .def("close", &Core::Close)
        .def_property_readonly("is_available", &Core::IsAvailable);
    module.def("end", [] { Loop::End(&Core::CloseAll); });
    BindStreams(module, core);
    BindFunctions(core);
}

} // namespace zviptv::python
