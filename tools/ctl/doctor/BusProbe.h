// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Facts.h"
#include "glib/Owned.h"

#include <string>

namespace zviptv::ctl::doctor {

/// As long as the library waits for an answer.
constexpr int PatienceMs = 2000;

/// What came back for a call.
struct Reply
{
    enum class Kind
    {
        Answer,
        Error, ///< with `error`
        Silence
    };

    Kind kind = Kind::Silence;
    Owned<GVariant> body;   ///< of an answer; never null then
    std::string error;      ///< "org.freedesktop.DBus.Error.AccessDenied"
    std::string text;       ///< the error's; of a silence, why there can be no answer
    bool isFromBus = false; ///< the bus said it, not whom the call was for

    bool IsDenied() const;

    /// Whether it is an answer of this D-Bus type: "(a(ss))".
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

/// A connection of the doctor's own, which neither ends the process nor is known to the library. Nothing that
/// it does takes longer than the library waits.
class BusProbe
{
public:
    /// Without a connection, `facts` say why.
    explicit BusProbe(BusFacts& facts);
    ~BusProbe();

    BusProbe(BusProbe const&) = delete;
    BusProbe& operator=(BusProbe const&) = delete;

    bool IsOpen() const { return m_connection != nullptr; }
    GDBusConnection* Connection() const { return m_connection.get(); }
    std::string const& Name() const { return m_name; }

    /// `body` may be floating, or null for none. Silence at once when the bus itself has kept silent before.
    Reply Call(Address const& to, GVariant* body);

    /// A call of the bus itself.
    Reply CallBus(char const* member, GVariant* body = nullptr);

    /// A signal to one connection.
    void Emit(Address const& to);

private:
    void SayHello(BusFacts& facts);
    void Close();

    Owned<GDBusConnection> m_connection;
    std::string m_name;
    bool m_isBusSilent = false;
};

} // namespace zviptv::ctl::doctor
