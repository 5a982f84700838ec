// SPDX-License-Identifier: MIT
// The service. Prints its unique name, then executes the commands that it reads:
//   push COUNT SIZE BATCH  pushes packets
//   await COUNT            answers with a line as soon as there is this number of subscribers
// A byte in the pipe is the credit of one subscriber for one batch.
#include "Process.h"
#include "Service.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <sstream>
#include <stdexcept>

namespace {

using zviptv::bench::Service;

std::string ReadSome(int descriptor)
{
    std::array<char, 4096> bytes;
    auto const size = read(descriptor, bytes.data(), bytes.size());
    return std::string(bytes.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
}

constexpr std::ptrdiff_t NotAwaited = -1;

/// awaited: the number of subscribers to report, or NotAwaited
void Execute(Service& service, std::ptrdiff_t& awaited, std::string const& text)
{
    std::istringstream line(text);
    std::string command;
    std::size_t count = 0;
    std::size_t size = 0;
    std::size_t batch = 0;
    if (line >> command >> count && command == "await") {
        awaited = static_cast<std::ptrdiff_t>(count);
        return;
    }
    if (!(line >> size >> batch) || command != "push" || size == 0 || batch == 0) {
        throw std::runtime_error("unknown command: " + text);
    }
    service.Push(count, size, batch);
}

/// Runs until standard input ends. The sender writes each command at once, and it is far shorter than a pipe.
void Serve(Service& service, int creditPipe)
{
    std::ptrdiff_t awaited = NotAwaited;
    while (true) {
        service.Work();
        if (awaited == static_cast<std::ptrdiff_t>(service.Subscribers())) {
            awaited = NotAwaited;
            std::printf("%zu\n", service.Subscribers());
            std::fflush(stdout);
        }
        short const events = service.WantsToWrite() ? POLLIN | POLLOUT : POLLIN;
        std::array<pollfd, 3> polled{
            {{service.Descriptor(), events, 0}, {creditPipe, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
        poll(polled.data(), polled.size(), -1);
        if ((polled[1].revents & POLLIN) != 0) {
            service.Credit(ReadSome(creditPipe).size());
        }
        if (polled[2].revents != 0) {
            std::string const text = ReadSome(STDIN_FILENO);
            if (text.empty()) {
                return;
            }
            Execute(service, awaited, text);
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench_service DESCRIPTOR-OF-THE-PIPE\n");
        return 2;
    }
    zviptv::bench::DieWithParent();
    try {
        Service service;
        std::printf("%s\n", service.Name().c_str());
        std::fflush(stdout);
        Serve(service, std::stoi(argv[1]));
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "bench_service: %s\n", failure.what());
        return 1;
    }
    return 0;
}
