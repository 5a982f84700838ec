// SPDX-License-Identifier: MIT
#include "proxy/Subscribers.h"

#include <zviptv/IPTVTypes.h>

#include <gtest/gtest.h>

namespace {

using Captions = zviptv::Subscribers<ZVCaption>;

Captions* table = nullptr;
int late = 0;

void Late(ZVCaption& /*caption*/, void* /*userData*/)
{
    ++late;
}

void CloseAndAdd(ZVCaption& /*caption*/, void* /*userData*/)
{
    table->Close();
    table->Add(2, Late);
}

// Like a callback that destroys the proxy while another thread is about to subscribe.
TEST(SubscribersTable, AddsNobodyToAFinishedDispatch)
{
    Captions captions;
    table = &captions;
    captions.Add(1, CloseAndAdd);
    ZVCaption caption{};
    captions.Deliver(caption, [] {});
    EXPECT_EQ(late, 0);
    EXPECT_TRUE(captions.IsEmpty());
}

} // namespace
