// SPDX-License-Identifier: MIT
// A client of the C++ layer. It answers each line "call COUNT" with a line of JSON after that number of
// calls.
#include "Process.h"

#include <zviptv/client/Client.h>

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

} // namespace

int main()
{
    DieWithParent();
    try {
        zviptv::Television television;
        std::string command;
        for (std::size_t count = 0; std::cin >> command >> count;) {
            Call(television, count);
            std::fflush(stdout);
        }
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "bench_layer: %s\n", failure.what());
        return 1;
    }
    return 0;
}
