// SPDX-License-Identifier: MIT
#include "PeerModes.h"

#include "BusLink.h"
#include "Bytes.h"
#include "WireSend.h"

#include <chrono>
#include <functional>
#include <thread>

namespace zviptv::test {

namespace {

using Clock = std::chrono::steady_clock;

MessageHandle NameRequest(char const* member, std::string const& name)
{
    bool const request = std::string(member) == "RequestName";
    MessageHandle message =
        NewCall({DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, member}, WireBody(), false, true);
    DBusMessageIter iter;
    dbus_message_iter_init_append(message.get(), &iter);
    char const* const text = name.c_str();
    dbus_message_iter_append_basic(&iter, DBUS_TYPE_STRING, &text);
    if (request) {
        dbus_uint32_t const doNotQueue = 4;
        dbus_message_iter_append_basic(&iter, DBUS_TYPE_UINT32, &doNotQueue);
    }
    return message;
}

/// The message number `i` of a flood.
std::function<MessageHandle(std::size_t)> MessageFactory(Arguments const& arguments)
{
    std::string const& kind = arguments[0];
    WireTarget const target{arguments[1], arguments[2], "org.corvel.zviptvapi.DbusCommunication",
                            kind == "calls" ? "Send" : "SendSignal"};
    if (kind == "names") {
        return [name = arguments[1]](std::size_t i) {
            return NameRequest(i % 2 == 0 ? "RequestName" : "ReleaseName", name);
        };
    }
    WireBody const body(Entries({{"k", "v"}}));
    if (kind == "calls") {
        return [=](std::size_t) { return NewCall(target, body, false, true); };
    }
    return [=](std::size_t) { return NewSignal(target, body); };
}

} // namespace

void RunFlood(Arguments const& arguments)
{
    auto const next = MessageFactory(arguments);
    double const rate = std::stod(arguments[3]);
    BusLink link;
    PrintLine(link.Name());
    auto const start = Clock::now();
    auto toTell = start + std::chrono::milliseconds(100);
    for (std::size_t sent = 0;;) {
        double const passed = std::chrono::duration<double>(Clock::now() - start).count();
        for (auto const due = static_cast<std::size_t>(passed * rate); sent < due && sent % 256 != 255;
             ++sent) {
            link.Send(next(sent));
        }
        link.Send(next(sent++));
        link.Flush();
        if (Clock::now() >= toTell) {
            link.Sync(); // waits for a bus that falls behind
            PrintLine("sent " + std::to_string(sent));
            toTell += std::chrono::milliseconds(100);
        }
        std::this_thread::sleep_until(start +
                                      std::chrono::duration<double>(static_cast<double>(sent) / rate));
    }
}

} // namespace zviptv::test
