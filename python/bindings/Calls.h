// SPDX-License-Identifier: MIT
#pragma once

#include "Convert.h"
#include "Core.h"
#include "Queue.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <utility>

// The functions of the service as functions of the compiled module.

namespace zviptv::python {

/// An asynchronous call that is done.
struct Completed
{
    std::uint64_t token = 0;
    std::function<py::object()> value; ///< called with the GIL; raises the failure of the call
};

/// The queue of asynchronous calls that are done.
using Completions = Queue<Completed>;

/// An asynchronous call.
struct Call
{
    std::uint64_t token;
    std::weak_ptr<Core> core;
    std::shared_ptr<Pending> pending; ///< for the television's thread

    void Cancel() const
    {
        if (auto const television = core.lock()) {
            television->Post([handle = pending](Television& /*television*/) { handle->Cancel(); });
        }
    }
};

/// Calls a function and waits for the answer without the GIL.
template <class Function>
py::object Wait(Core& core, Function const& function)
{
    Core::Stay const stay(core);
    auto const result = [&] {
        py::gil_scoped_release const release;
        return function(stay.Television());
    }();
    return ToPython(result);
}

/// A number that no other call has.
inline std::uint64_t NextToken()
{
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

/// Calls a function whose outcome is added to `completions`.
template <class Answer, class Function>
Call Start(Core& core, std::shared_ptr<Completions> const& completions, py::handle timeout, Function function)
{
    Core::Stay const stay(core);
    Call call{NextToken(), core.weak_from_this(), std::make_shared<Pending>()};
    auto done = [completions, token = call.token](Result<Answer> const& result) {
        completions->Push({token, [result] { return ToPython(result); }});
    };
    bool const isPosted =
        core.Post([function = std::move(function), done, pending = call.pending,
                   options = CallOptions{Milliseconds(timeout, "timeout")}](Television& television) {
            *pending = function(television, Completion<Answer>(done), options);
        });
    if (!isPosted) {
        done(Failure{FailureKind::Gone, "", "", "", "the Television is closed; create another one"});
    }
    return call;
}

/// Defines a function in both forms: "name(arguments...)" and "start_name(completions, timeout,
/// arguments...)". `make` reads the arguments and returns what calls the function.
template <class Answer, class Make>
void Define(py::class_<Core, std::shared_ptr<Core>>& core, std::string const& name, Make make)
{
    core.def(name.c_str(),
             [make](Core& self, py::args const& arguments) { return Wait(self, make(arguments)); });
    core.def(("start_" + name).c_str(), [make](Core& self, std::shared_ptr<Completions> const& completions,
                                               py::object const& timeout, py::args const& arguments) {
        return Start<Answer>(self, completions, timeout, make(arguments));
    });
}

} // namespace zviptv::python
