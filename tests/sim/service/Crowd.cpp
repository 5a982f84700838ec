// SPDX-License-Identifier: MIT
#include "Crowd.h"

#include "Files.h"
#include "Json.h"
#include "WaitUntil.h"

#include <algorithm>

namespace zviptv::test {

std::vector<Json::Value> JsonLines(std::string const& text)
{
    std::vector<Json::Value> values;
    for (std::size_t at = 0, end = 0; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
        values.push_back(ParseJson(text.substr(at, end - at)));
    }
    return values;
}

std::vector<std::string> Received::Of(int pid) const
{
    std::vector<std::string> bytes;
    std::size_t at = 0;
    for (Json::Value const& packet : packets) {
        std::size_t const size = packet["size"].asUInt();
        if (!packet.isMember("pid") || packet["pid"] == pid) {
            bytes.push_back(payload.substr(at, size));
        }
        at += size;
    }
    return bytes;
}

ChildProcess& Crowd::Play(DensePlan const& plan, std::vector<std::string> options)
{
    std::string const path = m_bus.Directory() + "/dense.ts";
    m_stream = WriteDenseStream(path, plan);
    options.insert(options.end(), {"--ts", path, "--loop"});
    return Start(options);
}

Json::Value Crowd::Status() const
{
    std::string const output = m_simulator->Output();
    std::size_t const at = output.rfind("\"event\":\"status\"", output.rfind('\n'));
    if (at == std::string::npos || output.find('\n', at) == std::string::npos) {
        return {};
    }
    std::size_t const begin = output.rfind('\n', at) + 1;
    return JsonLines(output.substr(begin, output.find('\n', at) + 1 - begin)).at(0);
}

bool Crowd::WaitForSubscribers(std::size_t count) const
{
    return WaitUntil([&] { return Status()["subscribers"].size() == count; }, 2 * Patience);
}

std::unique_ptr<ChildProcess> Crowd::Run(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), ZVIPTVCTL);
    return std::make_unique<ChildProcess>(arguments);
}

std::vector<Received> Crowd::Gather(std::string const& command, std::size_t count, std::size_t packets)
{
    auto const fileOf = [this](std::size_t i) { return m_bus.Directory() + "/" + std::to_string(i); };
    std::vector<std::unique_ptr<ChildProcess>> processes;
    for (std::size_t i = 0; i < count; ++i) {
        processes.push_back(Run({command, "--json", "--count", std::to_string(packets), "--out", fileOf(i)}));
    }
    std::vector<Received> all;
    for (std::size_t i = 0; i < count; ++i) {
        EXPECT_EQ(processes[i]->Wait(2 * Patience), (ExitStatus{0, 0})) << processes[i]->Errors();
        all.push_back({JsonLines(processes[i]->Output()), ReadFile(fileOf(i))});
    }
    return all;
}

testing::AssertionResult IsRunOf(std::vector<std::string> const& got, std::vector<std::string> const& wanted)
{
    if (got.empty()) {
        return testing::AssertionFailure() << "nothing came";
    }
    auto const first = std::find(wanted.begin(), wanted.end(), got.front());
    auto const start = static_cast<std::size_t>(first - wanted.begin());
    for (std::size_t i = 0; i < got.size(); ++i) {
        if (first == wanted.end() || got[i] != wanted[(start + i) % wanted.size()]) {
            return testing::AssertionFailure() << "packet " << i << " of " << got.size() << " is another one";
        }
    }
    return testing::AssertionSuccess();
}

} // namespace zviptv::test
