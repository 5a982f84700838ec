// SPDX-License-Identifier: MIT
#include "CaptionReport.h"

#include "Dictionary.h"

namespace zviptv::sim {

namespace {

GVariant* StatementsOf(CaptionTap& text)
{
    text.FollowSelection();
    GVariantBuilder statements;
    g_variant_builder_init(&statements, G_VARIANT_TYPE("as"));
    for (std::vector<std::uint8_t> const& statement : text.Statements()) {
        Owned<char> const encoded(g_base64_encode(statement.data(), statement.size()));
        g_variant_builder_add(&statements, "s", encoded.get());
    }
    Dictionary entry;
    entry.Add("number", g_variant_new_uint64(text.Number()))
        .Add("statements", g_variant_builder_end(&statements));
    return entry.End();
}

} // namespace

Owned<GVariant> CaptionsOf(StreamTap& tap)
{
    Dictionary captions;
    captions.Add("PanelCaption", StatementsOf(tap.Caption()))
        .Add("PanelSuperimpose", StatementsOf(tap.Superimpose()));
    return captions.Take();
}

} // namespace zviptv::sim
