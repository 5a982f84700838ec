// SPDX-License-Identifier: MIT
/// @file
/// The helper bus, where applications find the endpoints of the service.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/IConnectionHelper.h>
#include <zviptv/MessageBuffer.h>

#include <pthread.h>

#include <memory>

typedef struct _GDBusConnection GDBusConnection;
typedef struct _GDBusInterfaceVTable GDBusInterfaceVTable;
typedef struct _GDBusMethodInvocation GDBusMethodInvocation;
typedef struct _GVariant GVariant;

/// The helper bus: owns the well-known name "org.corvel.zviptvapi.dbushelper" and passes announcements to the
/// handler that the service installed. There is one per process.
/// If the bus cannot be reached or the object cannot be registered, the instance exists but answers nobody,
/// and the log says so; Destroy() and a new Instance() try again. If another process owns the name, this
/// process waits in the bus's queue for it.
class ZVIPTV_API CConnectionHelperDBusServer final : public IConnectionHelper
{
public:
    static char const* const CONNECTION_NAME;   ///< the well-known name
    static char const* const INTERFACE_XML;     ///< introspection data of the helper bus's object
    static GDBusInterfaceVTable const m_vtable; ///< callbacks of the object for GIO

    /// The instance of the process, created on first use. Thread-safe. Announcements are delivered through
    /// the main context that is the thread default of the creating thread; that context must be iterated.
    static CConnectionHelperDBusServer* Instance();

    /// Ends the instance, if there is one: unregisters the object and asks the bus to release the name,
    /// without waiting for the bus. Thread-safe, also from inside the announcement handler. On another
    /// thread, it returns after a running handler has ended.
    static void Destroy();

    /// Installs the announcement handler; see IConnectionHelper::SetDbusSignalCb.
    void SetDbusSignalCb(std::string (*cb)(std::string dbusname, std::string type, std::string add,
                                           void* userData),
                         void* userData) override;

    /// Decodes a helper-bus message, "(a(ss))"; returns an empty buffer for null or any other type.
    CMessageBuffer m_ConvertMsg(GVariant* message);

    /// Encodes a helper-bus message as a new floating "(a(ss))"; values are cut at their first zero byte.
    /// Returns null if a key or a value is not UTF-8, or the message is larger than
    /// CProxyDBusHelper::MAX_BODY_SIZE.
    GVariant* m_ConvertMsg(CMessageBuffer& message);

private:
    struct State;

    CConnectionHelperDBusServer();
    ~CConnectionHelperDBusServer() override;

    static void m_MethodCallback(GDBusConnection* connection, char const* sender, char const* objectPath,
                                 char const* interfaceName, char const* methodName, GVariant* parameters,
                                 GDBusMethodInvocation* invocation, void* userData);
    static void m_NameAcquired(GDBusConnection* connection, char const* name, void* userData);
    static void m_NameLost(GDBusConnection* connection, char const* name, void* userData);

    static CConnectionHelperDBusServer* m_pInstance;
    static pthread_rwlock_t m_rwlock;

    std::unique_ptr<State> m_state;
};
