// SPDX-License-Identifier: MIT
#pragma once

#include "LoopRunner.h"

#include <functional>
#include <stdexcept>

namespace zviptv::test {

/// The number of times that the handlers of a test throw.
constexpr int Throws = 20;

struct Thrown : std::runtime_error
{
    Thrown() : std::runtime_error("out of a handler") {}
};

/// Iterates like RunUntil, and counts the exceptions that leave the loop.
inline bool RunCounting(int& caught, std::function<bool()> const& condition)
{
    for (;;) {
        try {
            return RunUntil(condition);
        } catch (Thrown const&) {
            ++caught;
        }
    }
}

} // namespace zviptv::test
