// SPDX-License-Identifier: MIT
#include "common/VariantJson.h"

namespace zviptv {

namespace {

Json::Value ChildToJson(GVariant* parent, std::size_t index)
{
    Owned<GVariant> const child(g_variant_get_child_value(parent, index));
    return ToJson(child.get());
}

Json::Value ContainerToJson(GVariant* value)
{
    std::size_t const count = g_variant_n_children(value);
    bool const isObject = g_variant_is_of_type(value, G_VARIANT_TYPE("a{s*}")) != FALSE;
    Json::Value json(isObject ? Json::objectValue : Json::arrayValue);
    for (std::size_t i = 0; i < count; ++i) {
        if (isObject) {
            Owned<GVariant> const entry(g_variant_get_child_value(value, i));
            json[ChildToJson(entry.get(), 0).asString()] = ChildToJson(entry.get(), 1);
        } else {
            json.append(ChildToJson(value, i));
        }
    }
    return json;
}

} // namespace

Json::Value ToJson(GVariant* value)
{
    switch (g_variant_classify(value)) {
    case G_VARIANT_CLASS_BOOLEAN:
        return g_variant_get_boolean(value) != FALSE;
    case G_VARIANT_CLASS_INT32:
        return g_variant_get_int32(value);
    case G_VARIANT_CLASS_UINT32:
        return g_variant_get_uint32(value);
    case G_VARIANT_CLASS_INT64:
        return Json::Int64{g_variant_get_int64(value)};
    case G_VARIANT_CLASS_UINT64:
        return Json::UInt64{g_variant_get_uint64(value)};
    case G_VARIANT_CLASS_DOUBLE:
        return g_variant_get_double(value);
    case G_VARIANT_CLASS_STRING:
        return g_variant_get_string(value, nullptr);
    case G_VARIANT_CLASS_VARIANT:
        return ChildToJson(value, 0);
    default:
        return ContainerToJson(value);
    }
}

} // namespace zviptv
