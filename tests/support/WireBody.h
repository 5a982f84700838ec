// SPDX-License-Identifier: MIT
#pragma once

#include "WireMessage.h"

#include <dbus/dbus.h>

#include <functional>
#include <string>
#include <vector>

namespace zviptv::test {

/// Appends arguments to a message; runs on the thread that sends.
using AppendFunction = std::function<void(DBusMessageIter*)>;

/// One entry of an "a{sv}" with any variant: for bodies outside the protocol.
struct WireVariant
{
    std::string key;
    std::string signature;
    AppendFunction append;
};

WireVariant BytesVariant(std::string key, std::string bytes);
WireVariant TextVariant(std::string key, std::string text);
WireVariant NumberVariant(std::string key, std::int32_t number);

/// The body of a message. It is a value: copy it and send it any number of times.
/// Building one throws std::invalid_argument for what libdbus cannot express: text that is not UTF-8
/// or holds a zero byte, byte arrays above 64 MiB, entries whose signature is not "ay".
class WireBody
{
public:
    /// No argument at all.
    WireBody() = default;
    /// One "a{sv}", every value one "ay" appended as a single block.
    WireBody(WireEntries entries);
    /// One "a(ss)".
    WireBody(WirePairs pairs);

    /// One "s" after the other.
    static WireBody Strings(std::vector<std::string> texts);
    /// One "a{sv}" with contents of any type.
    static WireBody Variants(std::vector<WireVariant> variants);
    /// A body that the function appends.
    static WireBody Raw(AppendFunction append);

    void AppendTo(DBusMessage* message) const;

private:
    AppendFunction m_append;
};

} // namespace zviptv::test
