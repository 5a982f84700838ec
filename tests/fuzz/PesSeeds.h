// SPDX-License-Identifier: MIT
#pragma once

#include "StreamBuilder.h"

#include <string>
#include <vector>

namespace zviptv::fuzz {

struct NamedPes
{
    std::string name;
    test::Bytes bytes;
};

/// PES packets of the smallest frames and pictures of every kind, and of ARIB captions' management data.
std::vector<NamedPes> SmallPesPackets();

/// Management data that lists Japanese, in the first group.
test::Bytes AribLanguagePes();

} // namespace zviptv::fuzz
