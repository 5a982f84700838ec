// SPDX-License-Identifier: MIT
#include "ProxyTest.h"

#include <zviptv/ProxyDBusHelper.h>

using namespace zviptv::test;

namespace {

/// Calls of one thread wait for the service while another one destroys their objects.
class OutstandingCalls : public ServiceTest
{
protected:
    /// Runs `destroy` while `call`, a request for `function`, waits for its answer.
    template <typename Call>
    void DestroyDuring(std::string const& function, Call call, int (*destroy)())
    {
        m_service.ClearRecords();
        std::future<bool> answered = std::async(std::launch::async, call);
        ASSERT_TRUE(m_service.WaitForRequest(function));
        EXPECT_EQ(destroy(), 0);
        m_destroyedInTime +=
            answered.wait_for(std::chrono::seconds(0)) == std::future_status::timeout ? 1 : 0;
        answered.get(); // with or without the answer, but without a crash
    }

    int m_destroyedInTime = 0;
    CProxyDBusHelper m_other{"FENCE"}; // keeps the connection
    LoopThread m_loop;
};

TEST_F(OutstandingCalls, EndSafelyWhenTheirObjectIsDestroyed)
{
    WireEntries const answer =
        Entries({{"result_internal", "1"}, {"size", "3"}, {"data", "x"}, {"stcCount", "9"}});
    m_service.AnswerByDefault(WireAnswer(answer).After(std::chrono::milliseconds(100)));
    for (int round = 0; round < 5; ++round) {
        IPlayerControl* const player = CreatePlayer();
        IBroadcastData* const broadcast = CreateBroadcast();
        IIPGUtil* const guide = CreateGuide();
        unsigned long long clock = 0;
        unsigned int size = 0;
        std::string genre;
        DestroyDuring(
            "GetSTCCount", [&] { return player->GetSTCCount(clock); }, CIPTVServiceAPI::DestroyPlayerControl);
        DestroyDuring(
            "SizeOfAudio", [&] { return broadcast->SizeOfAudio(size); },
            CIPTVServiceAPI::DestroyBroadcastData);
        DestroyDuring(
            "GetGenre", [&] { return guide->GetGenre(1, genre); }, CIPTVServiceAPI::DestroyIPGUtil);
    }
    EXPECT_GT(m_destroyedInTime, 0);
}

} // namespace
