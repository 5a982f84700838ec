// SPDX-License-Identifier: MIT
#include "GuideLoader.h"

#include <exception>
#include <memory>
#include <utility>

namespace zviptv::sim {

GuideLoader::~GuideLoader()
{
    m_stopping = true;
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

bool GuideLoader::Load(std::string const& path, ServiceNames const& names, Done done)
{
    if (!m_waiting.empty()) {
        bool const isSame = path == m_path;
        if (isSame) {
            m_waiting.push_back(std::move(done));
        }
        return isSame;
    }
    m_thread = std::thread([this, path, names] { Run(path, names); });
    m_path = path;
    m_waiting.push_back(std::move(done));
    return true;
}

void GuideLoader::Run(std::string const& path, ServiceNames const& names)
{
    auto const result = std::make_shared<Result>();
    try {
        result->loaded = LoadGuide(path, names, &m_stopping);
    } catch (std::exception const& failure) {
        result->error = failure.what();
    }
    if (!m_stopping) {
        m_loop.After(std::chrono::milliseconds(0), [this, result] { Finish(*result); });
    }
}

void GuideLoader::Finish(Result const& result)
{
    m_thread.join();
    for (Done const& done : std::exchange(m_waiting, {})) {
        done(result);
    }
}

} // namespace zviptv::sim
