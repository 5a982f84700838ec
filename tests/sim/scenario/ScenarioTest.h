// SPDX-License-Identifier: MIT
#pragma once

#include "ChildProcess.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace zviptv::test {

constexpr std::chrono::seconds Patience{60};

/// Runs zviptv-sim with a scenario, and a shell script as the application: $CTL is zviptvctl in it.
class ScenarioTest : public testing::Test
{
protected:
    ScenarioTest()
    {
        std::string name = testing::TempDir() + "scenario-XXXXXX";
        m_folder = mkdtemp(name.data());
    }
    ~ScenarioTest() override { std::filesystem::remove_all(m_folder); }

    std::string Path(std::string const& name) const { return m_folder + "/" + name; }

    /// Writes a file into the test's folder.
    std::string Write(std::string const& name, std::string const& text) const
    {
        std::ofstream(Path(name)) << text;
        return Path(name);
    }

    std::string Read(std::string const& name) const
    {
        std::ostringstream text;
        text << std::ifstream(Path(name)).rdbuf();
        return text.str();
    }

    ChildProcess& Start(std::string const& scenario, std::vector<std::string> const& options,
                        std::string const& script)
    {
        std::vector<std::string> command{ZVIPTV_SIM, "--ts",       ZVIPTV_SAMPLE_FILE,
                                         "--loop",   "--scenario", scenario};
        command.insert(command.end(), options.begin(), options.end());
        if (!script.empty()) {
            command.insert(command.end(), {"--", "sh", "-c", script});
        }
        m_process.emplace(command, std::map<std::string, std::string>{{"CTL", ZVIPTVCTL}, {"DIR", m_folder}});
        return *m_process;
    }

    /// Its exit status, or the signal as a shell has it.
    int Run(std::string const& text, std::string const& script, std::vector<std::string> const& options = {})
    {
        return End(Start(Write("test.scenario", text), options, script));
    }

    static int End(ChildProcess& process)
    {
        std::optional<ExitStatus> const status = process.Wait(Patience);
        EXPECT_TRUE(status) << "it does not end";
        return !status ? -1 : status->signal == 0 ? status->code : 128 + status->signal;
    }

    std::string Errors() const { return m_process->Errors(); }
    std::string Output() const { return m_process->Output(); }

    std::string m_folder;
    std::optional<ChildProcess> m_process;
};

/// A piece of script: waits until the command succeeds, and ends with status 99 when that does not come.
inline std::string Until(std::string const& command)
{
    return "n=0; until " + command + "; do n=$((n + 1)); [ $n -lt 400 ] || exit 99; sleep 0.05; done; ";
}

} // namespace zviptv::test
