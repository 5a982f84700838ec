// SPDX-License-Identifier: MIT
// A client of the C++ layer. It obeys the lines that it reads and answers each with a line of JSON:
//   call COUNT                calls of MuteAudio, one after another
//   receive COUNT SIZE BATCH  waits for packets; of each batch the service hears through the pipe
#include "Process.h"

#include <zviptv/client/Client.h>

#include <glib.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using namespace zviptv::bench;

double Seconds(std::int64_t begin, std::int64_t end)
{
    return static_cast<double>(end - begin) / 1e9;
}

void Call(zviptv::Television& television, std::size_t count)
{
    std::int64_t const begin = Now();
    std::int64_t const processor = ProcessorTime();
    for (std::size_t i = 0; i < count; ++i) {
        if (!television.Player().MuteAudio(true)) {
            throw std::runtime_error("MuteAudio failed");
        }
    }
    std::printf("{\"seconds\": %.9f, \"cpu\": %.9f}\n", Seconds(begin, Now()),
                Seconds(processor, ProcessorTime()));
}

void Receive(zviptv::Television& television, int pipe, std::size_t count, std::size_t size, std::size_t batch)
{
    std::size_t arrived = 0;
    std::int64_t first = 0;
    std::int64_t last = 0;
    std::int64_t const processor = ProcessorTime();
    auto const subscription = television.SubscribePes({}, [&](zviptv::PesPacket const& packet) {
        last = Now();
        first = arrived == 0 ? last : first;
        if (packet.Data().Size() != size) {
            throw std::runtime_error("a packet has arrived damaged");
        }
        if (++arrived % batch == 0 && write(pipe, "+", 1) != 1) {
            throw std::runtime_error("the service does not read what it is told");
        }
    });
    while (arrived < count) {
        g_main_context_iteration(nullptr, TRUE);
    }
    std::printf("{\"seconds\": %.9f, \"cpu\": %.9f}\n", Seconds(first, last),
                Seconds(processor, ProcessorTime()));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench_layer DESCRIPTOR-OF-THE-PIPE\n");
        return 2;
    }
    DieWithParent();
    try {
        int const pipe = std::stoi(argv[1]);
        zviptv::Television television;
        for (std::string text; std::getline(std::cin, text);) {
            std::istringstream line(text);
            std::string command;
            std::size_t count = 0;
            std::size_t size = 0;
            std::size_t batch = 1;
            line >> command >> count >> size >> batch;
            command == "call" ? Call(television, count) : Receive(television, pipe, count, size, batch);
            std::fflush(stdout);
        }
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "bench_layer: %s\n", failure.what());
        return 1;
    }
    return 0;
}
