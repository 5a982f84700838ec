// SPDX-License-Identifier: MIT
#include "Explanations.h"

#include "output/MethodTable.h"
#include "output/Words.h"

#include <zviptv/Protocol.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace zviptv::ctl {

namespace {

/// How a value is encoded.
enum class Form
{
    Number, ///< decimal text; flags and enumerations too
    Character,
    List, ///< records, with their number as another value
    Bytes
};

Form FormOf(Parameter const& parameter)
{
    std::string const& type = parameter.type;
    if (type == "char") {
        return Form::Character;
    }
    if (type.rfind("std::vector<", 0) == 0) {
        return Form::List;
    }
    bool const isText = type == "std::string" || type == "char const*";
    return isText || type.rfind("ZV", 0) == 0 ? Form::Bytes : Form::Number;
}

/// What is wrong with an answer, and the kind of value that it is wrong with.
struct Fault
{
    char const* text;
    Form form;
};

Fault FaultOf(std::exception const& error)
{
    bool const isConversion = std::strncmp(error.what(), "sto", 3) == 0; // stoi, stoull and so on
    if (dynamic_cast<std::length_error const*>(&error) != nullptr) {
        return {"announces a size that no message can have", Form::List};
    }
    if (dynamic_cast<std::out_of_range const*>(&error) == nullptr) {
        return {"lacks a number or spells it badly", Form::Number};
    }
    return isConversion ? Fault{"has a number that is out of range", Form::Number}
                        : Fault{"lacks a character", Form::Character};
}

Method const* MethodCalled(std::string const& name)
{
    auto const found = std::find_if(Methods().begin(), Methods().end(),
                                    [&](Method const& method) { return name == method.name; });
    return found == Methods().end() ? nullptr : &*found;
}

/// The values of an answer that are of this form. Those of the guide come without a result.
std::vector<std::string> Suspects(Method const& method, Form form)
{
    std::vector<std::string> names;
    if (form == Form::Number && std::strcmp(method.interface, "IIPGUtil") != 0) {
        names.emplace_back("result");
    }
    for (Parameter const& output : method.outputs) {
        if (FormOf(output) == form) {
            names.push_back(output.name);
        } else if (FormOf(output) == Form::List && form == Form::Number) {
            names.push_back("size of " + output.name);
        }
    }
    return names;
}

} // namespace

std::string MalformedAnswer(std::string const& method, std::exception const& error)
{
    Fault const fault = FaultOf(error);
    Method const* const called = MethodCalled(method);
    std::string const suspects = called == nullptr ? "" : Join(Suspects(*called, fault.form), " or ");
    return "the service's answer to " + method + " " + fault.text +
           (suspects.empty() ? "" : " (" + suspects + ")");
}

std::string UnreadableNotification(std::exception const& error)
{
    return std::string("a notification cannot be read: it ") + FaultOf(error).text;
}

std::string ErrorAnswer(std::string const& reason)
{
    static std::string const mark = "GDBus.Error:";
    std::size_t const found = reason.find(mark);
    std::string const error = found == std::string::npos ? "" : reason.substr(found + mark.size());
    return error.rfind("org.freedesktop.DBus.Error.", 0) == 0 ? "" : error;
}

std::string ForbiddenByPolicy()
{
    return "the bus's policy does not let this user call the service (AccessDenied): be a member of the "
           "group "
           "zviptv-apps";
}

std::string MissingEndpoint(std::string const& method)
{
    struct Endpoint
    {
        char const* interface;
        char const* name;
        char const* type;
    };
    static Endpoint const endpoints[] = {
        {"IPlayerControl", "player control", protocol::type::PlayerControl},
        {"IBroadcastData", "broadcast data", protocol::type::BroadcastData},
        {"IIPTVDataSubscriber", "data subscriber", protocol::type::DataSubscriber},
        {"IIPGUtil", "programme guide", protocol::type::ProgramGuide},
    };
    Method const* const called = MethodCalled(method);
    for (Endpoint const& endpoint : endpoints) {
        if (called != nullptr && std::strcmp(called->interface, endpoint.interface) == 0) {
            return std::string("this service has no ") + endpoint.name + " endpoint (" + endpoint.type + ")";
        }
    }
    return "this service has no endpoint for " + method;
}

} // namespace zviptv::ctl
