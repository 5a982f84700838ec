// SPDX-License-Identifier: MIT
#include "Participants.h"

namespace zviptv::trace {

namespace {

/// More than the connections of a bus. A recording of other traffic may contain more names.
constexpr std::size_t MaxApplications = 10'000;

/// Stands for the receivers of a signal without a destination.
constexpr char const* Everyone = "every application";

} // namespace

Participants::ApplicationPtr Participants::See(std::string const& busName)
{
    if (ApplicationPtr known = Find(busName)) {
        return known;
    }
    if (m_applications.size() >= MaxApplications) {
        m_applications.erase(m_applications.begin());
    }
    auto made = std::make_shared<Application>();
    made->busName = busName;
    made->name = busName.empty() ? Everyone : "";
    m_applications[busName] = std::move(made);
    if (m_onNew && !busName.empty()) {
        m_onNew(busName);
    }
    return Find(busName); // the callback may have changed it
}

Participants::ApplicationPtr Participants::Find(std::string const& busName) const
{
    auto const found = m_applications.find(busName);
    return found == m_applications.end() ? nullptr : found->second;
}

void Participants::Change(std::string const& busName, std::function<void(Application&)> const& change)
{
    auto const found = m_applications.find(busName);
    if (found != m_applications.end()) {
        auto changed = std::make_shared<Application>(*found->second);
        change(*changed);
        found->second = std::move(changed);
    }
}

void Participants::SeeService(std::string const& busName)
{
    if (m_services.size() >= MaxApplications) {
        m_services.clear();
    }
    m_services.insert(busName);
}

} // namespace zviptv::trace
