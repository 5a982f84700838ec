// SPDX-License-Identifier: MIT
#include "PlainClient.h"

#include <systemd/sd-bus.h>

#include <cstring>

namespace zviptv::bench {

namespace {

int Check(int result, char const* what)
{
    if (result < 0) {
        Fail(what, std::strerror(-result));
    }
    return result;
}

struct Release
{
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
using Message = std::unique_ptr<sd_bus_message, Release>;
using Bus = std::unique_ptr<sd_bus, Release>;

Bus Connect()
{
    sd_bus* bus = nullptr;
    Check(sd_bus_open_system(&bus), "sd_bus_open_system");
    return Bus(bus);
}

Message NewCall(sd_bus* bus, std::string const& service, char const* path)
{
    sd_bus_message* call = nullptr;
    Check(sd_bus_message_new_method_call(bus, &call, service.c_str(), path, wire::Interface, wire::Method),
          "sd_bus_message_new_method_call");
    return Message(call);
}

Message Call(sd_bus* bus, sd_bus_message* call)
{
    sd_bus_message* answer = nullptr;
    Check(sd_bus_call(bus, call, static_cast<std::uint64_t>(wire::TimeoutMs) * 1000, nullptr, &answer),
          "sd_bus_call");
    return Message(answer);
}

void Append(sd_bus_message* message, std::initializer_list<wire::Entry> entries)
{
    Check(sd_bus_message_open_container(message, 'a', "{sv}"), "open array");
    for (wire::Entry const& entry : entries) {
        Check(sd_bus_message_open_container(message, 'e', "sv"), "open entry");
        Check(sd_bus_message_append_basic(message, 's', entry.key), "append key");
        Check(sd_bus_message_open_container(message, 'v', "ay"), "open variant");
        Check(sd_bus_message_append_array(message, 'y', entry.value.data(), entry.value.size()),
              "append bytes");
        Check(sd_bus_message_close_container(message), "close variant");
        Check(sd_bus_message_close_container(message), "close entry");
    }
    Check(sd_bus_message_close_container(message), "close array");
}

void ReadEntry(sd_bus_message* message, EntryReader& reader)
{
    char const* key = nullptr;
    Check(sd_bus_message_read_basic(message, 's', &key), "read key");
    char const* contents = nullptr;
    Check(sd_bus_message_peek_type(message, nullptr, &contents), "peek at variant");
    if (std::strcmp(contents, "ay") != 0) {
        Check(sd_bus_message_skip(message, "v"), "skip variant");
        return;
    }
    Check(sd_bus_message_enter_container(message, 'v', "ay"), "enter variant");
    void const* bytes = nullptr;
    std::size_t size = 0;
    Check(sd_bus_message_read_array(message, 'y', &bytes, &size), "read bytes");
    reader.Take(key, std::string_view(static_cast<char const*>(bytes), size));
    Check(sd_bus_message_exit_container(message), "exit variant");
}

void Read(sd_bus_message* message, EntryReader& reader)
{
    Check(sd_bus_message_enter_container(message, 'a', "{sv}"), "enter array");
    while (Check(sd_bus_message_enter_container(message, 'e', "sv"), "enter entry") > 0) {
        ReadEntry(message, reader);
        Check(sd_bus_message_exit_container(message), "exit entry");
    }
    Check(sd_bus_message_exit_container(message), "exit array");
    reader.Finish();
}

class SdBusClient final : public PlainClient
{
public:
    explicit SdBusClient(std::string const& service) : m_service(service), m_bus(Connect())
    {
        Check(sd_bus_match_signal(m_bus.get(), nullptr, service.c_str(), wire::SubscriberPath,
                                  wire::Interface, wire::Signal, OnSignal, this),
              "sd_bus_match_signal");
    }

    void Dispatch() override
    {
        while (Check(sd_bus_process(m_bus.get(), nullptr), "sd_bus_process") == 0) {
            Check(sd_bus_wait(m_bus.get(), UINT64_MAX), "sd_bus_wait");
        }
    }

private:
    void Exchange(char const* path, Entries request, EntryReader& reader) override
    {
        Message const call = NewCall(m_bus.get(), m_service, path);
        Append(call.get(), request);
        Message const answer = Call(m_bus.get(), call.get());
        Read(answer.get(), reader);
    }

    static int OnSignal(sd_bus_message* message, void* self, sd_bus_error* /*error*/)
    {
        PesReader reader(static_cast<SdBusClient*>(self)->m_receiver);
        Read(message, reader);
        return 0;
    }

    std::string const m_service;
    Bus const m_bus;
};

} // namespace

std::unique_ptr<Client> NewClient(std::string const& service)
{
    return std::make_unique<SdBusClient>(service);
}

} // namespace zviptv::bench
