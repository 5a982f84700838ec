// SPDX-License-Identifier: MIT
#include "Core.h"

#include "Convert.h"

#include <pybind11/pybind11.h>

#include <algorithm>
#include <optional>
#include <set>

namespace zviptv::python {

namespace {

std::set<Core*> g_open; // with the GIL

/// Releases the GIL if the calling thread has it.
class WithoutGil
{
public:
    WithoutGil()
    {
        if (PyGILState_Check() != 0) {
            m_release.emplace();
        }
    }

private:
    std::optional<py::gil_scoped_release> m_release;
};

} // namespace

Core::Core(Television::Options options) : m_loop(Loop::Instance())
{
    {
        Loop::Use const use;
        WithoutGil const without;
        m_loop.Run([&] { m_television = std::make_unique<Television>(std::move(options)); });
    }
    g_open.insert(this);
}

Core::~Core()
{
    g_open.erase(this);
    if (IsForkedChild()) {
        static_cast<void>(m_television.release()); // its locks may be held for ever
        return;
    }
    Close();
}

void Core::Close()
{
    if (IsForkedChild()) {
        return;
    }
    {
        std::lock_guard const lock(m_mutex);
        if (m_isDestroyed) {
            return; // without releasing the GIL, which this thread does not get again if the interpreter ends
        }
    }
    Loop::Use const use;
    WithoutGil const without;
    std::vector<std::weak_ptr<Waitable>> waitables;
    {
        std::unique_lock lock(m_mutex);
        if (m_isClosed) {
            m_left.wait(lock, [this] { return m_isDestroyed; });
            return;
        }
        m_isClosed = true;
        waitables.swap(m_waitables);
    }
    for (auto const& weak : waitables) {
        if (auto const waitable = weak.lock()) {
            waitable->Close();
        }
    }
    {
        std::unique_lock lock(m_mutex);
        m_left.wait(lock, [this] { return m_staying == 0; });
    }
    // Run() does this after all work that was posted before.
    m_loop.Run([this] { m_television.reset(); });
    std::lock_guard const lock(m_mutex);
    m_isDestroyed = true;
    m_left.notify_all();
}

void Core::CloseAll()
{
    std::vector<std::shared_ptr<Core>> open;
    for (Core* const core : g_open) {
        if (auto kept = core->weak_from_this().lock()) { // otherwise its destructor closes it
            open.push_back(std::move(kept));
        }
    }
    for (std::shared_ptr<Core> const& core : open) {
        core->Close();
    }
}

bool Core::IsAvailable()
{
    bool isStaying = false;
    Stay const stay(*this, isStaying);
    return isStaying && m_television->IsAvailable();
}

bool Core::Enter()
{
    if (IsForkedChild()) {
        return false;
    }
    std::lock_guard const lock(m_mutex);
    m_staying += m_isClosed ? 0 : 1;
    return !m_isClosed;
}

Core::Stay::Stay(Core& core) : m_core(core), m_isStaying(core.Enter())
{
    CheckNotForked();
    if (!m_isStaying) {
        Raise({FailureKind::Gone, "", "", "", "the Television is closed; create another one"});
    }
}

Core::Stay::Stay(Core& core, bool& isStaying) : m_core(core), m_isStaying(core.Enter())
{
    isStaying = m_isStaying;
}

Core::Stay::~Stay()
{
    if (!m_isStaying) {
        return;
    }
    std::lock_guard const lock(m_core.m_mutex);
    --m_core.m_staying;
    m_core.m_left.notify_all();
}

bool Core::Post(std::function<void(Television&)> work)
{
    std::lock_guard const lock(m_mutex);
    if (IsForkedChild() || m_isClosed) {
        return false;
    }
    m_loop.Post([this, work = std::move(work)] { work(*m_television); });
    return true;
}

void Core::Retain(std::shared_ptr<void> object)
{
    std::lock_guard const lock(m_mutex);
    m_retained.push_back(std::move(object));
}

void Core::AddErrors(std::shared_ptr<Queue<Failure>> const& failures)
{
    Post([this, weak = std::weak_ptr(failures)](Television& television) {
        m_errors.push_back(weak);
        television.OnError([this](Failure const& failure) {
            for (auto const& queue : m_errors) {
                if (auto const open = queue.lock()) {
                    open->Push(failure);
                }
            }
        });
    });
}

void Core::CloseWithThis(std::shared_ptr<Waitable> const& waitable)
{
    {
        std::lock_guard const lock(m_mutex);
        if (!m_isClosed) {
            m_waitables.erase(std::remove_if(m_waitables.begin(), m_waitables.end(),
                                             [](auto const& weak) { return weak.expired(); }),
                              m_waitables.end());
            m_waitables.push_back(waitable);
            return;
        }
    }
    waitable->Close();
}

} // namespace zviptv::python
