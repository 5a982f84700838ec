// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Programme.h"
#include "stream/TableCollector.h"

namespace zviptv::sim {

/// The PID of a programme's PMT.
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

// Each function reads a complete table, as returned by a TableCollector. A list that exceeds its section ends
// with the section.

/// The programmes, without the entry for the network information table.
std::vector<PatEntry> ParsePat(TableCollector::Sections const& sections);

/// The programme, without names and PMT PID.
Programme ParsePmt(TableCollector::Sections const& sections);

/// Names by service id.
std::map<std::uint16_t, ServiceName> ParseSdt(TableCollector::Sections const& sections);

/// Whether the section has at least the mandatory fields of its table.
bool HasWholePatEntries(ByteView section);
bool HasWholePmtHead(ByteView section);
bool HasWholeSdtHead(ByteView section);

} // namespace zviptv::sim
