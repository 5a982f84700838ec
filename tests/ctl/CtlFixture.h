// SPDX-License-Identifier: MIT
#pragma once

#include "Bytes.h"
#include "ChildProcess.h"
#include "FakeService.h"
#include "Json.h"
#include "PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace zviptv::test {

using Words = std::vector<std::string>;

/// The outcome of the program. The code is -1 if it did not end.
struct CtlResult
{
    int code = -1;
    std::string output;
    std::string errors;
};

void PrintTo(CtlResult const& result, std::ostream* out);

/// Starts zviptvctl with these arguments.
std::unique_ptr<ChildProcess> StartCtl(Words const& arguments,
                                       std::map<std::string, std::string> const& environment = {});

/// Waits for the end of the program.
CtlResult Finish(ChildProcess& child);

CtlResult RunCtl(Words const& arguments, std::map<std::string, std::string> const& environment = {});

/// "67 6e 65" as bytes.
std::string FromHex(std::string const& hex);

/// A private bus with a scripted service.
class CtlTest : public testing::Test
{
protected:
    PrivateBus m_bus;
    FakeService m_service;
};

/// One call of a method: what is typed, what the service answers, what it must have been asked and what must
/// be printed.
struct CallCase
{
    Words arguments;
    std::string type; ///< the channel's type word
    WireEntries request;
    WireEntries reply;
    std::string output;
};

void PrintTo(CallCase const& call, std::ostream* out);

/// For INSTANTIATE_TEST_SUITE_P: the method's name, which must be unique with the number of arguments.
std::string NameOfCase(testing::TestParamInfo<CallCase> const& info);

class CallTest : public CtlTest, public testing::WithParamInterface<CallCase>
{
protected:
    /// Makes the call and compares all of it.
    void Check();
};

} // namespace zviptv::test
