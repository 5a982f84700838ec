// SPDX-License-Identifier: MIT
#include "failure/LastFailure.h"

#include "FailureText.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

using namespace zviptv;
using namespace zviptv::test;

namespace {

/// The failure of another thread after `work`.
template <typename Work>
std::string OnAnotherThread(Work work)
{
    std::string found;
    std::thread([&] {
        work();
        found = LastFailure();
    }).join();
    return found;
}

TEST(LastFailure, IsNoneAtFirst)
{
    EXPECT_EQ(OnAnotherThread([] {}), "none |  |  |  | ");
}

TEST(LastFailure, BelongsToTheOutermostFunction)
{
    FailureScope const outer("Outer");
    {
        FailureScope const inner("Inner");
        SetFailure(ZV_FAILURE_BUS_ERROR, {"one", " and ", "two"}, "aKey", "org.example.Error");
    }
    EXPECT_EQ(LastFailure(), "bus error | Outer | aKey | org.example.Error | one and two");
    {
        FailureScope const inner("Inner");
    }
    EXPECT_EQ(LastFailure(), "bus error | Outer | aKey | org.example.Error | one and two");
}

TEST(LastFailure, StaysUntilTheNextFunctionBegins)
{
    {
        FailureScope const scope("First");
        SetFailure(ZV_FAILURE_TIMED_OUT, {"too late"});
    }
    EXPECT_EQ(LastFailure(), "timed out | First |  |  | too late");
    {
        FailureScope const scope("Second");
        EXPECT_EQ(LastFailure(), NoFailure("Second"));
    }
    EXPECT_EQ(LastFailure(), NoFailure("Second"));
}

TEST(LastFailure, TheLastFailureCountsUnlessItFollowsFromAnother)
{
    FailureScope const scope("Function");
    SetFailureUnlessSet(ZV_FAILURE_NO_BUS, {"first"});
    SetFailureUnlessSet(ZV_FAILURE_NO_SERVICE, {"second"});
    EXPECT_EQ(LastFailure(), "no bus | Function |  |  | first");
    SetFailure(ZV_FAILURE_REFUSED, {"third"});
    EXPECT_EQ(LastFailure(), "refused | Function |  |  | third");
    SetGone();
    EXPECT_EQ(LastFailure(), GoneFailure("Function"));
}

TEST(LastFailure, BelongsToItsThread)
{
    FailureScope const scope("Here");
    SetFailure(ZV_FAILURE_TOO_LARGE, {"here"});
    std::string const there = OnAnotherThread([] {
        FailureScope const other("There");
        SetFailure(ZV_FAILURE_NO_BUS, {"there"});
    });
    EXPECT_EQ(there, "no bus | There |  |  | there");
    EXPECT_EQ(LastFailure(), "too large | Here |  |  | here");
}

TEST(LastFailure, IsNotChangedByCallbacks)
{
    {
        FailureScope const scope("Call");
        SetFailure(ZV_FAILURE_TIMED_OUT, {"too late"});
    }
    {
        FailureUntouched const untouched;
        FailureScope const scope("Callback");
        EXPECT_EQ(LastFailure(), NoFailure("Callback"));
        SetFailure(ZV_FAILURE_NO_BUS, {"in the callback"});
        EXPECT_EQ(LastFailure(), "no bus | Callback |  |  | in the callback") << "can be kept";
    }
    EXPECT_EQ(LastFailure(), "timed out | Call |  |  | too late");
    FailureScope const scope("Next");
    EXPECT_EQ(LastFailure(), NoFailure("Next"));
}

TEST(LastFailure, NamesWhatIsMalformed)
{
    FailureScope const scope("Get");
    SetMalformed("aKey", "a number", "garbage");
    EXPECT_EQ(LastFailure(), MalformedFailure("Get", "aKey", "a number", "\"garbage\""));
    SetMalformed("aKey", "a number", "");
    EXPECT_EQ(LastFailure(), MalformedFailure("Get", "aKey", "a number", "nothing"));
    SetMalformed("aKey", "a number", "a\n\xff");
    EXPECT_EQ(LastFailure(), MalformedFailure("Get", "aKey", "a number", "\"a\\x0a\\xff\""));
    std::string const forty(40, 'x');
    SetMalformed("aKey", "a number", forty);
    EXPECT_EQ(LastFailure(), MalformedFailure("Get", "aKey", "a number", "\"" + forty + "\""));
    SetMalformed("aKey", "a number", forty + "y");
    EXPECT_EQ(LastFailure(), MalformedFailure("Get", "aKey", "a number", "\"" + forty + "\"..."));
    SetMalformed("aKey", "a number", forty.substr(1) + "ä");
    EXPECT_EQ(LastFailure(), MalformedFailure("Get", "aKey", "a number", "\"" + forty.substr(1) + "\"..."));
    SetMalformed("aKey", "a number", std::string(64, '\x80'));
    EXPECT_EQ(LastFailure(), MalformedFailure("Get", "aKey", "a number", "\"\"..."));
}

TEST(LastFailure, BoundsItsTexts)
{
    FailureScope const scope("Get");
    SetFailure(ZV_FAILURE_BUS_ERROR, {std::string(100000, 'm')}, "", std::string(1000, 'n'));
    EXPECT_EQ(ZVGetLastFailure().message, std::string(1020, 'm') + "...");
    EXPECT_EQ(ZVGetLastFailure().errorName, std::string(252, 'n') + "...");
}

TEST(KeptFailure, IsRecalledForAnotherFunctionAndThread)
{
    KeptFailure kept;
    FailureScope const scope("First");
    SetFailure(ZV_FAILURE_BUS_ERROR, {"why"}, "aKey", "org.example.Error");
    kept.Keep();
    EXPECT_EQ(OnAnotherThread([&] {
                  FailureScope const other("Second");
                  kept.Recall();
              }),
              "bus error | Second | aKey | org.example.Error | why");
}

TEST(KeptFailure, KeepsAnEarlierFailureIfNothingFailed)
{
    KeptFailure kept;
    {
        FailureScope const scope("First");
        SetFailure(ZV_FAILURE_NO_BUS, {"why"});
        kept.Keep();
    }
    FailureScope const scope("Second");
    kept.Keep();
    SetFailure(ZV_FAILURE_REFUSED, {"something else"});
    kept.Recall();
    EXPECT_EQ(LastFailure(), "refused | Second |  |  | something else");
}

TEST(FailureKindName, IsReadable)
{
    EXPECT_STREQ(ZVFailureKindName(ZV_FAILURE_NONE), "none");
    EXPECT_STREQ(ZVFailureKindName(ZV_FAILURE_NO_BUS), "no bus");
    EXPECT_STREQ(ZVFailureKindName(ZV_FAILURE_NO_SERVICE), "no service");
    EXPECT_STREQ(ZVFailureKindName(ZV_FAILURE_GONE), "gone");
    EXPECT_STREQ(ZVFailureKindName(ZV_FAILURE_TIMED_OUT), "timed out");
    EXPECT_STREQ(ZVFailureKindName(ZV_FAILURE_BUS_ERROR), "bus error");
    EXPECT_STREQ(ZVFailureKindName(ZV_FAILURE_TOO_LARGE), "too large");
    EXPECT_STREQ(ZVFailureKindName(ZV_FAILURE_REFUSED), "refused");
    EXPECT_STREQ(ZVFailureKindName(ZV_FAILURE_MALFORMED_REPLY), "malformed reply");
    EXPECT_STREQ(ZVFailureKindName(ZV_FAILURE_INVALID_ARGUMENT), "invalid argument");
    EXPECT_STREQ(ZVFailureKindName(static_cast<EZVFailureKind>(12)), "unknown");
}

TEST(FailureKind, NumbersAreStable)
{
    EXPECT_EQ(ZV_FAILURE_NONE, 0);
    EXPECT_EQ(ZV_FAILURE_NO_BUS, 1);
    EXPECT_EQ(ZV_FAILURE_NO_SERVICE, 2);
    EXPECT_EQ(ZV_FAILURE_GONE, 3);
    EXPECT_EQ(ZV_FAILURE_TIMED_OUT, 4);
    EXPECT_EQ(ZV_FAILURE_BUS_ERROR, 5);
    EXPECT_EQ(ZV_FAILURE_TOO_LARGE, 6);
    EXPECT_EQ(ZV_FAILURE_REFUSED, 7);
    EXPECT_EQ(ZV_FAILURE_MALFORMED_REPLY, 8);
    EXPECT_EQ(ZV_FAILURE_INVALID_ARGUMENT, 9);
}

/// Reports the failure when it is destroyed.
struct FailureAtExit
{
    ~FailureAtExit()
    {
        FailureScope const scope("AtTheEnd");
        SetFailure(ZV_FAILURE_GONE, {"reported at the end"});
        *text = LastFailure();
        std::fprintf(stderr, "%s\n", text->c_str());
    }
    std::string* text;
};

TEST(LastFailure, CanBeReadByDestructorsOfThreadLocalObjects)
{
    std::string text;
    std::thread([&text] {
        thread_local FailureAtExit const failure{&text}; // made before the thread has had a failure
        static_cast<void>(failure);
        SetFailure(ZV_FAILURE_TIMED_OUT, {"while it ran"});
    }).join();
    EXPECT_EQ(text, "gone | AtTheEnd |  |  | reported at the end");
}

TEST(LastFailureDeathTest, CanBeReadByDestructorsOfStaticObjects)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            static std::string* const text = new std::string;
            static FailureAtExit const failure{text};
            static_cast<void>(failure);
            std::exit(0);
        },
        testing::ExitedWithCode(0), "gone . AtTheEnd .  .  . reported at the end");
}

} // namespace
