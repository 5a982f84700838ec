// SPDX-License-Identifier: MIT
#pragma once

#include "common/MainLoop.h"
#include "guide/GuideFile.h"

#include <atomic>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace zviptv::sim {

/// Loads guide files on a separate thread, one at a time, while the main loop continues. Everything except
/// the loading itself happens on the main loop's thread.
class GuideLoader
{
public:
    struct Result
    {
        std::optional<LoadedGuide> loaded; ///< empty if the file could not be loaded
        std::string error;                 ///< the reason, if it could not be loaded
    };
    using Done = std::function<void(Result const&)>;

    explicit GuideLoader(MainLoop& loop) : m_loop(loop) {}
    /// Stops the present load.
    ~GuideLoader();
    GuideLoader(GuideLoader const&) = delete;
    GuideLoader& operator=(GuideLoader const&) = delete;

    /// Loads the file and then calls `done`, also on failure. A file that is already being loaded is not
    /// loaded again. Returns false, and does nothing, while another file is being loaded.
    bool Load(std::string const& path, ServiceNames const& names, Done done);

private:
    void Run(std::string const& path, ServiceNames const& names);
    void Finish(Result const& result);

    MainLoop& m_loop;
    std::thread m_thread;
    std::atomic<bool> m_stopping{false};
    std::string m_path;          ///< the file that is being loaded
    std::vector<Done> m_waiting; ///< callbacks for that file; empty if none is being loaded
};

} // namespace zviptv::sim
