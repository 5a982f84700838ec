// SPDX-License-Identifier: MIT
#include "DoctorFixture.h"
#include "Processes.h"

#include "doctor/Gather.h"
#include "doctor/Versions.h"

#include <filesystem>
#include <fstream>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

/// A folder with the library under the name of another version.
class DoctorVersion : public DoctorOfAService
{
protected:
    DoctorVersion() : m_file(m_bus.Directory() + "/libzv-iptv-service-api.so.0.9.9")
    {
        fs::copy_file(LIBRARY_PATH, m_file);
        fs::create_symlink(m_file, m_bus.Directory() + "/libzv-iptv-service-api.so.1");
    }

    std::string const m_file;
};

TEST_F(DoctorVersion, ReportsTheLoadedLibrary)
{
    Diagnosis const diagnosis = Diagnose({{"LD_LIBRARY_PATH", m_bus.Directory()}});
    EXPECT_EQ(diagnosis.result.code, 5);
    EXPECT_EQ(diagnosis.Wrong(), "version");
    EXPECT_THAT(diagnosis.Text("version"), HasSubstr(", but " + m_file + ", which it has loaded, is 0.9.9"));
    EXPECT_EQ(diagnosis.Command("version"), "unset LD_LIBRARY_PATH");
    EXPECT_EQ(diagnosis.checks.at("version")["note"].asString(),
              m_file + " is found first: its folder is in LD_LIBRARY_PATH.");
}

/// The folder may be named through a link, and beside others.
TEST_F(DoctorVersion, FollowsALinkToItsFolder)
{
    std::string const link = m_bus.Directory() + "/link";
    fs::create_directory_symlink(m_bus.Directory(), link);
    Diagnosis const diagnosis = Diagnose({{"LD_LIBRARY_PATH", "/nonexistent:" + link}});
    EXPECT_EQ(diagnosis.Wrong(), "version");
    EXPECT_EQ(diagnosis.Command("version"), "unset LD_LIBRARY_PATH");
}

TEST_F(DoctorVersion, IsOkWithoutAnotherLibrary)
{
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.State("version"), "ok");
    EXPECT_THAT(diagnosis.Text("version"), testing::StartsWith("zviptvctl "));
    EXPECT_THAT(diagnosis.Text("version"), HasSubstr(fs::canonical(LIBRARY_PATH).string()));
}

/// As an upgrade leaves it, the service that was not restarted included.
TEST_F(DoctorVersion, ReportsAServiceWhoseLibraryWasReplaced)
{
    m_service.Vanish();
    ChildProcess simulator({ZVIPTV_SIM_PATH, "--bus", "system", "--quiet", "--loop", "--ts", SAMPLE_PATH},
                           {{"LD_LIBRARY_PATH", m_bus.Directory()}});
    ASSERT_TRUE(WirePeer().WaitForOwner("org.corvel.zviptvapi.dbushelper", true)) << simulator.Errors();
    Diagnosis diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.result.code, 5);
    EXPECT_EQ(diagnosis.Wrong(), "version");
    EXPECT_THAT(diagnosis.Text("version"), testing::StartsWith("the service runs the library 0.9.9, "));

    fs::remove(m_file);
    diagnosis = Diagnose();
    EXPECT_EQ(diagnosis.Wrong(), "version");
    EXPECT_EQ(diagnosis.Text("version"),
              "the service still runs the library that has been replaced since it started");
    EXPECT_EQ(diagnosis.Command("version"), "kill -KILL " + std::to_string(OnlyChildOf(simulator.Pid())));
}

TEST(DoctorVersionOf, IsThePartAfterTheName)
{
    using ctl::doctor::VersionOf;
    EXPECT_EQ(VersionOf("/usr/lib/x86_64-linux-gnu/libzv-iptv-service-api.so.1.0.0"), "1.0.0");
    EXPECT_EQ(VersionOf("libzv-iptv-service-api.so.1.2"), "1.2");
    EXPECT_EQ(VersionOf("/usr/lib/libzv-iptv-service-api.so.1"), ""); // a copy without the link
    EXPECT_EQ(VersionOf("/usr/lib/libzv-iptv-service-api.so"), "");
    EXPECT_EQ(VersionOf("/usr/bin/application"), "");
    EXPECT_EQ(VersionOf(""), "");
}

TEST_F(DoctorVersion, ListsTheExistingPolicyFiles)
{
    using ctl::doctor::PolicyFiles;
    std::string const folder = m_bus.Directory();
    EXPECT_TRUE(PolicyFiles({folder, "/nonexistent"}).empty());
    std::string const file = folder + "/org.corvel.zviptvapi.dbushelper.conf";
    fs::copy_file(m_file, file);
    EXPECT_EQ(PolicyFiles({"/nonexistent", folder}), std::vector<std::string>{file});
}

TEST(DoctorMachine, FindsTheSimulatorBesideTheTool)
{
    PrivateBus const bus;
    std::string const tool = bus.Directory() + "/zviptvctl";
    EXPECT_EQ(ctl::doctor::LookUpMachine(tool).simulator, "zviptv-sim");
    std::ofstream(bus.Directory() + "/zviptv-sim") << "#!/bin/sh\n";
    EXPECT_EQ(ctl::doctor::LookUpMachine(tool).simulator, bus.Directory() + "/zviptv-sim");
}

} // namespace
} // namespace zviptv::test
