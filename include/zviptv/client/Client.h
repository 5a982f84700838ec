// SPDX-License-Identifier: MIT
/// @file
/// All headers of the client layer.

#pragma once

#include <zviptv/client/Broadcast.h>
#include <zviptv/client/Caption.h>
#include <zviptv/client/CaptionDecoder.h>
#include <zviptv/client/Failure.h>
#include <zviptv/client/Guide.h>
#include <zviptv/client/Language.h>
#include <zviptv/client/Pending.h>
#include <zviptv/client/PesPacket.h>
#include <zviptv/client/Player.h>
#include <zviptv/client/Programme.h>
#include <zviptv/client/Result.h>
#include <zviptv/client/StateWatcher.h>
#include <zviptv/client/Subscription.h>
#include <zviptv/client/Television.h>
#include <zviptv/client/Types.h>
