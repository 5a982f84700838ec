// SPDX-License-Identifier: MIT
#include "BroadcastDataRows.h"
#include "MethodTest.h"

using namespace zviptv::test;

namespace {

std::vector<Method<IBroadcastData>> All()
{
    std::vector<Method<IBroadcastData>> rows = BroadcastDataNumberRows();
    for (Method<IBroadcastData>& row : BroadcastDataRecordRows()) {
        rows.push_back(row);
    }
    return rows;
}

TEST(BroadcastDataRows, CoverTheInterface)
{
    EXPECT_EQ(All().size(), 24U);
}

class BroadcastDataTable : public MethodTest<IBroadcastData>
{
protected:
    BroadcastDataTable() : MethodTest("BROADCASTDATA", "BroadcastDataProxy.cpp") {}
    IBroadcastData& Object() override { return *CreateBroadcast(); }
};

TEST_P(BroadcastDataTable, SendsAndDecodes)
{
    ExpectAccepted();
}

TEST_P(BroadcastDataTable, DecodesForEveryResult)
{
    ExpectResultsAndDecoding();
}

TEST_P(BroadcastDataTable, FailedExchangeLeavesOutputsUntouched)
{
    ExpectStartValuesAfterFailedExchange();
}

TEST_P(BroadcastDataTable, IsRefusedAfterDestroy)
{
    ExpectRefusalAfterDestroy(CIPTVServiceAPI::DestroyBroadcastData);
}

TEST_P(BroadcastDataTable, ThrowsWithoutAResult)
{
    ExpectFailureWithoutAResult();
}

INSTANTIATE_TEST_SUITE_P(BroadcastData, BroadcastDataTable, testing::ValuesIn(All()),
                         RowName<IBroadcastData>);

class BroadcastDataDecoding : public BroadcastDataTable
{
};

TEST_P(BroadcastDataDecoding, ThrowsOnMalformedNumbers)
{
    ExpectFailureOnMalformedNumbers();
}

INSTANTIATE_TEST_SUITE_P(BroadcastData, BroadcastDataDecoding,
                         testing::ValuesIn(Select<IBroadcastData>(All(), HasNumbers)),
                         RowName<IBroadcastData>);

class BroadcastDataRecord : public BroadcastDataTable
{
};

TEST_P(BroadcastDataRecord, CopiesItsSizeForDataOfAnySize)
{
    ExpectRecordsOfAnySize();
}

INSTANTIATE_TEST_SUITE_P(BroadcastData, BroadcastDataRecord,
                         testing::ValuesIn(Select<IBroadcastData>(All(), HasRecords)),
                         RowName<IBroadcastData>);

} // namespace
