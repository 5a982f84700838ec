// SPDX-License-Identifier: MIT
#include "endpoints/FaultRule.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>

namespace zviptv::sim {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

std::string Normal(std::string const& text)
{
    return FaultRule::Parse(text).Text();
}

/// The error message for a text that Parse() refuses; empty if it accepts the text.
std::string Refusal(std::string const& text)
{
    try {
        FaultRule::Parse(text);
    } catch (std::invalid_argument const& failure) {
        return failure.what();
    }
    return {};
}

TEST(FaultRule, ReadsEveryFaultOfARequest)
{
    for (char const* const text :
         {"MuteAudio=delay:0", "MuteAudio=delay:2147483647", "*=drop", "requestPESCB=error",
          "MuteAudio=result:-5", "GetAudio=missing:audio", "GetAudio=garbage:audio", "*=short:stcCount",
          "GetAudio=missing:result_internal", "CloneUSBToTV=garbage:data"}) {
        EXPECT_EQ(Normal(text), text);
    }
}

TEST(FaultRule, ReadsEveryFaultOfAPush)
{
    for (std::string const function : {"PESCB", "CaptionCB"}) {
        for (char const* const fault :
             {"delay:5", "drop", "missing:functionname", "duplicate", "reorder", "burst:2", "burst:1000"}) {
            EXPECT_EQ(Normal(function + "=" + fault), function + "=" + fault);
        }
    }
    for (char const* const text :
         {"PESCB=garbage:pesPTS", "PESCB=short:pesData", "CaptionCB=missing:captionType"}) {
        EXPECT_EQ(Normal(text), text);
    }
}

TEST(FaultRule, ReadsEveryFaultOfAnAnnouncement)
{
    for (char const* const text : {"Announcement=delay:5", "Announcement=drop", "Announcement=error",
                                   "Announcement=empty", "Announcement=dead", "Announcement=missing:dbusname",
                                   "Announcement=garbage:dbusname", "Announcement=short:dbusname"}) {
        EXPECT_EQ(Normal(text), text);
    }
}

TEST(FaultRule, WritesOptionsInOneOrderAndForm)
{
    EXPECT_EQ(Normal("MuteAudio=drop,effect=no,probability=.50,application=:1.7,from=2.0,for=1e1,count=003"),
              "MuteAudio=drop,count=3,for=10,from=2,application=:1.7,probability=0.5,effect=no");
    EXPECT_EQ(Normal("MuteAudio=delay:007,from=0,probability=1,effect=yes"), "MuteAudio=delay:7");
    EXPECT_EQ(Normal("PESCB=drop,for=0.001,probability=0"), "PESCB=drop,for=0.001,probability=0");
    EXPECT_EQ(Normal("PESCB=drop,from=-0,probability=-0"), "PESCB=drop,probability=0");
}

TEST(FaultRule, ErrorsListTheFaultsOfAFunction)
{
    EXPECT_EQ(Refusal("MuteAudio=explode"),
              "cannot use the fault 'MuteAudio=explode': unknown fault 'explode' of MuteAudio; use "
              "MuteAudio=delay:MS, drop, error, result:N, missing:KEY, garbage:KEY or short:KEY");
    EXPECT_EQ(Refusal("PESCB=error"),
              "cannot use the fault 'PESCB=error': unknown fault 'error' of PESCB; use PESCB=delay:MS, drop, "
              "missing:KEY, garbage:KEY, short:KEY, duplicate, reorder or burst:N");
    EXPECT_EQ(Refusal("Announcement=reorder"),
              "cannot use the fault 'Announcement=reorder': unknown fault 'reorder' of Announcement; use "
              "Announcement=delay:MS, drop, error, missing:KEY, garbage:KEY, short:KEY, empty or dead");
    for (char const* const text : {"*=duplicate", "MuteAudio=empty", "CaptionCB=dead", "PESCB=result:1"}) {
        EXPECT_THAT(Refusal(text), HasSubstr("unknown fault")) << text;
    }
}

TEST(FaultRule, ErrorsDescribeValidArguments)
{
    for (auto const& [text, reason] : std::initializer_list<std::pair<char const*, char const*>>{
             {"MuteAudio=delay", "delay needs a value, delay:MS; use MuteAudio=delay:MS, drop"},
             {"MuteAudio=missing:", "missing needs a value, missing:KEY; use"},
             {"MuteAudio=drop:1", "drop does not accept a value; use"},
             {"MuteAudio=delay:x", "'x' is not a number of milliseconds, 0 to 2147483647"},
             {"MuteAudio=delay:-1", "'-1' is not a number of milliseconds, 0 to 2147483647"},
             {"MuteAudio=delay:1.5", "'1.5' is not a number of milliseconds, 0 to 2147483647"},
             {"MuteAudio=result:2147483648", "'2147483648' is not a whole number, -2147483648 to 2147483647"},
             {"PESCB=burst:1", "'1' is not a factor, 2 to 1000"},
             {"PESCB=burst:1001", "'1001' is not a factor, 2 to 1000"}}) {
        EXPECT_THAT(Refusal(text), AllOf(StartsWith(std::string("cannot use the fault '") + text + "': "),
                                         HasSubstr(reason)));
    }
}

TEST(FaultRule, ErrorsListTheKeysOfAMessage)
{
    for (std::string const fault : {"missing", "garbage", "short"}) {
        for (auto const& [function, key, reason] :
             std::initializer_list<std::tuple<std::string, std::string, char const*>>{
                 {"GetAudio", "nosuchkey",
                  "'nosuchkey' is not a key of the answer to GetAudio; use result_internal or audio"},
                 {"GetAudio", "index",
                  "'index' is not a key of the answer to GetAudio; use result_internal or audio"},
                 {"MuteAudio", "onoff",
                  "'onoff' is not a key of the answer to MuteAudio; use result_internal"},
                 {"GetResolution", "Resolution",
                  "'Resolution' is not a key of the answer to GetResolution; use result_internal, resolution "
                  "or resolutioninfo"},
                 {"PESCB", "captionData",
                  "'captionData' is not a key of PESCB; use functionname, pesDataSize, pesType, pesPID, "
                  "pesPTS or pesData"},
                 {"CaptionCB", "pesData",
                  "'pesData' is not a key of CaptionCB; use functionname, captionDataSize, captionType or "
                  "captionData"},
                 {"Announcement", "type",
                  "'type' is not a key of the answer to an announcement; use dbusname"}}) {
            std::string text = function;
            text.append("=").append(fault).append(":").append(key);
            EXPECT_EQ(Refusal(text), "cannot use the fault '" + text + "': " + reason);
        }
    }
    EXPECT_THAT(Refusal("*=missing:onoff"),
                AllOf(HasSubstr("'onoff' is not a key of any answer; use result_internal, stcCount, mode, "),
                      HasSubstr(", timebasenum, currenttime, encodeType, "), HasSubstr(" or data")));
}

TEST(FaultRule, ErrorsDescribeValidOptions)
{
    constexpr char Options[] = "use count=N, for=SECONDS, from=SECONDS, application=NAME, probability=P or "
                               "effect=yes|no";
    for (auto const& [text, reason] : std::initializer_list<std::pair<char const*, std::string>>{
             {"*=drop,", std::string("unknown option ''; ") + Options},
             {"*=drop,count", std::string("unknown option 'count'; ") + Options},
             {"*=drop,cout=1", std::string("unknown option 'cout=1'; ") + Options},
             {"*=drop,count=1,,for=1", std::string("unknown option ''; ") + Options},
             {"*=drop,count=0", "'0' is not a number of messages, 1 to 1000000"},
             {"*=drop,count=1000001", "'1000001' is not a number of messages, 1 to 1000000"},
             {"*=drop,count=-1", "'-1' is not a number of messages, 1 to 1000000"},
             {"*=drop,for=0", "'0' is not a number of seconds, 0.001 to 1000000"},
             {"*=drop,for=nan", "'nan' is not a number of seconds, 0.001 to 1000000"},
             {"*=drop,from=inf", "'inf' is not a number of seconds, 0 to 1000000"},
             {"*=drop,from=-1", "'-1' is not a number of seconds, 0 to 1000000"},
             {"*=drop,application=", "'' is not the bus name or the id of an application"},
             {"*=drop,probability=1.01", "'1.01' is not a probability, 0 to 1"},
             {"*=drop,probability=50%", "'50%' is not a probability, 0 to 1"},
             {"*=drop,effect=maybe", "'maybe' is not yes or no"},
             {"*=drop,count=1,count=2", "count is given more than once; give it once"},
             {"PESCB=drop,effect=no", "PESCB does not accept the option effect; use effect for requests"}}) {
        EXPECT_THAT(Refusal(text), AllOf(StartsWith(std::string("cannot use the fault '") + text + "': "),
                                         HasSubstr(reason)));
    }
}

TEST(FaultRule, ErrorsDescribeTheFormOfAFault)
{
    for (std::string const text : {"", "MuteAudio", "=drop", "=", "count=1,drop", "MuteAudio,count=2"}) {
        EXPECT_THAT(Refusal(text), StartsWith("cannot use the fault '" + text + "': ")) << text;
    }
    EXPECT_THAT(Refusal("MuteAudio,count=2"), HasSubstr("it is not FUNCTION=FAULT; use a text like"));
    EXPECT_THAT(Refusal("MuteAudio"), HasSubstr("it is not FUNCTION=FAULT; use a text like MuteAudio=error"));
}

} // namespace
} // namespace zviptv::sim
