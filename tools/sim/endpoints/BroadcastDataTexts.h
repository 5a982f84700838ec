// SPDX-License-Identifier: MIT
#pragma once

#include "Message.h"
#include "playback/Player.h"
#include "playback/Selection.h"

namespace zviptv::sim {

/// Answers the requests about teletext, subtitles and captions; returns nullopt for other functions.
std::optional<CMessageBuffer> AnswerTexts(Request const& request, Player const& player,
                                          Selection const& selection, EZVLanguageCode preferred);

} // namespace zviptv::sim
