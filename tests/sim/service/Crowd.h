// SPDX-License-Identifier: MIT
#pragma once

#include "DenseStream.h"
#include "SimulatorTest.h"

#include <json/value.h>

#include <memory>
#include <string>
#include <vector>

namespace zviptv::test {

/// The JSON objects of the complete lines in a text. Throws std::runtime_error for a line that is none.
std::vector<Json::Value> JsonLines(std::string const& text);

/// The data that one `zviptvctl pes` or `caption` received.
struct Received
{
    std::vector<Json::Value> packets;
    std::string payload; ///< of all of them

    /// Those of a PID, or all when there is none, in their order.
    std::vector<std::string> Of(int pid) const;
};

/// The simulator with a dense stream, and applications that are processes.
class Crowd : public Simulator
{
protected:
    /// Plays a dense stream over and over.
    ChildProcess& Play(DensePlan const& plan, std::vector<std::string> options = {});

    /// The last status that the simulator, started with --json, has shown; null before the first.
    Json::Value Status() const;

    /// Waits until a status shows the given number of them.
    bool WaitForSubscribers(std::size_t count) const;

    std::unique_ptr<ChildProcess> Run(std::vector<std::string> arguments);

    /// `count` processes that get `packets` packets each.
    std::vector<Received> Gather(std::string const& command, std::size_t count, std::size_t packets);

    Bytes m_stream;
};

/// Whether the packets are a run of the stream's, which is played over and over: none missing, none twice.
testing::AssertionResult IsRunOf(std::vector<std::string> const& got, std::vector<std::string> const& wanted);

} // namespace zviptv::test
