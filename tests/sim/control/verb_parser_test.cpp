// SPDX-License-Identifier: MIT
#include "verbs/Verbs.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

namespace zviptv::verbs {
namespace {

/// "Method (arguments)", or the error's text.
std::string Understood(std::string const& line)
try {
    std::istringstream stream(line);
    Command const command = Parse({std::istream_iterator<std::string>(stream), {}});
    Owned<char> const text(g_variant_print(command.parameters.get(), TRUE));
    return std::string(command.verb->method) + " " + text.get();
} catch (std::invalid_argument const& failure) {
    return failure.what();
}

TEST(VerbParser, MakesMethodsOfWords)
{
    for (auto const& [line, method] : std::vector<std::pair<char const*, char const*>>{
             {"pause", "Pause ()"},
             {"seek 2.5", "Seek (2.5,)"},
             {"speed 1000", "SetSpeed (1000.0,)"},
             {"load udp://@239.1.1.1:5000", "Load ('udp://@239.1.1.1:5000',)"},
             {"programme 65535", "SelectProgramme (uint32 65535,)"},
             {"lock service", "Lock ('service',)"},
             {"time 4294967295", "SetTime (int64 4294967295,)"},
             {"fault add *=delay:5", "AddFault ('*=delay:5', @a{sv} {})"},
             {"fault add --for 1 *=drop --count=3",
              "AddFault ('*=drop', {'for': <1.0>, 'count': <uint32 3>})"},
             {"fault clear", "ClearFaults ()"},
             {"mute video off", "Mute ('video', false)"},
             {"select subtitle 3", "Select ('subtitle', uint32 3)"},
             {"die", "Die (@a{sv} {},)"},
             {"die --for 0", "Die ({'for': <0.0>},)"},
         }) {
        EXPECT_EQ(Understood(line), method);
    }
}

TEST(VerbParser, ErrorsListTheAcceptedValues)
{
    for (auto const& [line, error] : std::vector<std::pair<char const*, char const*>>{
             {"fault", "incomplete verb 'fault': use fault add, fault remove, fault clear"},
             {"seek", "seek: SECONDS is missing; use seek SECONDS"},
             {"seek 1 2", "seek: unexpected argument '2'; use seek SECONDS"},
             {"seek nan", "seek: 'nan' is not a position in seconds, 0 to 1000000; use seek SECONDS"},
             {"seek 1e9", "seek: '1e9' is not a position in seconds, 0 to 1000000; use seek SECONDS"},
             {"seek 1s", "seek: '1s' is not a position in seconds, 0 to 1000000; use seek SECONDS"},
             {"speed 0", "speed: '0' is not a speed from 0.01 to 1000; use speed SPEED"},
             {"programme -1", "programme: '-1' is not a programme number, 1 to 65535; use programme NUMBER"},
             {"programme 1.5",
              "programme: '1.5' is not a programme number, 1 to 65535; use programme NUMBER"},
             {"lock programme|service",
              "lock: 'programme|service' is not programme or service; use lock programme|service"},
             {"mute audio", "mute: on|off is missing; use mute audio|video on|off"},
             {"die --for", "die: the option '--for' needs a value; use die [--for SECONDS]"},
             {"die --for -1", "die: '-1' is not a number of seconds, 0 to 1000000; use die [--for SECONDS]"},
             {"fault add *=drop --for 0",
              "fault add: '0' is not a number of seconds, 0.001 to 1000000; use fault add METHOD=FAULT "
              "[--count N] [--for SECONDS]"},
             {"die --after 3", "die: unknown option '--after'; use die [--for SECONDS]"},
             {"die --for 1 --for 2",
              "die: the option '--for' is given more than once; use die [--for SECONDS]"},
             {"pause --for 2", "pause: unknown option '--for'; use pause"},
         }) {
        EXPECT_EQ(Understood(line), error);
    }
    EXPECT_THAT(Understood(""), testing::StartsWith("a verb is missing: use pause, play, "));
    EXPECT_THAT(Understood("jump"), testing::StartsWith("unknown verb 'jump': use pause, play, "));
    EXPECT_EQ(Understood("load \xFF"),
              "load: an argument is not UTF-8 text; use an input like that of --ts; use "
              "load INPUT");
}

TEST(VerbParser, ChecksArgumentsFromTheBus)
{
    auto const check = [](char const* method, GVariant* raw) -> std::string {
        Owned<GVariant> const parameters(g_variant_ref_sink(raw));
        try {
            Check(method, parameters.get());
            return "";
        } catch (std::invalid_argument const& failure) {
            return failure.what();
        }
    };
    EXPECT_EQ(check("Seek", g_variant_new("(d)", 3.0)), "");
    EXPECT_EQ(check("Seek", g_variant_new("(d)", -3.0)), "'-3.0' is not a position in seconds, 0 to 1000000");
    EXPECT_EQ(check("Lock", g_variant_new("(s)", "door")), "'door' is not programme or service");
}

} // namespace
} // namespace zviptv::verbs
