#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace zviptv {

/// The process's main loop.
class MainLoop
{
public:
    MainLoop();
    ~MainLoop();
    MainLoop(MainLoop const&) = delete;
    MainLoop& operator=(MainLoop const&) = delete;

    /// From now on SIGINT and SIGTERM end Run(); before they end the process.
    void CatchSignals();

    /// Runs until a caught signal comes, or Quit() is called. Returns the signal's number, or 0.
    /// @throws what `work` of After() has thrown, which ends it, too
    int Run();
    void Quit();

    /// Calls `work` once after `delay`; called again only when asked for again.
    /// May be called from any thread.
    void After(std::chrono::milliseconds delay, std::function<void()> work);

private:
    class Impl;
    struct Work;
    std::unique_ptr<Impl> m_impl;
};

} // namespace zviptv
