// SPDX-License-Identifier: MIT
#pragma once

#include "ClientTest.h"

#include <functional>
#include <string>

namespace zviptv::test {

/// A function of the layer, in both forms: the request that it sends, a reply, and the decoded result.
struct FunctionRow
{
    std::string name;
    WireEntries request; ///< from "functionname" on
    WireEntries reply;
    std::function<void(Television&)> checkBlocking;
    std::function<void(Television&)> checkAsync;
};

/// `call` calls the function on a television, with further arguments for the form that does not block.
template <class T, class Call>
FunctionRow Row(WireEntries request, WireEntries reply, T const& expected, Call const& call)
{
    std::string name = request.front().bytes;
    return {std::move(name), std::move(request), std::move(reply),
            [=](Television& television) {
                Result<T> const result = call(television);
                ASSERT_TRUE(Succeeded(result));
                EXPECT_TRUE(*result == expected);
            },
            [=](Television& television) {
                Outcome<T> outcome;
                call(television, outcome.Take());
                ASSERT_TRUE(outcome.Await());
                ASSERT_TRUE(Succeeded(*outcome));
                EXPECT_TRUE(**outcome == expected);
            }};
}

/// A function without a value.
template <class Call>
FunctionRow Row(WireEntries request, Call const& call)
{
    std::string name = request.front().bytes;
    return {std::move(name), std::move(request), Entries({{"result_internal", "1"}}),
            [=](Television& television) { EXPECT_TRUE(Succeeded(call(television))); },
            [=](Television& television) {
                Outcome<void> outcome;
                call(television, outcome.Take());
                ASSERT_TRUE(outcome.Await());
                EXPECT_TRUE(Succeeded(*outcome));
            }};
}

/// The entries of both lists.
inline WireEntries Joined(std::initializer_list<TextEntry> first, std::initializer_list<TextEntry> rest)
{
    WireEntries entries = Entries(first);
    WireEntries const others = Entries(rest);
    entries.insert(entries.end(), others.begin(), others.end());
    return entries;
}

inline WireEntries Reply(std::initializer_list<TextEntry> values)
{
    return Joined({{"result_internal", "1"}}, values);
}

/// The request of a television's first object.
inline WireEntries Request(std::string const& function, std::initializer_list<TextEntry> arguments = {})
{
    return Joined({{"functionname", function}, {"handleID", "256"}}, arguments);
}

/// Runs rows in both forms. Each of their tests has a television, and a service.
class FunctionTest : public TelevisionTest
{
protected:
    void Check(FunctionRow const& row)
    {
        SCOPED_TRACE(row.name);
        m_service->AnswerWith(row.name, row.reply);
        for (auto const& check : {row.checkBlocking, row.checkAsync}) {
            m_service->ClearRecords();
            check(*m_television);
            ASSERT_EQ(m_service->Requests().size(), 1U);
            EXPECT_EQ(m_service->LastRequest().entries, row.request);
        }
    }
};

} // namespace zviptv::test
