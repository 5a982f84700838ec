// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <string>

namespace zviptv::verbs {

/// The kinds of arguments of verbs, in words and on D-Bus.
enum class Form
{
    Position,  ///< seconds of the stream, d
    Duration,  ///< seconds, d
    FaultTime, ///< seconds that a fault lasts, d
    Speed,     ///< d
    Time,      ///< seconds since 1970, x
    Programme, ///< number of a programme, u
    Index,     ///< place in a list, u
    Count,     ///< number of messages, u
    Input,     ///< input to play, s
    Fault,     ///< METHOD=FAULT, s
    Lockable,  ///< programme or service, s
    Mutable,   ///< audio or video, s
    Track,     ///< audio or subtitle, s
    Switch     ///< on or off, b
};

/// The name in a synopsis: SECONDS.
char const* NameOf(Form form);

/// The accepted values: "a number of seconds, 0 to 1000000".
char const* Accepted(Form form);

/// The D-Bus type.
char const* TypeOf(Form form);

/// The value of the text. @throws std::invalid_argument with the accepted values
Owned<GVariant> Parse(Form form, std::string const& text);

/// @throws std::invalid_argument with the accepted values if the value has another type or is out of range
void Check(Form form, GVariant* value);

} // namespace zviptv::verbs
