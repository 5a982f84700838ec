// SPDX-License-Identifier: MIT
#pragma once

#include "Event.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace zviptv::trace {

/// Who takes part in the conversation: the applications, and the bus names of services. Remembers a bounded
/// number of both.
class Participants
{
public:
    using ApplicationPtr = std::shared_ptr<Application const>;

    /// `onNew` is called with the bus name of each application when it is seen first.
    explicit Participants(std::function<void(std::string const& busName)> onNew) : m_onNew(std::move(onNew))
    {
    }

    /// The application, which is remembered from now on.
    ApplicationPtr See(std::string const& busName);

    /// The same if it is remembered, otherwise null.
    ApplicationPtr Find(std::string const& busName) const;

    /// Changes what is known about an application that is remembered. Events keep what they have.
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
