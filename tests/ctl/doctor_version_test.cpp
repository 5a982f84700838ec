#include "DoctorFixture.h"

#include "doctor/Gather.h"
#include "doctor/Versions.h"

#include <filesystem>
#include <fstream>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

/// A folder with the library under the name of another version.
class DoctorVersion : public CtlTest
{
protected:
    DoctorVersion() : m_file(m_bus.Directory() + "/libzv-iptv-service-api.so.0.9.9")
    {
        fs::copy_file(LIBRARY_PATH, m_file);
        fs::create_symlink(m_file, m_bus.Directory() + "/libzv-iptv-service-api.so.1");
    }

    std::string const m_file;
};

TEST_F(DoctorVersion, TheLibraryThatIsReallyLoadedIsNamed)
{
    Diagnosis const diagnosis = Diagnose({{"LD_LIBRARY_PATH", m_bus.Directory()}});
    EXPECT_EQ(5, diagnosis.result.code);
    EXPECT_EQ("version", diagnosis.Wrong());
    EXPECT_THAT(diagnosis.Text("version"), HasSubstr(", but " + m_file + ", which it has loaded, is 0.9.9"));
    EXPECT_EQ("unset LD_LIBRARY_PATH", diagnosis.Command("version"));
    EXPECT_EQ(m_file + " is in the way: LD_LIBRARY_PATH names its folder.",
              diagnosis.checks.at("version")["note"].asString());
}

/// The folder may be named through a link, and beside others.
TEST_F(DoctorVersion, ALinkToItsFolderIsFollowed)
{
    std::string const link = m_bus.Directory() + "/link";
    fs::create_directory_symlink(m_bus.Directory(), link);
    Diagnosis const diagnosis = Diagnose({{"LD_LIBRARY_PATH", "/nonexistent:" + link}});
    EXPECT_EQ("version", diagnosis.Wrong());
    EXPECT_EQ("unset LD_LIBRARY_PATH", diagnosis.Command("version"));
}

TEST_F(DoctorVersion, WhereNothingIsInTheWayItIsOk)
{
    Diagnosis const diagnosis = Diagnose();
    EXPECT_EQ("ok", diagnosis.State("version"));
    EXPECT_THAT(diagnosis.Text("version"), testing::StartsWith("zviptvctl "));
    EXPECT_THAT(diagnosis.Text("version"), HasSubstr(fs::canonical(LIBRARY_PATH).string()));
}

/// As an upgrade leaves it, the service that was not restarted included.
TEST_F(DoctorVersion, AServiceWhoseLibraryWasReplacedIsTold)
{
    m_service.Vanish();
    ChildProcess simulator({ZVIPTV_SIM_PATH, "--bus", "system", "--quiet", "--loop", "--ts", SAMPLE_PATH},
                           {{"LD_LIBRARY_PATH", m_bus.Directory()}});
    ASSERT_TRUE(WirePeer().WaitForOwner("org.corvel.zviptvapi.dbushelper", true)) << simulator.Errors();
    Diagnosis diagnosis = Diagnose();
    EXPECT_EQ(5, diagnosis.result.code);
    EXPECT_EQ("version", diagnosis.Wrong());
    EXPECT_THAT(diagnosis.Text("version"), testing::StartsWith("the service runs the library 0.9.9, "));

    fs::remove(m_file);
    diagnosis = Diagnose();
    EXPECT_EQ("version", diagnosis.Wrong());
    EXPECT_EQ("the service still runs the library that has been replaced since it started",
              diagnosis.Text("version"));
    EXPECT_EQ("kill -KILL " + std::to_string(simulator.Pid()), diagnosis.Command("version"));
}

TEST(DoctorVersionOf, IsWhatStandsBehindTheName)
{
    using ctl::doctor::VersionOf;
    EXPECT_EQ("1.0.0", VersionOf("/usr/lib/x86_64-linux-gnu/libzv-iptv-service-api.so.1.0.0"));
    EXPECT_EQ("1.2", VersionOf("libzv-iptv-service-api.so.1.2"));
    EXPECT_EQ("", VersionOf("/usr/lib/libzv-iptv-service-api.so.1")); // a copy without the link
    EXPECT_EQ("", VersionOf("/usr/lib/libzv-iptv-service-api.so"));
    EXPECT_EQ("", VersionOf("/usr/bin/application"));
    EXPECT_EQ("", VersionOf(""));
}

TEST_F(DoctorVersion, PolicyFilesAreThoseThatAreThere)
{
    using ctl::doctor::PolicyFiles;
    std::string const folder = m_bus.Directory();
    EXPECT_TRUE(PolicyFiles({folder, "/nonexistent"}).empty());
    std::string const file = folder + "/org.corvel.zviptvapi.dbushelper.conf";
    fs::copy_file(m_file, file);
    EXPECT_EQ(std::vector<std::string>{file}, PolicyFiles({"/nonexistent", folder}));
}

TEST(DoctorMachine, TheSimulatorBesideTheToolIsNamedWithItsFolder)
{
    PrivateBus const bus;
    std::string const tool = bus.Directory() + "/zviptvctl";
    EXPECT_EQ("zviptv-sim", ctl::doctor::LookUpMachine(tool).simulator);
    std::ofstream(bus.Directory() + "/zviptv-sim") << "#!/bin/sh\n";
    EXPECT_EQ(bus.Directory() + "/zviptv-sim", ctl::doctor::LookUpMachine(tool).simulator);
}

} // namespace
} // namespace zviptv::test
