// SPDX-License-Identifier: MIT
#pragma once

#include "SimulatorTest.h"

#include "../stream/StreamBuilder.h"

#include <fstream>

namespace zviptv::test {

/// The simulator with a small stream made for a test.
class GeneratedStream : public Simulator
{
protected:
    /// Starts to play the stream.
    ChildProcess& Play(StreamBuilder const& builder, std::vector<std::string> const& options = {})
    {
        std::string const path = m_bus.Directory() + "/made.ts";
        Bytes const& stream = builder.Stream();
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<char const*>(stream.data()), static_cast<std::streamsize>(stream.size()));
        std::vector<std::string> all{"--ts", path, "--speed", "1000"};
        all.insert(all.end(), options.begin(), options.end());
        return Start(all);
    }

    /// Plays the stream to its end.
    void PlayToTheEnd(StreamBuilder const& builder, std::vector<std::string> const& options = {})
    {
        ASSERT_TRUE(Play(builder, options).WaitForErrors("the stream has ended", Patience));
    }

    Application m_application;
};

} // namespace zviptv::test
