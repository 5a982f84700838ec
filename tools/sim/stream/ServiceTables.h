// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Programme.h"
#include "stream/TableCollector.h"

namespace zviptv::sim {

/// Where a programme's PMT is.
struct PatEntry
{
    std::uint16_t programme = 0;
    std::uint16_t pid = 0;
};

struct ServiceName
{
    std::string name;
    std::string provider;
};

// Each reads a complete table, as a TableCollector returns it. Lists that run past their section end with it.

/// The programmes, without the entry for the network's own table.
std::vector<PatEntry> ParsePat(TableCollector::Sections const& sections);

/// The programme, without names and PMT PID.
Programme ParsePmt(TableCollector::Sections const& sections);

/// Names by service id.
std::map<std::uint16_t, ServiceName> ParseSdt(TableCollector::Sections const& sections);

/// Whether the section is long enough for what every section of its table has.
bool HasWholePatEntries(ByteView section);
bool HasWholePmtHead(ByteView section);
bool HasWholeSdtHead(ByteView section);

} // namespace zviptv::sim
