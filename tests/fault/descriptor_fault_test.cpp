// SPDX-License-Identifier: MIT
#include "FactoryObjects.h"
#include "FaultTest.h"
#include "NoFreeDescriptor.h"

#include <zviptv/ConnectionHelperDBusClient.h>

using namespace zviptv::test;

namespace {

/// An application and the service's side in one process, which runs out of descriptors while a loop runs.
class DescriptorFault : public FaultTest
{
protected:
    void SetUp() override
    {
        if (ChecksNeedADescriptor) {
            GTEST_SKIP() << ReasonToSkip;
        }
    }

    void CreateAll()
    {
        m_objects.Create();
        CIPTVServiceAPI::CreateConnectionHelper(&m_helper);
        ASSERT_NE(m_helper, nullptr);
    }

    static void DestroyAll()
    {
        FactoryObjects::Destroy();
        CIPTVServiceAPI::DestroyConnectionHelper();
    }

    /// The service of another process owns the name of the helper bus, for which this process's server waits.
    PeerProcess m_service{{"service"}};
    CProxyDBusHelper m_other{"FENCE"}; // keeps the connection
    LoopThread m_loop;
    FactoryObjects m_objects;
    IConnectionHelper* m_helper = nullptr;
};

TEST_F(DescriptorFault, F18_NoFreeDescriptorAtCallCreateAndDestroy)
{
    Repeat(ShortOrLong(10, 1000), [this] {
        CreateAll();
        ASSERT_TRUE(m_objects.AreThere());
        ASSERT_EQ(m_objects.Answered(), 3);
        {
            NoFreeDescriptor const none;
            EXPECT_EQ(m_objects.Answered(), 3);
            EXPECT_FALSE(CConnectionHelperDBusClient::CheckConnection());
            DestroyAll();
            EXPECT_EQ(m_objects.Answered(), 0);
            CreateAll();
            EXPECT_FALSE(m_objects.AreThere());
            DestroyAll();
        }
    });
}

} // namespace
