#pragma once

#include <gio/gio.h>

#include <memory>

namespace zviptv::bench {

struct GioRelease
{
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
};

/// Owns one reference of a variant or a connection, or an error.
template <typename T>
using GioOwned = std::unique_ptr<T, GioRelease>;

} // namespace zviptv::bench
