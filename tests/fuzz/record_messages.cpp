// SPDX-License-Identifier: MIT
#include "SeedWriter.h"
#include "dbus/HelperMessage.h"
#include "dbus/PeerMessage.h"
#include "message/MessageAccess.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <mutex>
#include <vector>

// record_messages CORPUS COMMAND...: runs a command on the system bus, and makes seeds of the messages that
// the service and its applications exchange meanwhile.

using namespace zviptv;
using namespace zviptv::fuzz;

namespace {

constexpr std::size_t LargestSeed = 2048;

using Message = Owned<GDBusMessage>;

/// Makes the connection a monitor of all messages, and keeps them.
class Monitor
{
public:
    Monitor()
    {
        Error error;
        m_connection.reset(g_dbus_connection_new_for_address_sync(
            g_getenv("DBUS_SYSTEM_BUS_ADDRESS"),
            static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
            nullptr, nullptr, error.Out()));
        if (m_connection != nullptr) {
            g_dbus_connection_add_filter(m_connection.get(), Keep, this, nullptr);
            Owned<GVariant> const answer(
                g_dbus_connection_call_sync(m_connection.get(), "org.freedesktop.DBus",
                                            "/org/freedesktop/DBus", "org.freedesktop.DBus.Monitoring",
                                            "BecomeMonitor", g_variant_new_parsed("(@as [], uint32 0)"),
                                            nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, error.Out()));
        }
        if (error) {
            throw std::runtime_error(error.Message());
        }
    }

    std::vector<Message> Take()
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return std::move(m_messages);
    }

private:
    /// On GDBus's own thread.
    static GDBusMessage* Keep(GDBusConnection*, GDBusMessage* message, gboolean isIncoming, gpointer self)
    {
        if (isIncoming == FALSE) {
            return message;
        }
        auto* const monitor = static_cast<Monitor*>(self);
        std::lock_guard<std::mutex> const lock(monitor->m_mutex);
        monitor->m_messages.push_back(Share(message));
        // The bus closes the connection of a monitor that answers calls.
        bool const isCall = g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_METHOD_CALL;
        return isCall ? (g_object_unref(message), nullptr) : message;
    }

    Owned<GDBusConnection> m_connection;
    std::mutex m_mutex;
    std::vector<Message> m_messages;
};

std::string BytesOf(GVariant* body)
{
    return std::string(static_cast<char const*>(g_variant_get_data(body)), g_variant_get_size(body));
}

/// For ConsumeUntrusted(), as it is.
std::string Untrusted(std::string const& bytes, std::size_t type)
{
    return SeedWriter().Bytes(bytes).Number(type).Number(0).Seed();
}

/// For NewDictionary().
void AddDictionary(SeedWriter& seed, CMessageBuffer const& message)
{
    seed.Number(static_cast<std::size_t>(message.Size()));
    for (MessageEntry const& entry : MessageAccess::Entries(message)) {
        seed.Text(entry.key).Number(11).Text(entry.value.substr(0, 399));
    }
}

class Corpus
{
public:
    Corpus(std::filesystem::path folder, std::string command)
        : m_folder(std::move(folder)), m_command(std::move(command))
    {
    }

    void Add(GDBusMessage* message)
    {
        GVariant* const body = g_dbus_message_get_body(message);
        if (body == nullptr || g_variant_get_size(body) > LargestSeed) {
            return;
        }
        if (g_variant_is_of_type(body, G_VARIANT_TYPE("(a(ss))")) != FALSE) {
            WriteSeed(m_folder / "helper_message",
                      "pairs-" + helper::Decode(body).GetValue("type") + helper::Decode(body).GetValue("add"),
                      Untrusted(BytesOf(body), 1) + '\x01');
        } else if (g_variant_is_of_type(body, G_VARIANT_TYPE("(a{sv})")) != FALSE) {
            AddPeerMessage(message, body);
        }
    }

    /// The command with all its answers.
    void Finish()
    {
        if (m_command.rfind("pes", 0) == 0 || m_replies.empty() || m_replies.size() > 15) {
            return;
        }
        SeedWriter seed;
        seed.Number(m_replies.size());
        for (CMessageBuffer const& reply : m_replies) {
            AddDictionary(seed, reply);
        }
        WriteSeed(m_folder / "call", m_command, m_command + "\n" + seed.Seed());
    }

private:
    void AddPeerMessage(GDBusMessage* message, GVariant* body)
    {
        CMessageBuffer decoded;
        Error error;
        DecodePeerMessage(body, decoded, error);
        std::string const function = decoded.GetValue("functionname");
        std::string const seed = Untrusted(BytesOf(body), 0) + '\x00';
        switch (g_dbus_message_get_message_type(message)) {
        case G_DBUS_MESSAGE_TYPE_METHOD_CALL:
            m_functions[g_dbus_message_get_serial(message)] = function;
            WriteSeed(m_folder / "peer_message", "request-" + function, seed);
            break;
        case G_DBUS_MESSAGE_TYPE_METHOD_RETURN:
            AddReply(m_functions[g_dbus_message_get_reply_serial(message)], decoded, seed);
            break;
        default:
            std::string const name =
                function + "-" + decoded.GetValue("pesType") + decoded.GetValue("captionType");
            WriteSeed(m_folder / "notification", name, seed);
        }
    }

    void AddReply(std::string const& function, CMessageBuffer const& reply, std::string const& seed)
    {
        m_replies.push_back(reply);
        WriteSeed(m_folder / "reply", function, function + "\n" + seed);
        SeedWriter dictionary;
        AddDictionary(dictionary, reply);
        WriteSeed(m_folder / "peer_message", "reply-" + function, dictionary.Seed() + '\x01');
        for (MessageEntry const& entry : MessageAccess::Entries(reply)) {
            if (entry.value.size() >= 8) {
                WriteSeed(m_folder / "print", function,
                          entry.value + std::string(300, '\x01') + entry.value + '\x00');
            }
        }
    }

    std::filesystem::path m_folder;
    std::string m_command;
    std::map<guint32, std::string> m_functions; ///< by the serial of the request
    std::vector<CMessageBuffer> m_replies;
};

void Run(int argc, char* argv[])
{
    if (argc < 3) {
        throw std::runtime_error("usage: record_messages CORPUS COMMAND...");
    }
    Monitor monitor;
    Error error;
    int status = 0;
    if (g_spawn_sync(nullptr, argv + 2, nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, nullptr, nullptr,
                     &status, error.Out()) == FALSE) {
        throw std::runtime_error(error.Message());
    }
    g_usleep(G_USEC_PER_SEC / 10); // what was sent arrives
    std::string command;
    for (int i = 2; i < argc; ++i) {
        std::string const word = argv[i];
        command += i == 2 || word == "call" ? "" : (command.empty() ? "" : " ") + word;
    }
    Corpus corpus(argv[1], command);
    for (Message const& message : monitor.Take()) {
        corpus.Add(message.get());
    }
    corpus.Finish();
}

} // namespace

int main(int argc, char* argv[])
{
    try {
        Run(argc, argv);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "record_messages: %s\n", error.what());
        return 1;
    }
    return 0;
}
