// SPDX-License-Identifier: MIT
#include "PeerModes.h"

#include "Bytes.h"
#include "WirePeer.h"

#include <signal.h>
#include <unistd.h>

namespace zviptv::test {

namespace {

constexpr std::size_t Mebibyte = 1024 * 1024;

std::size_t Number(WireMessage const& order, char const* key)
{
    std::string const text = order.Value(key);
    return text.empty() ? 0 : std::stoul(text);
}

/// A body of the given size, in values that libdbus can send.
WireEntries Load(std::size_t mebibytes)
{
    WireEntries entries;
    while (mebibytes > 0) {
        std::size_t const part = mebibytes > 64 ? 43 : mebibytes;
        entries.push_back({"v", "ay", std::string(part * Mebibyte, 'x')});
        mebibytes -= part;
    }
    return entries;
}

/// An invalid message: values of every type except "ay", or no dictionary at all.
WireBody Malformed(std::string const& kind)
{
    if (kind == "variants") {
        return WireBody::Variants({TextVariant("t", "text"), NumberVariant("n", 1), BytesVariant("k", "v")});
    }
    return kind == "strings" ? WireBody::Strings({"no", "dictionary"}) : WireBody();
}

/// A body of the ordered size, or a malformed one.
WireBody BodyOf(WireMessage const& order)
{
    return order.Has("kind") ? Malformed(order.Value("kind")) : WireBody(Load(Number(order, "mebibytes")));
}

WireTarget TargetOf(WireMessage const& order)
{
    return {order.Value("to"), order.Value("path"), "org.corvel.zviptvapi.DbusCommunication",
            order.Value("member")};
}

/// Ends the recording. Returns the number of recorded messages with a value of the given size.
WireEntries Report(WirePeer& peer, std::size_t size)
{
    peer.SetRecording(false);
    std::size_t const count = peer.Received().Count(
        [size](WireMessage const& message) { return message.Value("v").size() == size; });
    peer.Received().Clear();
    return Entries({{"count", std::to_string(count)}});
}

WireAnswer Execute(WirePeer& peer, WireMessage const& order)
{
    std::string const what = order.Value("do");
    if (what == "die") {
        raise(SIGKILL);
    } else if (what == "nothing") {
        return WireAnswer::Nothing();
    } else if (what == "answer") {
        return BodyOf(order);
    } else if (what == "emit") {
        peer.EmitMany(TargetOf(order), BodyOf(order), Number(order, "count"));
    } else if (what == "call") {
        peer.CallWithoutReply(TargetOf(order), BodyOf(order));
    } else if (what == "record") {
        peer.SetRecording(true);
    } else if (what == "report") {
        return Report(peer, Number(order, "mebibytes") * Mebibyte);
    }
    return Entries({{"id", order.Value("id")}, {"size", std::to_string(order.Value("v").size())}});
}

} // namespace

void RunPartner()
{
    WirePeer peer;
    peer.SetRecording(false);
    peer.SetHandler([&peer](WireMessage const& order) { return Execute(peer, order); });
    PrintLine(peer.Name());
    for (;;) {
        pause();
    }
}

} // namespace zviptv::test
