// SPDX-License-Identifier: MIT
#include "ProxyMethods.h"
#include "ScriptedChannel.h"
#include "Variants.h"
#include "dbus/PeerMessage.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

// Calls every method of the proxies with any reply. An input begins with a method's name and a line break.

using namespace zviptv;
using namespace zviptv::fuzz;

namespace {

/// The method of that name; some other one for other words.
ProxyMethod const& Chosen(std::string const& name)
{
    auto const found = std::find_if(std::begin(ProxyMethods), std::end(ProxyMethods),
                                    [&](ProxyMethod const& method) { return name == method.name; });
    std::size_t const sum =
        std::accumulate(name.begin(), name.end(), name.size(),
                        [](std::size_t so, char c) { return so + static_cast<unsigned char>(c); });
    return found != std::end(ProxyMethods) ? *found : ProxyMethods[sum % std::size(ProxyMethods)];
}

/// The permitted outcomes of a method: its result, or an exception of the standard conversions.
enum class Ending
{
    False,
    True,
    Thrown
};

Ending EndingOf(ProxyMethod const& method)
{
    try {
        return method.call() ? Ending::True : Ending::False;
    } catch (std::invalid_argument const&) {
    } catch (std::out_of_range const&) {
    } catch (std::length_error const&) {
    }
    return Ending::Thrown;
}

Ending ResultIn(CMessageBuffer const& reply)
{
    try {
        return reply.GetResult() != 0 ? Ending::True : Ending::False;
    } catch (std::logic_error const&) {
        return Ending::Thrown;
    }
}

void Check(ProxyMethod const& method, Owned<GVariant> body)
{
    CMessageBuffer reply;
    Error error;
    bool const isMessage = DecodePeerMessage(body.get(), reply, error);
    Ending const result = method.hasResult ? ResultIn(reply) : Ending::True;
    std::deque<Owned<GVariant>> replies;
    replies.push_back(std::move(body));
    SetReplies(std::move(replies));
    Ending const ending = EndingOf(method);
    if (!isMessage) {
        Require(ending == Ending::False, "no exchange, so the answer is false");
    } else {
        Require(ending == result || ending == Ending::Thrown, "the service's result is the method's");
    }
    Require(EndingOf(method) == Ending::False, "and the next exchange is another one");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    [[maybe_unused]] static bool const reading = (ReadLog(), true);
    std::string_view const all(reinterpret_cast<char const*>(data), size);
    std::size_t const line = std::min(all.find('\n'), size);
    FuzzedDataProvider input(data + std::min(line + 1, size), size - std::min(line + 1, size));
    Check(Chosen(std::string(all.substr(0, line))),
          input.ConsumeBool() ? SinkFloating(g_variant_new("(@a{sv})", NewDictionary(input)))
                              : ConsumeUntrusted(input));
    return 0;
}
