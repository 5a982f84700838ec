// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <string>

namespace zviptv::sim {

/// A file of the page, which is compiled into the program.
struct PageFile
{
    Owned<GBytes> bytes; ///< null if there is no such file
    char const* type = "application/octet-stream";
};

PageFile FindPageFile(std::string const& name);

} // namespace zviptv::sim
