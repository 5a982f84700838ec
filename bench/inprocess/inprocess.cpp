// SPDX-License-Identifier: MIT
#include "Allocations.h"
#include "LocalChannel.h"
#include "Messages.h"
#include "Workloads.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// The name of a benchmark is <what>/<entries>/<bytes of a value>, or workload/<name>. With
// G_SLICE=always-malloc in the environment, which makes GLib's slices visible, each also reports the
// allocations of one round.

using namespace zviptv;
using namespace zviptv::test;

namespace {

using Run = std::function<void()>;

/// One round on messages with the given number of entries and of bytes per entry.
using Maker = Run (*)(std::size_t entries, std::size_t size);

std::size_t BytesOf(std::size_t entries, std::size_t size)
{
    return entries * size;
}

/// Copies the bytes of the values between two existing buffers.
Run Copying(std::size_t entries, std::size_t size)
{
    auto const from = std::make_shared<std::vector<char>>(BytesOf(entries, size), 'v');
    auto const to = std::make_shared<std::vector<char>>(BytesOf(entries, size), '\0');
    return [=] {
        benchmark::DoNotOptimize(std::memcpy(to->data(), from->data(), to->size()));
        benchmark::ClobberMemory();
    };
}

/// The same into newly allocated memory, which everyone who keeps a copy needs. The heap may return memory
/// that was freed before.
Run CopyingIntoHeap(std::size_t entries, std::size_t size)
{
    auto const from = std::make_shared<std::vector<char>>(BytesOf(entries, size), 'v');
    return [=] {
        // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): uninitialised memory
        std::unique_ptr<void, decltype(&std::free)> const to(std::malloc(from->size()), std::free);
        benchmark::DoNotOptimize(std::memcpy(to.get(), from->data(), from->size()));
        benchmark::ClobberMemory();
    };
}

template <Owned<GVariant> (*Encode)(CMessageBuffer const&)>
Run Encoding(std::size_t entries, std::size_t size)
{
    auto const message = std::make_shared<CMessageBuffer>(MakeMessage(entries, size));
    return [=] { benchmark::DoNotOptimize(Encode(*message)); };
}

template <Owned<GVariant> (*Encode)(CMessageBuffer const&), CMessageBuffer (*Decode)(GVariant*)>
Run Decoding(std::size_t entries, std::size_t size)
{
    std::shared_ptr<GVariant> const body = Arrived(Encode(MakeMessage(entries, size)).get());
    return [=] { benchmark::DoNotOptimize(Decode(body.get())); };
}

/// GIO's part without the sending: converts the encoded body to the bytes of a message.
Run WritingGIO(std::size_t entries, std::size_t size)
{
    std::shared_ptr<GVariant> const body = EncodeForPeer(MakeMessage(entries, size));
    return [=] { benchmark::DoNotOptimize(ToWire(body.get())); };
}

/// Converts the bytes back to a body.
Run ReadingGIO(std::size_t entries, std::size_t size)
{
    auto const wire = std::make_shared<Wire>(ToWire(EncodeForPeer(MakeMessage(entries, size)).get()));
    return [=] { benchmark::DoNotOptimize(FromWire(*wire)); };
}

bool CountsAllocations()
{
    char const* const slices = std::getenv("G_SLICE");
    return slices != nullptr && std::strcmp(slices, "always-malloc") == 0;
}

void Repeat(benchmark::State& state, Run const& run)
{
    run();
    for (auto _ : state) {
        run();
    }
    if (CountsAllocations()) {
        Allocations const before = Allocations::SoFar();
        run();
        Allocations const spent = Allocations::SoFar() - before;
        state.counters["allocations"] = static_cast<double>(spent.count);
        state.counters["allocated_bytes"] = static_cast<double>(spent.bytes);
    }
}

void Register(std::string const& what, Maker make, std::size_t entries, std::size_t size)
{
    std::string const name = what + '/' + std::to_string(entries) + '/' + std::to_string(size);
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        Repeat(state, make(entries, size));
        state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                                static_cast<std::int64_t>(BytesOf(entries, size)));
    });
}

void RegisterAll(std::size_t entries, std::size_t size)
{
    Register("memcpy", Copying, entries, size);
    Register("memcpy_heap", CopyingIntoHeap, entries, size);
    Register("peer_encode", Encoding<EncodeForPeer>, entries, size);
    Register("peer_decode", Decoding<EncodeForPeer, DecodeFromPeer>, entries, size);
    Register("helper_encode", Encoding<EncodeForHelper>, entries, size);
    Register("helper_decode", Decoding<EncodeForHelper, DecodeFromHelper>, entries, size);
    Register("gio_write", WritingGIO, entries, size);
    Register("gio_read", ReadingGIO, entries, size);
}

void RegisterWorkloads()
{
    for (Workload const& workload : AllWorkloads()) {
        benchmark::RegisterBenchmark(("workload/" + workload.name).c_str(), [=](benchmark::State& state) {
            workload.prepare();
            Repeat(state, workload.run);
        });
    }
}

} // namespace

int main(int argc, char** argv)
{
    for (std::size_t const size : {1U, 16U, 256U, 4096U, 65536U, 262144U, 1048576U, 4194304U, 8388608U}) {
        RegisterAll(1, size);
    }
    for (std::size_t const entries : {10U, 100U, 1000U}) {
        RegisterAll(entries, 16);
    }
    RegisterWorkloads();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
