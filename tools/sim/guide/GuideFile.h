// SPDX-License-Identifier: MIT
#pragma once

#include "guide/Guide.h"
#include "guide/GuideProblems.h"
#include "guide/ServiceNumbers.h"
#include "guide/XmlParser.h"

#include <atomic>
#include <memory>

namespace zviptv::sim {

struct LoadedGuide
{
    std::shared_ptr<Guide const> guide;
    GuideWarnings warnings;
};

/// Reads an XMLTV document. `name` is the name of the document in errors. @throws GuideError
/// "name:line:column: …"
LoadedGuide ReadGuide(std::string const& name, ReadBytes const& read, ServiceNames const& serviceNames = {});

/// Reads an XMLTV file; stops soon after `stop`, if given, has become true. @throws GuideError if it cannot
/// be read or was stopped, and like ReadGuide()
LoadedGuide LoadGuide(std::string const& path, ServiceNames const& serviceNames = {},
                      std::atomic<bool> const* stop = nullptr);

} // namespace zviptv::sim
