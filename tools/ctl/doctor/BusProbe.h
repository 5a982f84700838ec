// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Facts.h"
#include "glib/Owned.h"

#include <string>

namespace zviptv::ctl::doctor {

/// The time that the library waits for an answer.
constexpr int TimeoutMs = 2000;

/// The outcome of a call.
struct Reply
{
    enum class Kind
    {
        Answer,
        Error, ///< with `error`
        Silence
    };

    Kind kind = Kind::Silence;
    Owned<GVariant> body;   ///< body of an answer, in which case it is not null
    std::string error;      ///< "org.freedesktop.DBus.Error.AccessDenied"
    std::string text;       ///< text of the error; without an answer, why there can be none
    bool isFromBus = false; ///< the bus has answered, not the destination

    bool IsDenied() const;

    /// Whether it is an answer with this D-Bus type: "(a(ss))".
    bool IsOf(char const* type) const;

    /// Name and text of the error.
    std::string ErrorText() const { return error + (text.empty() ? "" : ": " + text); }
};

struct Address
{
    std::string destination;
    std::string path;
    std::string interface;
    std::string member;
};

/// A separate connection of the doctor, which does not end the process and which the library does not use. No
/// operation takes longer than the library waits.
class BusProbe
{
public:
    /// If there is no connection, `facts` contain the reason.
    explicit BusProbe(BusFacts& facts);
    ~BusProbe();

    BusProbe(BusProbe const&) = delete;
    BusProbe& operator=(BusProbe const&) = delete;

    bool IsOpen() const { return m_connection != nullptr; }
    GDBusConnection* Connection() const { return m_connection.get(); }
    std::string const& Name() const { return m_name; }

    /// Makes a call. `body` may be floating, or null for none. If the bus itself has not answered before, the
    /// outcome is Silence at once.
    Reply Call(Address const& to, GVariant* body);

    /// Calls a method of the bus.
    Reply CallBus(char const* member, GVariant* body = nullptr);

    /// Sends a signal to one connection.
    void Emit(Address const& to);

private:
    void SayHello(BusFacts& facts);
    void Close();

    Owned<GDBusConnection> m_connection;
    std::string m_name;
    bool m_isBusSilent = false;
};

} // namespace zviptv::ctl::doctor
