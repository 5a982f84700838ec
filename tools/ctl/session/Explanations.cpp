// SPDX-License-Identifier: MIT
#include "Explanations.h"

#include "output/MethodTable.h"

#include <zviptv/Failure.h>
#include <zviptv/Protocol.h>

#include <algorithm>
#include <cstring>

namespace zviptv::ctl {

namespace {

Method const* MethodCalled(std::string const& name)
{
    auto const found = std::find_if(Methods().begin(), Methods().end(),
                                    [&](Method const& method) { return name == method.name; });
    return found == Methods().end() ? nullptr : &*found;
}

} // namespace

std::string UnreadableNotification(std::exception const& error)
{
    ZVFailure const& failure = ZVGetLastFailure();
    bool const isTold = failure.kind == ZV_FAILURE_MALFORMED_REPLY;
    return std::string("a notification cannot be read: ") + (isTold ? failure.message : error.what());
}

std::string EndpointClosed(std::string const& name)
{
    return std::string("the service closed the connection ") + name + " of its endpoint " +
           protocol::type::DataSubscriber + ": no more pushes arrive; restart the service";
}

std::string ForbiddenByPolicy()
{
    return "the bus's policy does not let this user call the service (AccessDenied): add the user to "
           "the group zviptv-apps, and log in again";
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
