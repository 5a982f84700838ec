// SPDX-License-Identifier: MIT
#include "FactoryObjects.h"
#include "FaultTest.h"
#include "GLibObjects.h"

#include <cstdlib>

using namespace zviptv::test;

namespace {

/// The process has switched off exit-on-close, and survives the end of its bus. None of its objects is
/// destroyed.
class BusRestartFault : public FaultTest
{
protected:
    BusRestartFault() { SharedConnection(); }

    /// Starts another bus with the service. Then the application creates its objects again.
    void CreateOn(PrivateBus& bus)
    {
        m_service.reset();
        setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.Address().c_str(), 1);
        m_service = std::make_unique<PeerProcess>(std::vector<std::string>{"service"});
        m_objects.Create();
        ASSERT_TRUE(m_objects.AreThere());
        ASSERT_EQ(m_objects.Answered(), 3);
        ASSERT_TRUE(m_objects.Subscribe(true));
    }

    std::unique_ptr<PeerProcess> m_service;
    FactoryObjects m_objects;
};

TEST_F(BusRestartFault, F17_ObjectsWorkAgainAtTheSameAddress)
{
    ConnectionPtr const keep = SharedConnection();
    Repeat(ShortOrLong(5, 100), [this] {
        m_bus.Restart();
        CreateOn(m_bus);
        RunPending();
    });
}

TEST_F(BusRestartFault, F17_ObjectsWorkAgainAtAnotherAddress)
{
    std::string const former = m_bus.Address();
    BusOptions elsewhere;
    elsewhere.setEnvironment = false;
    PrivateBus* last = &m_bus;
    std::unique_ptr<PrivateBus> current;
    ConnectionPtr const keep = SharedConnection();
    Repeat(ShortOrLong(5, 100), [&] {
        auto next = std::make_unique<PrivateBus>(elsewhere);
        last->Kill();
        CreateOn(*next);
        RunPending();
        current = std::move(next);
        last = current.get();
    });
    setenv("DBUS_SYSTEM_BUS_ADDRESS", former.c_str(), 1);
}

/// The same while another thread iterates the context, as applications do.
TEST_F(BusRestartFault, F17_ObjectsWorkAgainWhileALoopRuns)
{
    ConnectionPtr const keep = SharedConnection();
    LoopThread const loop;
    Repeat(ShortOrLong(5, 100), [this] {
        m_bus.Restart();
        CreateOn(m_bus);
    });
}

} // namespace
