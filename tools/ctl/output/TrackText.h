#pragma once

#include "Print.h"
#include "commands/Commands.h"
#include "session/Session.h"

#include <string>

namespace zviptv::ctl {

/// The ISO 639 code, or a dash.
std::string LanguageWord(EZVLanguageCode language);

/// "eng, ac3, 2 channels, pid 0x0101"
std::string AudioText(ZVAudio const& audio);

std::string LockWord(bool locked);

// Records as JSON whose numbers are null where 0 stands for "not known".

Json::Value KnownJson(ZVAudio const& audio);
Json::Value KnownJson(std::vector<ZVAudio> const& tracks);
Json::Value KnownJson(ZVResolution const& picture);

/// Throws a Failure for a number of entries that no stream's tables can have.
void RequirePlausible(std::string const& method, unsigned int size);

/// Entries of one of the service's lists: asks for each until the service has no more.
template <typename Record, typename Get>
std::vector<Record> Collect(Session& session, std::string const& method, unsigned int size, Get get)
{
    RequirePlausible(method, size);
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
