// SPDX-License-Identifier: MIT
// A client of the C++ layer. It answers each line that it reads with a line of JSON:
//   call COUNT                makes that number of calls
//   receive COUNT SIZE BATCH  receives packets, and reports each batch to the service through the pipe
#include "Process.h"

#include <zviptv/client/Client.h>

#include <glib.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

using namespace zviptv::bench;

double Seconds(std::int64_t begin, std::int64_t end)
{
    return static_cast<double>(end - begin) / 1e9;
}

void Answer(std::int64_t begin, std::int64_t end, std::int64_t processor)
{
    std::printf("{\"seconds\": %.9f, \"cpu\": %.9f}\n", Seconds(begin, end),
                Seconds(processor, ProcessorTime()));
    std::fflush(stdout);
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
    Answer(begin, Now(), processor);
}

/// The time is that from the arrival of the first packet to that of the last one.
void Receive(zviptv::Television& television, int pipe, std::size_t count, std::size_t size, std::size_t batch)
{
    std::size_t received = 0;
    bool isRight = true;
    std::int64_t first = 0;
    std::int64_t last = 0;
    std::int64_t const processor = ProcessorTime();
    auto const subscription = television.SubscribePes({}, [&](zviptv::PesPacket const& packet) {
        last = Now();
        first = received == 0 ? last : first;
        bool const isReported = ++received % batch != 0 || write(pipe, "+", 1) == 1;
        isRight = isRight && isReported && packet.Data().Size() == size;
    });
    while (received < count) {
        g_main_context_iteration(nullptr, TRUE);
    }
    if (!isRight) {
        throw std::runtime_error("received packets are damaged, or the service does not read the pipe");
    }
    Answer(first, last, processor);
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
        std::string command;
        for (std::size_t count = 0; std::cin >> command >> count;) {
            if (command == "call") {
                Call(television, count);
            } else {
                std::size_t size = 0;
                std::size_t batch = 0;
                std::cin >> size >> batch;
                Receive(television, pipe, count, size, batch);
            }
        }
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "bench_layer: %s\n", failure.what());
        return 1;
    }
    return 0;
}
