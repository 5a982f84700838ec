// SPDX-License-Identifier: MIT
#include "doctor/EndpointProbe.h"

#include <zviptv/ConnectionHelperDBusClient.h>
#include <zviptv/Protocol.h>
#include <zviptv/ProxyDBusHelper.h>

#include <array>
#include <optional>
#include <stdexcept>

namespace zviptv::ctl::doctor {

namespace {

namespace function = protocol::function;
namespace key = protocol::key;
namespace type = protocol::type;

/// A request that changes nothing, and the numbers that applications read in the reply.
struct Question
{
    char const* type;
    char const* function;
    std::vector<std::pair<char const*, char const*>> arguments;
    std::vector<char const*> numbers;
};

/// This request ends subscriptions, of which the channel has none.
std::vector<Question> Questions()
{
    return {
        {type::PlayerControl,
         function::GetSourceState,
         {{key::HandleID, "256"}},
         {key::Result, key::SourceState}},
        {type::BroadcastData, function::SizeOfAudio, {{key::HandleID, "256"}}, {key::Result, key::Size}},
        {type::DataSubscriber, function::RequestPESCB, {{key::HandleID, "256"}, {key::On, "0"}}, {}},
        {type::ProgramGuide, function::ExistXmlForIPG, {}, {key::Data}},
    };
}

std::string ChannelPath(char const* type)
{
    return std::string("/org/corvel/zviptvapi/DbusCommunication/") + type;
}

/// The first entry with the key counts.
std::optional<std::string> ValueOf(GVariant* pairs, char const* wanted, std::string& otherKey)
{
    GVariantIter entries;
    g_variant_iter_init(&entries, pairs);
    char const* name = nullptr;
    char const* value = nullptr;
    while (g_variant_iter_next(&entries, "(&s&s)", &name, &value) != FALSE) {
        if (std::string(name) == wanted) {
            return value;
        }
        otherKey = name;
    }
    return std::nullopt;
}

bool HasOwner(BusProbe& bus, std::string const& name)
{
    return bus.CallBus("GetNameOwner", g_variant_new("(s)", name.c_str())).IsOf("(s)");
}

void ReadName(BusProbe& bus, Reply const& reply, EndpointFacts& facts)
{
    if (!reply.IsOf("(a(ss))")) {
        facts.naming = Naming::Unanswered;
        facts.named = reply.kind == Reply::Kind::Silence ? "no answer within 2 seconds"
                      : reply.kind == Reply::Kind::Error ? "the error " + reply.ErrorText()
                                                         : std::string("an answer of the type ") +
                                                               g_variant_get_type_string(reply.body.get());
        return;
    }
    Owned<GVariant> const pairs(g_variant_get_child_value(reply.body.get(), 0));
    std::optional<std::string> const name = ValueOf(pairs.get(), key::DBusName, facts.named);
    if (!name) {
        facts.naming = g_variant_n_children(pairs.get()) == 0 ? Naming::EmptyList : Naming::OtherKey;
        return;
    }
    facts.named = *name;
    facts.naming = name->empty()                            ? Naming::Empty
                   : g_dbus_is_name(name->c_str()) == FALSE ? Naming::Invalid
                   : HasOwner(bus, *name)                   ? Naming::Owned
                                                            : Naming::Dead;
}

void AddEntry(GVariantBuilder& builder, char const* name, std::string const& value)
{
    g_variant_builder_add(&builder, "{sv}", name,
                          g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, value.data(), value.size(), 1));
}

GVariant* RequestOf(Question const& question)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sv}"));
    AddEntry(builder, key::FunctionName, question.function);
    for (auto const& [name, value] : question.arguments) {
        AddEntry(builder, name, value);
    }
    return g_variant_new("(a{sv})", &builder);
}

/// Whether all values are byte arrays.
bool HasByteArrays(GVariant* entries, EndpointFacts& facts)
{
    GVariantIter values;
    g_variant_iter_init(&values, entries);
    char const* name = nullptr;
    GVariant* value = nullptr;
    while (g_variant_iter_next(&values, "{&sv}", &name, &value) != FALSE) {
        Owned<GVariant> const owned(value);
        if (g_variant_is_of_type(value, G_VARIANT_TYPE_BYTESTRING) == FALSE) {
            facts.key = name;
            facts.detail = g_variant_get_type_string(value);
            return false;
        }
    }
    return true;
}

/// Reads the number like the library.
Answering ReadNumber(GVariant* entries, char const* name, EndpointFacts& facts)
{
    facts.key = name;
    Owned<GVariant> const value(g_variant_lookup_value(entries, name, G_VARIANT_TYPE_BYTESTRING));
    gsize size = 0;
    void const* const bytes =
        value == nullptr ? nullptr : g_variant_get_fixed_array(value.get(), &size, sizeof(char));
    if (size == 0) {
        return Answering::Missing;
    }
    facts.detail.assign(static_cast<char const*>(bytes), size);
    try {
        std::stoi(facts.detail);
        return Answering::Readable;
    } catch (std::logic_error const&) {
        return Answering::NoNumber;
    }
}

Answering ReadReply(Reply const& reply, Question const& question, EndpointFacts& facts)
{
    if (reply.kind == Reply::Kind::Silence) {
        return Answering::Silent;
    }
    if (reply.kind == Reply::Kind::Error) {
        facts.detail = reply.ErrorText();
        return Answering::Failed;
    }
    if (!reply.IsOf("(a{sv})")) {
        facts.detail = g_variant_get_type_string(reply.body.get());
        return Answering::OtherType;
    }
    Owned<GVariant> const entries(g_variant_get_child_value(reply.body.get(), 0));
    if (!HasByteArrays(entries.get(), facts)) {
        return Answering::OtherValue;
    }
    for (char const* const number : question.numbers) {
        Answering const answering = ReadNumber(entries.get(), number, facts);
        if (answering != Answering::Readable) {
            return answering;
        }
    }
    return Answering::Readable;
}

EndpointFacts Probe(BusProbe& bus, std::string const& owner, Question const& question)
{
    EndpointFacts facts;
    facts.type = question.type;
    facts.function = question.function;
    Reply const announced = Announce(bus, owner, question.type, "y");
    ReadName(bus, announced, facts);
    if (facts.naming == Naming::Owned) {
        facts.answering = ReadReply(
            bus.Call({facts.named, ChannelPath(question.type), CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_IFACE,
                      CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_METHOD},
                     RequestOf(question)),
            question, facts);
    }
    if (announced.kind != Reply::Kind::Silence) {
        Announce(bus, owner, question.type, "n");
    }
    return facts;
}

/// Each further call could also take 2 seconds.
bool IsLast(EndpointFacts const& facts)
{
    return facts.naming == Naming::Unanswered || facts.answering == Answering::Silent;
}

} // namespace

Reply Announce(BusProbe& bus, std::string const& owner, char const* type, char const* add)
{
    GVariantBuilder pairs;
    g_variant_builder_init(&pairs, G_VARIANT_TYPE("a(ss)"));
    g_variant_builder_add(&pairs, "(ss)", key::DBusName, bus.Name().c_str());
    g_variant_builder_add(&pairs, "(ss)", key::Type, type);
    g_variant_builder_add(&pairs, "(ss)", key::Add, add);
    return bus.Call({owner, "/org/corvel/zviptvapi/dbushelper", CConnectionHelperDBusClient::BUSNAME,
                     CConnectionHelperDBusClient::METHOD},
                    g_variant_new("(a(ss))", &pairs));
}

std::vector<EndpointFacts> ProbeEndpoints(BusProbe& bus, std::string const& owner)
{
    std::vector<EndpointFacts> endpoints;
    for (Question const& question : Questions()) {
        endpoints.push_back(Probe(bus, owner, question));
        if (IsLast(endpoints.back())) {
            break;
        }
    }
    return endpoints;
}

} // namespace zviptv::ctl::doctor
