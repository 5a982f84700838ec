// SPDX-License-Identifier: MIT
#include "ProcessNames.h"

#include <unistd.h>

#include <fstream>
#include <utility>

namespace zviptv::trace {

namespace {

/// Time limit for an answer of the bus, in milliseconds.
constexpr int AnswerTimeout = 2'000;

constexpr char Method[] = "GetConnectionUnixProcessID";

std::string NameOfProcess(int processId)
{
    std::ifstream file("/proc/" + std::to_string(processId) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

int ProcessOf(GVariant* answer)
{
    guint32 id = 0;
    if (answer != nullptr) {
        g_variant_get(answer, "(u)", &id);
    }
    return static_cast<int>(id);
}

} // namespace

struct ProcessNames::Question
{
    std::weak_ptr<OnProcess> onProcess;
    std::string busName;
    bool isLocal;
};

ProcessNames::ProcessNames(std::string const& address, OnProcess onProcess)
    : m_onProcess(std::make_shared<OnProcess>(std::move(onProcess)))
{
    auto const flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    m_connection.reset(
        g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr));
    if (m_connection != nullptr) {
        char const* const name = g_dbus_connection_get_unique_name(m_connection.get());
        Owned<GVariant> const answer(g_dbus_connection_call_sync(
            m_connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
            Method, g_variant_new("(s)", name), G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, AnswerTimeout,
            nullptr, nullptr));
        m_isLocal = ProcessOf(answer.get()) == getpid();
    }
}

ProcessNames::~ProcessNames()
{
    if (m_connection != nullptr) {
        g_dbus_connection_close_sync(m_connection.get(), nullptr, nullptr);
    }
}

void ProcessNames::Ask(std::string const& busName) const
{
    if (m_connection != nullptr) {
        g_dbus_connection_call(m_connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", Method, g_variant_new("(s)", busName.c_str()),
                               G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, AnswerTimeout, nullptr,
                               OnAnswer, new Question{m_onProcess, busName, m_isLocal});
    }
}

std::string ProcessNames::ProgramOf(int processId) const
{
    return m_isLocal ? NameOfProcess(processId) : std::string();
}

void ProcessNames::OnAnswer(GObject* connection, GAsyncResult* result, gpointer question)
{
    std::unique_ptr<Question> const asked(static_cast<Question*>(question));
    Owned<GVariant> const answer(
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, nullptr));
    int const id = ProcessOf(answer.get());
    if (auto const onProcess = asked->onProcess.lock(); onProcess != nullptr && *onProcess && id > 0) {
        (*onProcess)(asked->busName, id, asked->isLocal ? NameOfProcess(id) : std::string());
    }
}

} // namespace zviptv::trace
