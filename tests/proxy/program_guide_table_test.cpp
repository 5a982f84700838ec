// SPDX-License-Identifier: MIT
#include "FailureText.h"
#include "MethodTable.h"

using namespace zviptv::test;

namespace {

using GuideRow = Method<IIPGUtil>;

constexpr unsigned long long Largest = 18446744073709551615ULL;

/// A query that fills a text. "untouched" shows that it did not.
template <typename Query>
std::function<Outcome(IIPGUtil&)> TextQuery(Query query)
{
    return [query](IIPGUtil& guide) {
        std::string text = "untouched";
        bool const result = query(guide, text);
        return Outcome{result, text};
    };
}

GuideRow TextRow(std::function<Outcome(IIPGUtil&)> call, WireEntries request)
{
    std::string const function = request.front().bytes;
    return {
        function,    function,   std::move(call), std::move(request), {{"data", " a text\n", Decoding::Text}},
        " a text\n", "untouched"};
}

std::vector<GuideRow> TextRows()
{
    return {
        TextRow(
            TextQuery([](IIPGUtil& guide, std::string& text) { return guide.GetProgram(4294967295U, text); }),
            Entries({{"functionname", "GetProgram"}, {"index", "4294967295"}})),
        TextRow(TextQuery([](auto& guide, auto& text) { return guide.GetPresentProgram(Largest, text); }),
                Entries({{"functionname", "GetPresentProgram"}, {"inID", "18446744073709551615"}})),
        TextRow(
            TextQuery([](auto& guide, auto& text) { return guide.FindProgram(Largest, 4294967295U, text); }),
            Entries({{"functionname", "FindProgram"},
                     {"inID", "18446744073709551615"},
                     {"eventID", "4294967295"}})),
        TextRow(TextQuery([](auto& guide, auto& text) { return guide.GetRating(2147483648U, text); }),
                Entries({{"functionname", "GetRating"}, {"eventID", "2147483648"}})),
        TextRow(TextQuery([](auto& guide, auto& text) { return guide.GetGenre(4294967295U, text); }),
                Entries({{"functionname", "GetGenre"}, {"eventID", "4294967295"}})),
        TextRow(TextQuery([](auto& guide, auto& text) {
                    return guide.GetProgramList(12345678901ULL, 4000000000U, 3600, text);
                }),
                Entries({{"functionname", "GetProgramList"},
                         {"inID", "12345678901"},
                         {"startTime", "4000000000"},
                         {"duration", "3600"}})),
    };
}

std::vector<GuideRow> NumberRows()
{
    return {
        {"ExistXmlForIPG",
         "ExistXmlForIPG",
         Getter(&IIPGUtil::ExistXmlForIPG, true),
         Entries({{"functionname", "ExistXmlForIPG"}}),
         {{"data", "0", Decoding::Stoi}},
         "0",
         "1"},
        {"GetProgramListSize",
         "GetProgramListSize",
         [](IIPGUtil& guide) {
             int size = 77;
             bool const result = guide.GetProgramListSize(Largest, 4294967295U, 4294967294U, size);
             return Outcome{result, ShowAll(size)};
         },
         Entries({{"functionname", "GetProgramListSize"},
                  {"inID", "18446744073709551615"},
                  {"startTime", "4294967295"},
                  {"duration", "4294967294"}}),
         {{"data", "-5", Decoding::Stoi}},
         "-5",
         "77"},
        {"CloneUSBToTV",
         "CloneUSBToTV",
         [](IIPGUtil& guide) {
             bool done = true;
             bool const result = guide.CloneUSBToTV("/media/usb 1/\xc3\xa4", done);
             return Outcome{result, ShowAll(done)};
         },
         Entries({{"functionname", "CloneUSBToTV"}, {"path", "/media/usb 1/\xc3\xa4"}}),
         {{"data", "0", Decoding::Stoi}},
         "0",
         "1"},
    };
}

std::vector<GuideRow> AllOfTheGuide()
{
    std::vector<GuideRow> rows = TextRows();
    for (GuideRow& row : NumberRows()) {
        rows.push_back(std::move(row));
    }
    return rows;
}

class ProgramGuideTable : public ServiceTest, public testing::WithParamInterface<GuideRow>
{
protected:
    Lines CallLines() const { return LinesOf(m_log, "IPGUtilProxy.cpp: " + GetParam().function); }

    void Answer(WireEntries const& entries)
    {
        m_service.AnswerWith(GetParam().request.front().bytes, entries);
    }
};

TEST_P(ProgramGuideTable, SendsAndDecodes)
{
    IIPGUtil& guide = *CreateGuide();
    std::string const data = GetParam().reply.front().value;
    Answer(Entries({{"data", data}}));
    m_log.Clear();
    Outcome const outcome = GetParam().call(guide);
    EXPECT_TRUE(outcome.result);
    EXPECT_EQ(outcome.outputs, GetParam().decoded);
    EXPECT_EQ(CallLines(), (Lines{{ZV_LOG_INFO, ""}, {ZV_LOG_INFO, "Receive data : " + data}}));
    EXPECT_EQ(LastFailure(), NoFailure(GetParam().function));
    ASSERT_EQ(m_service.Requests().size(), 1U);
    WireMessage const request = m_service.LastRequest();
    EXPECT_EQ(request.entries, GetParam().request);
    EXPECT_TRUE(request.HasOnlyByteArrays());
    EXPECT_EQ(request.path, "/org/corvel/zviptvapi/DbusCommunication/IPGUTIL");
}

TEST_P(ProgramGuideTable, IgnoresTheResultOfTheService)
{
    IIPGUtil& guide = *CreateGuide();
    std::string const data = GetParam().reply.front().value;
    for (std::string const result : {"0", "1", "no number"}) {
        Answer(Entries({{"result_internal", result}, {"data", data}}));
        Outcome const outcome = GetParam().call(guide);
        EXPECT_TRUE(outcome.result);
        EXPECT_EQ(outcome.outputs, GetParam().decoded);
        EXPECT_EQ(LastFailure(), NoFailure(GetParam().function));
    }
}

TEST_P(ProgramGuideTable, IsRefusedAfterDestroy)
{
    IIPGUtil& guide = *CreateGuide();
    CIPTVServiceAPI::DestroyIPGUtil();
    Outcome const outcome = GetParam().call(guide);
    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.outputs, GetParam().start);
    EXPECT_EQ(LastFailure(), GoneFailure(GetParam().function));
}

TEST_P(ProgramGuideTable, FailedExchangeLeavesOutputsUntouched)
{
    IIPGUtil& guide = *CreateGuide();
    m_service.AnswerError(GetParam().request.front().bytes);
    m_log.Clear();
    Outcome const outcome = GetParam().call(guide);
    EXPECT_FALSE(outcome.result);
    EXPECT_EQ(outcome.outputs, GetParam().start);
    EXPECT_EQ(CallLines(), (Lines{{ZV_LOG_INFO, ""}, {ZV_LOG_ERROR, "SendMessage failed."}}));
    EXPECT_EQ(LastFailure(),
              "bus error | " + GetParam().function + " |  | org.corvel.test.Failed | scripted error");
}

/// An answer without data is an empty text; as a number it is an error.
TEST_P(ProgramGuideTable, AnswerWithoutData)
{
    IIPGUtil& guide = *CreateGuide();
    Answer({});
    m_log.Clear();
    if (HasNumbers(GetParam())) {
        EXPECT_EQ(FailureOf([&] { GetParam().call(guide); }), "invalid_argument: stoi");
    } else {
        Outcome const outcome = GetParam().call(guide);
        EXPECT_TRUE(outcome.result);
        EXPECT_EQ(outcome.outputs, "");
    }
    EXPECT_EQ(CallLines(), (Lines{{ZV_LOG_INFO, ""}, {ZV_LOG_INFO, "Receive data : "}}));
}

std::string NameOfRow(testing::TestParamInfo<GuideRow> const& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(ProgramGuide, ProgramGuideTable, testing::ValuesIn(AllOfTheGuide()), NameOfRow);

class ProgramGuideNumbers : public ProgramGuideTable
{
};

TEST_P(ProgramGuideNumbers, ThrowsOnMalformedNumbers)
{
    IIPGUtil& guide = *CreateGuide();
    Answer(Entries({{"data", "abc"}}));
    EXPECT_EQ(FailureOf([&] { GetParam().call(guide); }), "invalid_argument: stoi");
    EXPECT_EQ(LastFailure(),
              MalformedFailure(GetParam().function, "data", "a signed 32-bit decimal number", "\"abc\""));
    Answer(Entries({{"data", "2147483648"}}));
    EXPECT_EQ(FailureOf([&] { GetParam().call(guide); }), "out_of_range: stoi");
    Answer(Entries({{"data", "  " + GetParam().reply.front().value + "xyz"}}));
    EXPECT_EQ(GetParam().call(guide).outputs, GetParam().decoded);
}

INSTANTIATE_TEST_SUITE_P(ProgramGuide, ProgramGuideNumbers, testing::ValuesIn(NumberRows()), NameOfRow);

} // namespace
