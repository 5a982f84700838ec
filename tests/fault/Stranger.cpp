// SPDX-License-Identifier: MIT
#include "PeerModes.h"

#include "BusLink.h"
#include "Bytes.h"
#include "WireSend.h"

#include <unistd.h>

namespace zviptv::test {

namespace {

constexpr char ChannelInterface[] = "org.corvel.zviptvapi.DbusCommunication";

/// A forged notice of the bus that the partner has left.
WireBody ForgedLossNotice(std::string const& partner)
{
    return WireBody::Strings({partner, partner, ""});
}

} // namespace

void RunStranger(Arguments const& arguments)
{
    std::string const& victim = arguments[0];
    std::string const& path = arguments[1];
    std::string const& partner = arguments[2];
    BusLink link;
    PrintLine(link.Name());
    for (bool const forged : {false, true}) {
        MessageHandle const signal =
            NewSignal({victim, path, ChannelInterface, "SendSignal"}, Entries({{"from", "stranger"}}));
        MessageHandle const left = NewSignal(
            {victim, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "NameOwnerChanged"}, ForgedLossNotice(partner));
        if (forged) {
            dbus_message_set_sender(signal.get(), partner.c_str());
            dbus_message_set_sender(left.get(), DBUS_SERVICE_DBUS);
        }
        link.Send(signal);
        link.Send(left);
    }
    MessageHandle const call =
        NewCall({victim, path, ChannelInterface, "Send"}, Entries({{"from", "stranger"}}), false, true);
    dbus_message_set_sender(call.get(), partner.c_str());
    link.Send(call);
    link.Sync();
    PrintLine("done");
    for (;;) {
        pause();
    }
}

} // namespace zviptv::test
