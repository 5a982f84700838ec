// SPDX-License-Identifier: MIT
#pragma once

#include "Event.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace zviptv::trace {

/// The participants of the conversation: the applications, and the bus names of services. Stores a bounded
/// number of both.
class Participants
{
public:
    using ApplicationPtr = std::shared_ptr<Application const>;

    /// `onNew` is called with the bus name of each new application.
    explicit Participants(std::function<void(std::string const& busName)> onNew) : m_onNew(std::move(onNew))
    {
    }

    /// The application, which is added if it is new.
    ApplicationPtr See(std::string const& busName);

    /// The application if it is known, otherwise null.
    ApplicationPtr Find(std::string const& busName) const;

    /// Changes the data of a known application. Earlier events keep the former data.
    void Change(std::string const& busName, std::function<void(Application&)> const& change);
    void Forget(std::string const& busName) { m_applications.erase(busName); }

    void SeeService(std::string const& busName);
    bool IsService(std::string const& busName) const { return m_services.count(busName) != 0; }
    void ForgetService(std::string const& busName) { m_services.erase(busName); }

private:
    std::function<void(std::string const& busName)> m_onNew;
    std::map<std::string, ApplicationPtr> m_applications;
    std::set<std::string> m_services;
};

} // namespace zviptv::trace
