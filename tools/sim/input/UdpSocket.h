// SPDX-License-Identifier: MIT
#pragma once

#include "input/InputUrl.h"
#include "process/FileHandle.h"

namespace zviptv::sim {

/// A socket that receives the datagrams for the URL's address and port, and has joined the group if the
/// address is one. It does not block, and reports the time of datagrams (SO_TIMESTAMPNS) and the number of
/// dropped ones (SO_RXQ_OVFL). Receivers of a group may share its port, those of other addresses may not.
/// @throws StreamError with a line for the user
FileHandle OpenUdpSocket(InputUrl const& url);

} // namespace zviptv::sim
