// SPDX-License-Identifier: MIT
#include "Applications.h"

#include "glib/Owned.h"

#include <utility>

namespace zviptv::sim {

/// Watches a bus name. Everything happens on one thread, so that no notice arrives after the end of the
/// watch.
class Applications::Watch
{
public:
    Watch(Applications& owner, std::string const& busName)
        : m_owner(owner),
          m_watch(g_bus_watch_name(G_BUS_TYPE_SYSTEM, busName.c_str(), G_BUS_NAME_WATCHER_FLAGS_NONE, nullptr,
                                   Vanished, this, nullptr))
    {
    }
    Watch(Watch const&) = delete;
    Watch& operator=(Watch const&) = delete;

private:
    static void Vanished(GDBusConnection* /*connection*/, char const* name, void* self)
    {
        static_cast<Watch*>(self)->m_owner.Gone(name);
    }

    Applications& m_owner;
    NameWatch m_watch;
};

Applications::Applications(std::function<void(std::string const&)> onGone) : m_onGone(std::move(onGone)) {}

Applications::~Applications() = default;

void Applications::Add(std::string const& busName, std::string const& type)
{
    Application& application = m_applications[busName];
    application.types.insert(type);
    if (application.watch == nullptr) {
        application.watch = std::make_unique<Watch>(*this, busName);
    }
}

void Applications::Remove(std::string const& busName, std::string const& type)
{
    auto const application = m_applications.find(busName);
    if (application != m_applications.end() && application->second.types.erase(type) != 0 &&
        application->second.types.empty()) {
        Gone(busName);
    }
}

std::string Applications::IdOf(std::string const& busName) const
{
    auto const application = m_applications.find(busName);
    return application == m_applications.end() ? std::string() : application->second.id;
}

void Applications::SetId(std::string const& busName, std::string const& id)
{
    auto const application = m_applications.find(busName);
    if (application != m_applications.end()) {
        application->second.id = id;
    }
}

std::vector<std::string> Applications::Names() const
{
    std::vector<std::string> names;
    for (auto const& [name, application] : m_applications) {
        names.push_back(name);
    }
    return names;
}

std::vector<Applications::Description> Applications::List() const
{
    std::vector<Description> list;
    for (auto const& [name, application] : m_applications) {
        list.push_back({name, application.id, {application.types.begin(), application.types.end()}});
    }
    return list;
}

void Applications::Gone(std::string busName)
{
    m_applications.erase(busName);
    m_onGone(busName);
}

} // namespace zviptv::sim
