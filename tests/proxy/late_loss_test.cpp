// SPDX-License-Identifier: MIT
#include "ProxyKinds.h"
#include "ProxyTest.h"

using namespace zviptv::test;

namespace {

/// The loss of the service is handled only after the object has been destroyed and created again.
class LateLoss : public ServiceTest, public testing::WithParamInterface<ProxyKind>
{
protected:
    static ProxyKind const& Kind() { return GetParam(); }
    static void* Create() { return Kind().create(IPTV_PROFILE_DEFAULT, 0); }

    LoopThread m_loop;
};

TEST_P(LateLoss, DoesNotEndTheNewObject)
{
    ASSERT_NE(Create(), nullptr);
    m_log.HoldAt(Kind().Origin("m_DisconnectedCB"));
    m_service.Vanish();
    ASSERT_TRUE(m_log.WaitUntilHeld());
    Kind().destroy();
    FakeService const successor(m_bus.Address());
    void* const object = Create();
    ASSERT_NE(object, nullptr);
    m_log.Release();
    m_loop.Run([] {});
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, std::string("Destroy ") + Kind().className));
    EXPECT_TRUE(Kind().call(object));
}

std::vector<ProxyKind> SelfEndingKinds()
{
    std::vector<ProxyKind> kinds = KindsWithHandle();
    kinds.pop_back(); // the data subscriber stays
    return kinds;
}

INSTANTIATE_TEST_SUITE_P(Proxies, LateLoss, testing::ValuesIn(SelfEndingKinds()), KindName);

} // namespace
