// SPDX-License-Identifier: MIT
#pragma once

#include "WireMessage.h"

#include <dbus/dbus.h>

#include <string>

namespace zviptv::test {

/// Type codes as libdbus takes them.
namespace type {
constexpr int Byte = 'y';
constexpr int Int32 = 'i';
constexpr int Uint32 = 'u';
constexpr int String = 's';
constexpr int ObjectPath = 'o';
constexpr int Signature = 'g';
constexpr int Array = 'a';
constexpr int Variant = 'v';
constexpr int Structure = 'r';
constexpr int DictEntry = 'e';
constexpr int None = 0;
} // namespace type

WireMessage DecodeMessage(DBusMessage* message);

} // namespace zviptv::test
