// SPDX-License-Identifier: MIT
#pragma once

#include "ServiceLink.h"

#include <sys/types.h>

#include <chrono>
#include <string>

namespace zviptv::sim {

/// Time limit for the service's answer to a method. Opening an input takes longest: a server has ten seconds
/// to answer.
constexpr std::chrono::seconds AnswerLimit{15};

/// A line for the user about the error of a call of the service, whose process is `service`.
std::string ErrorText(GError const* error, pid_t service);

/// Answers with an error of the control interface.
void ReturnError(GDBusMethodInvocation* invocation, char const* name, char const* text);

/// Answers with the error of a call of the service.
void AnswerError(GDBusMethodInvocation* invocation, GError const* error, pid_t service);

/// Calls `reply` with an error of the control interface.
void ReplyError(ServiceLink::Reply const& reply, char const* name, char const* text);

} // namespace zviptv::sim
