#include "ServiceRun.h"

#include "SystemBus.h"
#include "common/MainLoop.h"

#include <zviptv/ConnectionHelperDBusClient.h>

#include <stdexcept>
#include <string>

namespace zviptv::sim {

namespace {

/// @throws std::runtime_error when the bus cannot be used
void RequireBus()
{
    std::string const reason = WhyNoSystemBus();
    if (!reason.empty()) {
        throw std::runtime_error("the system bus cannot be reached (" + reason +
                                 "): start it, set DBUS_SYSTEM_BUS_ADDRESS to a bus that runs, or use --bus "
                                 "private");
    }
    if (CConnectionHelperDBusClient::CheckConnection()) {
        throw std::runtime_error("a service runs on this bus already: stop it, or use --bus private");
    }
}

} // namespace

void RunService(ServiceOptions const& options, std::function<void()> const& ready)
{
    RequireBus();
    MainLoop loop;
    Service service(options, loop);
    if (!service.IsOnBus()) {
        throw std::runtime_error("the system bus went away: start again, or use --bus private");
    }
    if (!OwnsServiceName()) {
        throw std::runtime_error(
            "this user may not own org.corvel.zviptvapi.dbushelper on this bus: install its "
            "policy and be the user whom that names, or use --bus private");
    }
    service.Start();
    ready();
    loop.Run();
}

} // namespace zviptv::sim
