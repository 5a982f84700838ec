// SPDX-License-Identifier: MIT
#include "input/LoopSource.h"

#include <glib-unix.h>

#include <utility>

namespace zviptv::sim {

namespace {

void Delete(gpointer function)
{
    delete static_cast<std::function<void()>*>(function);
}

gboolean OnTime(gpointer function)
{
    (*static_cast<std::function<void()>*>(function))();
    return G_SOURCE_CONTINUE;
}

gboolean OnDescriptor(gint /*descriptor*/, GIOCondition /*condition*/, gpointer function)
{
    return OnTime(function);
}

} // namespace

LoopSource::LoopSource(GSource* source, GSourceFunc callback, Function function) : m_source(source)
{
    g_source_set_callback(source, callback, new Function(std::move(function)), Delete);
    g_source_attach(source, nullptr);
}

LoopSource& LoopSource::operator=(LoopSource&& other) noexcept
{
    if (this != &other) {
        Stop();
        m_source = std::move(other.m_source);
    }
    return *this;
}

void LoopSource::Stop() noexcept
{
    if (m_source) {
        g_source_destroy(m_source.get());
        m_source.reset();
    }
}

LoopSource LoopSource::OnInput(int descriptor, std::function<void()> function)
{
    auto const condition = static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR);
    return {g_unix_fd_source_new(descriptor, condition), G_SOURCE_FUNC(OnDescriptor), std::move(function)};
}

LoopSource LoopSource::OnOutput(int descriptor, std::function<void()> function)
{
    auto const condition = static_cast<GIOCondition>(G_IO_OUT | G_IO_HUP | G_IO_ERR);
    return {g_unix_fd_source_new(descriptor, condition), G_SOURCE_FUNC(OnDescriptor), std::move(function)};
}

LoopSource LoopSource::Every(std::chrono::milliseconds period, std::function<void()> function)
{
    return {g_timeout_source_new(static_cast<guint>(period.count())), OnTime, std::move(function)};
}

} // namespace zviptv::sim
