#pragma once

#include "doctor/Facts.h"
#include "output/ExitCode.h"

namespace zviptv::ctl::doctor {

/// Looks, judges and writes the report to standard output.
ExitCode Run(Names const& names, bool asJson);

} // namespace zviptv::ctl::doctor
