// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <map>
#include <string>
#include <vector>

namespace zviptv::sim {

/// The last known value of every property of the control interface. Not thread-safe.
class LastReport
{
public:
    /// Zero, false and empty values.
    LastReport();

    GVariant* Value(std::string const& property) const { return m_values.at(property).get(); }

    /// Sets a property; takes over a floating reference.
    void Set(std::string const& property, GVariant* value);

    /// Sets the values of an a{sv}.
    void Update(GVariant* properties);

    /// Empties the properties that list applications, which a dead service does not have.
    void ForgetApplications();

    /// All properties, an a{sv}.
    Owned<GVariant> All() const;

    /// The arguments of PropertiesChanged for these properties, a floating reference.
    GVariant* Changed(std::vector<char const*> const& properties) const;

private:
    std::map<std::string, Owned<GVariant>> m_values;
};

} // namespace zviptv::sim
