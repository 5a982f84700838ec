// SPDX-License-Identifier: MIT
#pragma once

#include "session/Session.h"

#include <string>
#include <vector>

namespace zviptv::ctl {

/// The entries of one of the service's lists: requests each entry until the service has no more. Throws a
/// Failure for a `size` that the tables of a stream cannot have.
template <typename Record, typename Get>
std::vector<Record> Collect(Session& session, std::string const& method, unsigned int size, Get get)
{
    constexpr unsigned int most = 1024; // bytes of the section that describes a programme
    if (size > most) {
        throw Failure(ExitCode::Malformed, "the service announces " + std::to_string(size) + " entries for " +
                                               method + ", more than a programme can have");
    }
    std::vector<Record> records;
    for (unsigned int index = 0; index < size; ++index) {
        Record record{};
        if (!session.Ask(method, [&] { return get(index, record); })) {
            break;
        }
        records.push_back(record);
    }
    return records;
}

} // namespace zviptv::ctl
