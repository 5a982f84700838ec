// SPDX-License-Identifier: MIT
#include "CtlFixture.h"

namespace zviptv::test {

void PrintTo(CtlResult const& result, std::ostream* out)
{
    *out << "exit code " << result.code << "\noutput: " << result.output << "\nerrors: " << result.errors;
}

std::unique_ptr<ChildProcess> StartCtl(Words const& arguments,
                                       std::map<std::string, std::string> const& environment)
{
    Words command = {ZVIPTVCTL_PATH};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return std::make_unique<ChildProcess>(command, environment);
}

CtlResult Finish(ChildProcess& child)
{
    auto const status = child.Wait(patience);
    return {status ? status->code : -1, child.Output(), child.Errors()};
}

CtlResult RunCtl(Words const& arguments, std::map<std::string, std::string> const& environment)
{
    return Finish(*StartCtl(arguments, environment));
}

std::string FromHex(std::string const& hex)
{
    std::string bytes;
    for (std::size_t start = 0; start < hex.size(); start += 3) {
        bytes += static_cast<char>(std::stoi(hex.substr(start, 2), nullptr, 16));
    }
    return bytes;
}

void PrintTo(CallCase const& call, std::ostream* out)
{
    for (std::string const& word : call.arguments) {
        *out << word << ' ';
    }
}

std::string NameOfCase(testing::TestParamInfo<CallCase> const& info)
{
    return info.param.arguments.front() + "_" + std::to_string(info.param.arguments.size() - 1);
}

void CallTest::Check()
{
    CallCase const& call = GetParam();
    m_service.AnswerWith(call.request.front().bytes, call.reply);
    Words arguments = {"call"};
    arguments.insert(arguments.end(), call.arguments.begin(), call.arguments.end());

    CtlResult const result = RunCtl(arguments);
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.output, call.output);
    EXPECT_EQ(result.errors, "");
    ASSERT_EQ(m_service.Requests().size(), 1U);
    EXPECT_EQ(m_service.LastRequest().entries, call.request);
    EXPECT_EQ(m_service.LastRequest().path, "/org/corvel/zviptvapi/DbusCommunication/" + call.type);
    EXPECT_TRUE(m_service.WaitForAnnouncement(call.type, "n"));
}

} // namespace zviptv::test
