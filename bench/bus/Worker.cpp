// SPDX-License-Identifier: MIT
// One client in a separate process. Executes the commands that it reads and answers each with a line of JSON:
//   call mute|ratings COUNT   calls, each timed
//   repeat mute|ratings COUNT calls, not timed
//   subscribe COUNT           adds receivers
//   unsubscribe               removes all receivers
//   rounds COUNT              subscribes and unsubscribes COUNT times
//   receive COUNT SIZE BATCH  waits for packets, and reports each batch to the service through the pipe. A
//                             single packet is compared byte by byte
//   memory                    reports the memory of the process
//   forget-peak               resets the peak of its memory
#include "Client.h"
#include "Process.h"

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace {

using namespace zviptv::bench;

int creditPipe = -1;
constexpr unsigned int SumOfRatings = wire::Ratings * (wire::Ratings - 1) / 2;

/// The received data. Receivers have no user data, so it is global.
struct Arrival
{
    std::size_t receivers = 1;
    std::size_t expected = 0;
    std::size_t size = 0;
    std::size_t batch = 0;
    std::size_t count = 0;
    std::int64_t first = 0;
    std::int64_t last = 0;
    std::size_t damaged = 0;
};
Arrival arrival;

bool IsWhole(Pes const& pes, std::size_t number)
{
    for (std::size_t i = 0; i < pes.size; ++i) {
        if (pes.data[i] != wire::ByteOf(number, i, pes.size)) {
            return false;
        }
    }
    return true;
}

/// Whether it is the next packet: compares the number, and both ends.
bool IsNext(Pes const& pes, std::size_t number)
{
    char const end = wire::ByteOf(number, 0, pes.size);
    return pes.size == arrival.size && pes.pts == number && pes.data[0] == end &&
           pes.data[pes.size - 1] == end;
}

void OnPes(Pes const& pes)
{
    std::int64_t const now = Now();
    if (arrival.count == 0) {
        arrival.first = now;
    }
    arrival.last = now;
    std::size_t const number = arrival.count / arrival.receivers;
    bool const isAlone = arrival.expected == arrival.receivers;
    if (!IsNext(pes, number) || (isAlone && !IsWhole(pes, number))) {
        ++arrival.damaged;
    }
    if (++arrival.count % arrival.batch == 0 && write(creditPipe, "+", 1) != 1) {
        throw std::runtime_error("cannot write to the pipe: the service does not read it");
    }
}

void OnAnyPes(Pes const& /*pes*/) {}

class Worker
{
public:
    explicit Worker(std::string const& service)
    {
        std::int64_t const start = Now();
        m_client = NewClient(service);
        m_client->MuteAudio(true);
        std::printf("{\"start\": %lld}\n", static_cast<long long>(Now() - start));
    }

    void Execute(std::istream& line)
    {
        std::string command;
        line >> command;
        auto const found = Commands().find(command);
        if (found == Commands().end()) {
            throw std::runtime_error("unknown command: " + command);
        }
        (this->*found->second)(line);
        std::fflush(stdout);
    }

private:
    using Command = void (Worker::*)(std::istream&);

    static std::map<std::string, Command> const& Commands()
    {
        static std::map<std::string, Command> const commands{
            {"call", &Worker::Call},           {"repeat", &Worker::Repeat},
            {"subscribe", &Worker::Subscribe}, {"unsubscribe", &Worker::Unsubscribe},
            {"rounds", &Worker::Rounds},       {"receive", &Worker::Receive},
            {"memory", &Worker::Memory},       {"forget-peak", &Worker::ForgetPeak}};
        return commands;
    }

    template <typename T>
    static T Next(std::istream& line)
    {
        T value{};
        if (!(line >> value)) {
            throw std::runtime_error("an argument of the command is missing or malformed");
        }
        return value;
    }

    std::function<void()> Method(std::istream& line)
    {
        if (Next<std::string>(line) == "mute") {
            return [this] { m_client->MuteAudio(true); };
        }
        return [this] {
            if (m_client->GetRatingInfo() != SumOfRatings) {
                throw std::runtime_error("the received ratings are damaged");
            }
        };
    }

    void Call(std::istream& line)
    {
        auto const method = Method(line);
        std::vector<std::int64_t> moments(Next<std::size_t>(line) + 1);
        std::int64_t const processor = ProcessorTime();
        moments[0] = Now();
        for (std::size_t i = 1; i < moments.size(); ++i) {
            method();
            moments[i] = Now();
        }
        std::printf("{\"cpu\": %lld, \"ns\": [", static_cast<long long>(ProcessorTime() - processor));
        for (std::size_t i = 1; i < moments.size(); ++i) {
            std::printf(i == 1 ? "%lld" : ",%lld", static_cast<long long>(moments[i] - moments[i - 1]));
        }
        std::printf("]}\n");
    }

    void Repeat(std::istream& line)
    {
        auto const method = Method(line);
        for (auto left = Next<std::size_t>(line); left > 0; --left) {
            method();
        }
        std::printf("{}\n");
    }

    void Subscribe(std::istream& line)
    {
        for (auto left = Next<std::size_t>(line); left > 0; --left) {
            m_client->Subscribe(OnPes);
            ++m_receivers;
        }
        std::printf("{}\n");
    }

    void Unsubscribe(std::istream& /*line*/)
    {
        m_client->Unsubscribe();
        m_receivers = 0;
        std::printf("{}\n");
    }

    void Rounds(std::istream& line)
    {
        std::int64_t const start = Now();
        auto const count = Next<std::size_t>(line);
        for (std::size_t i = 0; i < count; ++i) {
            m_client->Subscribe(OnAnyPes);
            m_client->Unsubscribe();
        }
        std::printf("{\"ns\": %lld}\n", static_cast<long long>(Now() - start));
    }

    void Receive(std::istream& line)
    {
        arrival = Arrival();
        arrival.receivers = m_receivers;
        arrival.expected = Next<std::size_t>(line) * m_receivers;
        arrival.size = Next<std::size_t>(line);
        arrival.batch = Next<std::size_t>(line) * m_receivers;
        std::int64_t const processor = ProcessorTime();
        while (arrival.count < arrival.expected) {
            m_client->Dispatch();
        }
        if (arrival.damaged > 0) {
            throw std::runtime_error("received packets are damaged or out of order");
        }
        std::printf("{\"cpu\": %lld, \"first\": %lld, \"last\": %lld}\n",
                    static_cast<long long>(ProcessorTime() - processor),
                    static_cast<long long>(arrival.first), static_cast<long long>(arrival.last));
    }

    void Memory(std::istream& /*line*/)
    {
        std::printf("{\"rss_kib\": %ld, \"peak_kib\": %ld, \"heap\": %zu}\n", StatusKiB("VmRSS"),
                    StatusKiB("VmHWM"), HeapBytes());
    }

    void ForgetPeak(std::istream& /*line*/)
    {
        ResetPeakMemory();
        std::printf("{}\n");
    }

    std::unique_ptr<Client> m_client;
    std::size_t m_receivers = 0;
};

void Run(std::string const& service)
{
    Worker worker(service);
    std::fflush(stdout);
    for (std::string text; std::getline(std::cin, text);) {
        std::istringstream line(text);
        worker.Execute(line);
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s UNIQUE-NAME-OF-THE-SERVICE DESCRIPTOR-OF-THE-PIPE\n", argv[0]);
        return 2;
    }
    zviptv::bench::DieWithParent();
    try {
        creditPipe = std::stoi(argv[2]);
        Run(argv[1]);
    } catch (std::exception const& failure) {
        std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
        return 1;
    }
    return 0;
}
