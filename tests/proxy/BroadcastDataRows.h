// SPDX-License-Identifier: MIT
#pragma once

#include "MethodTable.h"

namespace zviptv::test {

constexpr auto OtherLanguage = static_cast<EZVLanguageCode>(77);

/// The methods of IBroadcastData that fill a language code, a number or a flag, or nothing.
std::vector<Method<IBroadcastData>> BroadcastDataNumberRows();

/// The methods of IBroadcastData that fill records.
std::vector<Method<IBroadcastData>> BroadcastDataRecordRows();

} // namespace zviptv::test
