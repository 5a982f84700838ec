// SPDX-License-Identifier: MIT
#pragma once

#include "WireMessage.h"

#include <dbus/dbus.h>

#include <string>

namespace zviptv::test {

/// Type codes as libdbus takes them.
namespace type {
constexpr int byte = 'y';
constexpr int int32 = 'i';
constexpr int uint32 = 'u';
constexpr int string = 's';
constexpr int objectPath = 'o';
constexpr int signatureText = 'g';
constexpr int array = 'a';
constexpr int variant = 'v';
constexpr int structure = 'r';
constexpr int dictEntry = 'e';
constexpr int none = 0;
} // namespace type

WireMessage DecodeMessage(DBusMessage* message);

} // namespace zviptv::test
