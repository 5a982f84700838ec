// SPDX-License-Identifier: MIT
#pragma once

#include "FailureText.h"
#include "MethodTable.h"

namespace zviptv::test {

/// The checks for every row of a proxy whose methods read the service's result.
template <typename Interface>
class MethodTest : public ServiceTest, public testing::WithParamInterface<Method<Interface>>
{
protected:
    MethodTest(std::string type, std::string file) : m_type(std::move(type)), m_file(std::move(file)) {}

    virtual Interface& Object() = 0;

    Method<Interface> const& Row() const { return this->GetParam(); }

    /// The row's answer with `result` before it; `changed` takes the place of the values with its keys.
    void Answer(std::string const& result, WireEntries const& changed = {}, std::string const& without = {})
    {
        WireEntries entries = Entries({{"result_internal", result}});
        for (ReplyValue const& value : Row().reply) {
            if (value.key == without) {
                continue;
            }
            entries.push_back({value.key, "ay", value.value});
            for (WireEntry const& change : changed) {
                if (change.key == value.key) {
                    entries.back() = change;
                }
            }
        }
        m_service.AnswerWith(Row().request.front().bytes, entries);
    }

    /// Lines of the method's call since the log was cleared.
    Lines CallLines() const { return LinesOf(m_log, m_file + ": " + Row().function); }

    Lines ExpectedLines(std::string const& result) const
    {
        Lines lines{{ZV_LOG_INFO, ""}};
        if (Row().logsResult) {
            lines.emplace_back(ZV_LOG_ERROR, Row().function + ", retVal:" + result);
        }
        return lines;
    }

    void ExpectAccepted()
    {
        Interface& object = Object();
        Answer("1");
        m_log.Clear();
        Outcome const outcome = Row().call(object);
        EXPECT_TRUE(outcome.result);
        EXPECT_EQ(outcome.outputs, Row().decoded);
        EXPECT_EQ(CallLines(), ExpectedLines("1"));
        EXPECT_EQ(LastFailure(), NoFailure(Row().function));
        ExpectOneRequest();
    }

    void ExpectOneRequest()
    {
        ASSERT_EQ(m_service.Requests().size(), 1U);
        WireMessage const request = m_service.LastRequest();
        EXPECT_EQ(request.entries, Row().request);
        EXPECT_EQ(request.signature, "a{sv}");
        EXPECT_TRUE(request.HasOnlyByteArrays());
        EXPECT_EQ(request.path, "/org/corvel/zviptvapi/DbusCommunication/" + m_type);
        EXPECT_EQ(request.interface, "org.corvel.zviptvapi.DbusCommunication");
        EXPECT_EQ(request.member, "Send");
        EXPECT_EQ(request.sender, m_service.ClientOf(m_type));
    }

    /// The result 0 is false, -7 is true; both decode the answer.
    void ExpectResultsAndDecoding()
    {
        Interface& object = Object();
        Answer("0");
        m_log.Clear();
        Outcome const refused = Row().call(object);
        EXPECT_FALSE(refused.result);
        EXPECT_EQ(refused.outputs, Row().decoded);
        EXPECT_EQ(CallLines(), ExpectedLines("0"));
        EXPECT_EQ(LastFailure(), "refused | " + Row().function +
                                     " |  |  | the service refused: it answered with the result 0");
        Answer("-7");
        m_log.Clear();
        Outcome const accepted = Row().call(object);
        EXPECT_TRUE(accepted.result);
        EXPECT_EQ(accepted.outputs, Row().decoded);
        EXPECT_EQ(CallLines(), ExpectedLines("1"));
        EXPECT_EQ(LastFailure(), NoFailure(Row().function));
    }

    void ExpectStartValuesAfterFailedExchange()
    {
        Interface& object = Object();
        m_service.AnswerError(Row().request.front().bytes);
        m_log.Clear();
        Outcome const outcome = Row().call(object);
        EXPECT_FALSE(outcome.result);
        EXPECT_EQ(outcome.outputs, Row().start);
        EXPECT_EQ(CallLines(), (Lines{{ZV_LOG_INFO, ""}, {ZV_LOG_ERROR, "SendMessage failed."}}));
        EXPECT_EQ(LastFailure(),
                  "bus error | " + Row().function + " |  | org.corvel.test.Failed | scripted error");
    }

    void ExpectRefusalAfterDestroy(int (*destroy)())
    {
        Interface& object = Object();
        destroy();
        Outcome const outcome = Row().call(object);
        EXPECT_FALSE(outcome.result);
        EXPECT_EQ(outcome.outputs, Row().start);
        EXPECT_EQ(LastFailure(), GoneFailure(Row().function));
    }

    void ExpectFailureWithoutAResult()
    {
        Interface& object = Object();
        std::string const function = Row().request.front().bytes;
        m_service.AnswerWith(function, WireEntries());
        EXPECT_EQ(FailureOf([&] { Row().call(object); }), "invalid_argument: stoi");
        ExpectMalformed("result_internal", "a signed 32-bit decimal number", "nothing");
        Answer("yes");
        EXPECT_EQ(FailureOf([&] { Row().call(object); }), "invalid_argument: stoi");
        ExpectMalformed("result_internal", "a signed 32-bit decimal number", "\"yes\"");
        Answer("2147483648");
        m_log.Clear();
        EXPECT_EQ(FailureOf([&] { Row().call(object); }), "out_of_range: stoi");
        EXPECT_EQ(CallLines(), (Lines{{ZV_LOG_INFO, ""}}));
    }

    void ExpectFailureOnMalformedNumbers()
    {
        Interface& object = Object();
        for (ReplyValue const& value : Row().reply) {
            if (!IsNumber(value)) {
                continue;
            }
            SCOPED_TRACE(value.key);
            std::string const conversion = NameOf(value.decoding);
            std::string const expected = ExpectedFor(value.decoding);
            Answer("1", {}, value.key);
            EXPECT_EQ(FailureOf([&] { Row().call(object); }), "invalid_argument: " + conversion);
            ExpectMalformed(value.key, expected, "nothing");
            Answer("0", Entries({{value.key, "abc"}}));
            EXPECT_EQ(FailureOf([&] { Row().call(object); }), "invalid_argument: " + conversion);
            ExpectMalformed(value.key, expected, "\"abc\"");
            Answer("1", Entries({{value.key, "99999999999999999999999"}}));
            EXPECT_EQ(FailureOf([&] { Row().call(object); }), "out_of_range: " + conversion);
            ExpectMalformed(value.key, expected, "\"99999999999999999999999\"");
            Answer("1", Entries({{value.key, "  " + value.value + "xyz"}}));
            EXPECT_EQ(Row().call(object).outputs, Row().decoded);
        }
    }

    void ExpectMalformed(std::string const& key, std::string const& expected, std::string const& got) const
    {
        EXPECT_EQ(LastFailure(), MalformedFailure(Row().function, key, expected, got));
    }

    static std::string ExpectedFor(Decoding decoding)
    {
        if (decoding == Decoding::Stoi) {
            return "a signed 32-bit decimal number";
        }
        bool const hasFewer = decoding == Decoding::Stoul && sizeof(unsigned long) == 4;
        return hasFewer ? "an unsigned 32-bit decimal number" : "an unsigned 64-bit decimal number";
    }

    /// Of records that are too long, only the first bytes count. Missing bytes of short records are zero.
    void ExpectRecordsOfAnySize()
    {
        Interface& object = Object();
        for (ReplyValue const& value : Row().reply) {
            if (value.decoding != Decoding::Record) {
                continue;
            }
            SCOPED_TRACE(value.key);
            Answer("1", Entries({{value.key, value.value + "more"}}));
            EXPECT_EQ(Row().call(object).outputs, Row().decoded);
            std::size_t const size = value.value.size();
            std::size_t const kept = size - 1;
            Answer("1", Entries({{value.key, value.value.substr(0, kept)}}));
            EXPECT_EQ(Row().call(object).outputs, DecodedWith(value.value, value.value.substr(0, kept)));
            Answer("1", {}, value.key);
            EXPECT_EQ(Row().call(object).outputs, DecodedWith(value.value, ""));
        }
    }

    /// The row's out-parameters where `bytes`, filled up with zeros, took the place of `record`.
    std::string DecodedWith(std::string const& record, std::string bytes) const
    {
        bytes.resize(record.size(), '\0');
        std::string decoded = Row().decoded;
        std::size_t const at = decoded.find(HexOf(record));
        return at == std::string::npos ? "no such record"
                                       : decoded.replace(at, 2 * record.size(), HexOf(bytes));
    }

private:
    std::string m_type;
    std::string m_file;
};

template <typename Interface>
std::string RowName(testing::TestParamInfo<Method<Interface>> const& info)
{
    return info.param.name;
}

} // namespace zviptv::test
