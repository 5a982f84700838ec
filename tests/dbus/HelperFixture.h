// SPDX-License-Identifier: MIT
#pragma once

#include "ChannelFixture.h"

#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/ConnectionHelperDBusServer.h>

namespace zviptv::test {

/// The words of the helper bus, repeated here to find typos in the library.
constexpr char HelperName[] = "org.corvel.zviptvapi.dbushelper";
constexpr char HelperPath[] = "/org/corvel/zviptvapi/dbushelper";

inline WireTarget HelperTarget(std::string const& destination = HelperName)
{
    return {destination, HelperPath, "org.corvel.zviptvapi.dbushelper", "SendSignal"};
}

/// Ends the process's server at the end of a test.
struct ServerEnd
{
    ServerEnd() = default;
    ~ServerEnd() { CConnectionHelperDBusServer::Destroy(); }
    ServerEnd(ServerEnd const&) = delete;
    ServerEnd& operator=(ServerEnd const&) = delete;
};

/// The arguments of the announcement handler, and its answer.
struct Handled
{
    using Announced = std::vector<std::string>;

    static std::string Handle(std::string dbusname, std::string type, std::string add, void* data)
    {
        auto& self = *static_cast<Handled*>(data);
        self.announced.push_back({std::move(dbusname), std::move(type), std::move(add)});
        return self.answer;
    }

    std::vector<Announced> announced;
    std::string answer = ":1.42";
};

} // namespace zviptv::test
