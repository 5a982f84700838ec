// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <chrono>
#include <functional>
#include <memory>

namespace zviptv::sim {

/// Calls a function from the default main context, until it is destroyed or assigned to. The function must
/// not throw; it may destroy or replace the source that calls it.
class LoopSource
{
public:
    LoopSource() = default;
    LoopSource(LoopSource&& other) noexcept = default;
    LoopSource& operator=(LoopSource&& other) noexcept;
    ~LoopSource() { Stop(); }

    /// Calls it whenever the descriptor can be read, or has ended.
    static LoopSource OnInput(int descriptor, std::function<void()> function);

    /// Calls it whenever the descriptor can be written to, or its reader has closed it.
    static LoopSource OnOutput(int descriptor, std::function<void()> function);

    /// Calls it every `period`.
    static LoopSource Every(std::chrono::milliseconds period, std::function<void()> function);

    bool IsRunning() const { return m_source != nullptr; }
    void Stop() noexcept;

private:
    using Function = std::function<void()>;
    LoopSource(GSource* source, GSourceFunc callback, Function function);

    Owned<GSource> m_source;
};

} // namespace zviptv::sim
