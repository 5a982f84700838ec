// SPDX-License-Identifier: MIT
#pragma once

#include "DoctorFacts.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace zviptv::test {

/// A machine with one problem, and the report about it.
struct WrongCase
{
    char const* name;
    ctl::doctor::Facts facts;
    char const* check;
    int code;
    char const* text;
    std::vector<std::string> commands;
    char const* inMeaning; ///< part of it
    char const* inNote;    ///< part of it
};

inline void PrintTo(WrongCase const& wrong, std::ostream* out)
{
    *out << wrong.name;
}

inline ctl::doctor::Facts Changed(ctl::doctor::Facts facts, void (*change)(ctl::doctor::Facts&))
{
    change(facts);
    return facts;
}

constexpr char ReloadConfig[] = "sudo dbus-send --system --print-reply --dest=org.freedesktop.DBus / "
                                "org.freedesktop.DBus.ReloadConfig";

constexpr char StartsTheSimulator[] = "The last command starts the simulator again.";

class DoctorOnMisconfiguredMachine : public testing::TestWithParam<WrongCase>
{
};

} // namespace zviptv::test
