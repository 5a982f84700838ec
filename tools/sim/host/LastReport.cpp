// SPDX-License-Identifier: MIT
#include "LastReport.h"

#include "control/Dictionary.h"
#include "control/Interface.h"
#include "verbs/Verbs.h"

#include <utility>

namespace zviptv::sim {

namespace {

/// The names of properties that are empty without a service.
constexpr std::pair<char const*, char const*> OfApplications[] = {
    {"Clients", "as"}, {"Applications", "aa{sv}"}, {"Subscribers", "aa{sv}"}};

/// Bytes of the type's zero or empty value: an empty array has none.
gsize SizeOf(char const* type)
{
    switch (type[0]) {
    case 'b':
    case 's': // the terminating zero
        return 1;
    case 'u':
        return 4;
    case 'a':
        return 0;
    default:
        return 8;
    }
}

/// Zero, false, or empty.
GVariant* Nothing(char const* type)
{
    return g_variant_new_from_data(G_VARIANT_TYPE(type), "\0\0\0\0\0\0\0", SizeOf(type), TRUE, nullptr,
                                   nullptr);
}

} // namespace

LastReport::LastReport()
{
    for (GDBusPropertyInfo** info = SimulatorInterface()->properties; *info != nullptr; ++info) {
        Set((*info)->name, Nothing((*info)->signature));
    }
}

void LastReport::Set(std::string const& property, GVariant* value)
{
    m_values[property].reset(g_variant_ref_sink(value));
}

void LastReport::Update(GVariant* properties)
{
    GVariantIter entries;
    g_variant_iter_init(&entries, properties);
    char const* name = nullptr;
    for (GVariant* value = nullptr; g_variant_iter_next(&entries, "{&sv}", &name, &value) != FALSE;) {
        m_values[name].reset(value);
    }
}

void LastReport::ForgetApplications()
{
    for (auto const& [property, type] : OfApplications) {
        Set(property, Nothing(type));
    }
}

Owned<GVariant> LastReport::All() const
{
    Dictionary all;
    for (auto const& [property, value] : m_values) {
        all.Add(property.c_str(), value.get());
    }
    return all.Take();
}

GVariant* LastReport::Changed(std::vector<char const*> const& properties) const
{
    Dictionary changed;
    for (char const* const property : properties) {
        changed.Add(property, Value(property));
    }
    return g_variant_new("(s@a{sv}as)", verbs::Interface, changed.End(), nullptr);
}

} // namespace zviptv::sim
