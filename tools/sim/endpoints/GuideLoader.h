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

/// Loads guide files beside the main loop, which goes on meanwhile: on a thread of its own, one at a time.
/// Everything but the loading itself happens on the main loop's thread.
class GuideLoader
{
public:
    struct Result
    {
        std::optional<LoadedGuide> loaded; ///< nothing when the file could not be loaded
        std::string error;                 ///< then why
    };
    using Done = std::function<void(Result const&)>;

    explicit GuideLoader(MainLoop& loop) : m_loop(loop) {}
    /// Gives up what is being loaded.
    ~GuideLoader();
    GuideLoader(GuideLoader const&) = delete;
    GuideLoader& operator=(GuideLoader const&) = delete;

    /// Calls `done` when the file is loaded, or is not. A file that is being loaded already is not loaded
    /// once more. False, and nothing happens, while another one is being loaded.
    bool Load(std::string const& path, ServiceNames const& names, Done done);

private:
    void Run(std::string const& path, ServiceNames const& names);
    void Finish(Result const& result);

    MainLoop& m_loop;
    std::thread m_thread;
    std::atomic<bool> m_stopping{false};
    std::string m_path;          ///< being loaded
    std::vector<Done> m_waiting; ///< for it; empty when nothing is being loaded
};

} // namespace zviptv::sim
