// SPDX-License-Identifier: MIT
#include <zviptv/client/StateWatcher.h>

#include "client/TelevisionParts.h"
#include "client/state/StateWatch.h"

namespace zviptv {

StateWatcher::StateWatcher() = default;

StateWatcher::StateWatcher(Television& television, StateOptions options,
                           std::function<void(StateEvent const&)> callback)
    : m_watch(std::make_shared<client::StateWatch>(television.m_parts->link, television, options,
                                                   std::move(callback)))
{
    m_watch->Begin();
}

StateWatcher::~StateWatcher()
{
    if (m_watch != nullptr) {
        m_watch->End();
    }
}

StateWatcher::StateWatcher(StateWatcher&& other) noexcept = default;

StateWatcher& StateWatcher::operator=(StateWatcher&& other) noexcept
{
    if (this != &other) {
        StateWatcher const former(std::move(*this));
        m_watch = std::move(other.m_watch);
    }
    return *this;
}

TelevisionState const& StateWatcher::State() const
{
    static TelevisionState const none;
    return m_watch == nullptr ? none : m_watch->State();
}

void StateWatcher::Refresh()
{
    if (m_watch != nullptr) {
        m_watch->Refresh();
    }
}

} // namespace zviptv
