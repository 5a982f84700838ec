// SPDX-License-Identifier: MIT
#include "Methods.h"

#include "Call.h"
#include "common/ProtocolSchema.h"
#include "output/Failure.h"
#include "output/Words.h"

#include <cstring>

namespace zviptv::ctl {

namespace {

std::string List(std::vector<Parameter> const& parameters)
{
    std::vector<std::string> parts;
    for (Parameter const& parameter : parameters) {
        parts.push_back(parameter.type + " " + parameter.name);
    }
    return Join(parts);
}

/// "2 arguments (type preferred)"
std::string ArityOf(Method const& method)
{
    std::vector<std::string> names;
    for (std::size_t index = 0; index < method.inputs.size(); ++index) {
        std::string const& name = method.inputs[index].name;
        names.push_back(index < method.required ? name : "[" + name + "]");
    }
    return names.empty() ? "no arguments" : Counted(names.size(), "argument") + " (" + Join(names, " ") + ")";
}

[[noreturn]] void ThrowUnknown(std::string const& name)
{
    std::vector<std::string> names;
    for (Method const& method : Methods()) {
        names.emplace_back(method.name);
    }
    std::vector<std::string> const near = NearWords(name, names);
    throw Failure(ExitCode::Usage, "unknown method '" + name + "'; " +
                                       (near.empty() ? "'zviptvctl methods' lists all of them"
                                                     : "did you mean " + Join(near, " or ") + "?"));
}

} // namespace

std::string Signature(Method const& method)
{
    std::string signature = std::string(method.name) + "(" + List(method.inputs) + ")";
    return method.outputs.empty() ? signature : signature + " -> " + List(method.outputs);
}

Method const& FindMethod(std::string const& name, std::size_t argumentCount)
{
    std::vector<std::string> arities;
    for (Method const& method : Methods()) {
        if (name != method.name) {
            continue;
        }
        if (method.call == nullptr) {
            throw Failure(ExitCode::Usage,
                          name + " needs a callback: use 'zviptvctl " + method.instead + "'");
        }
        if (method.Takes(argumentCount)) {
            return method;
        }
        arities.push_back(ArityOf(method));
    }
    if (arities.empty()) {
        ThrowUnknown(name);
    }
    throw Failure(ExitCode::Usage,
                  name + " takes " + Join(arities, " or ") + ", not " + std::to_string(argumentCount));
}

Answer CallMethod(Method const& method, Session& session, std::vector<std::string> const& arguments)
{
    Call call(method, session, arguments);
    method.call(call);
    return call.Result();
}

Answer ListMethods()
{
    Answer answer;
    answer.json = ProtocolSchema();
    char const* interface = "";
    for (Method const& method : Methods()) {
        if (std::strcmp(interface, method.interface) != 0) {
            interface = method.interface;
            answer.text += std::string(answer.text.empty() ? "" : "\n") + interface + "\n";
        }
        answer.text += "  " + Signature(method);
        answer.text +=
            method.call == nullptr ? std::string("   (use 'zviptvctl ") + method.instead + "')\n" : "\n";
    }
    return answer;
}

} // namespace zviptv::ctl
