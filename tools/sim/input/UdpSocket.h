// SPDX-License-Identifier: MIT
#pragma once

#include "input/InputUrl.h"
#include "process/FileHandle.h"

namespace zviptv::sim {

/// A socket that receives what is sent to the URL's address and port, and has joined the group if that is
/// one. It does not block, tells when datagrams came (SO_TIMESTAMPNS) and how many found no room
/// (SO_RXQ_OVFL). Receivers of a group may share its port, those of other addresses may not.
/// @throws StreamError with a line for the user
FileHandle OpenUdpSocket(InputUrl const& url);

} // namespace zviptv::sim
