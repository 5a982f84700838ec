// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <string>

namespace zviptv::sim {

/// Detects recordings in which two services answer at the same time, for example of two televisions.
class AnsweringServices
{
public:
    /// Reports that a service has died or arrived.
    void Change() { m_services.clear(); }

    /// Reports that the service with this bus name answered a request to the endpoint.
    void Note(std::string const& endpoint, std::string const& service)
    {
        std::string const& first = m_services.emplace(endpoint, service).first->second;
        if (first != service && m_warning.empty()) {
            m_warning = "the recording has two services, " + first + " and " + service +
                        ", whose answers are mixed: record one television at a time";
        }
    }

    /// A warning for the user; empty if there was one service at a time.
    std::string const& Warning() const { return m_warning; }

private:
    std::map<std::string, std::string> m_services; ///< the last service by endpoint
    std::string m_warning;
};

} // namespace zviptv::sim
