// SPDX-License-Identifier: MIT
#include "PageFiles.h"

#include "PanelPage.h"

#include <utility>

namespace zviptv::sim {

namespace {

char const* TypeOf(std::string const& name)
{
    static constexpr std::pair<char const*, char const*> types[] = {
        {".html", "text/html; charset=utf-8"},
        {".css", "text/css; charset=utf-8"},
        {".js", "text/javascript; charset=utf-8"},
        {".svg", "image/svg+xml"},
    };
    for (auto const& [ending, type] : types) {
        std::string const text = ending;
        if (name.size() > text.size() && name.compare(name.size() - text.size(), text.size(), text) == 0) {
            return type;
        }
    }
    return "application/octet-stream";
}

} // namespace

PageFile FindPageFile(std::string const& name)
{
    static bool const isRegistered = (zviptv_panel_page_register_resource(), true);
    static_cast<void>(isRegistered);
    std::string const path = "/panel/" + name;
    Owned<GBytes> bytes(g_resources_lookup_data(path.c_str(), G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr));
    return {std::move(bytes), TypeOf(name)};
}

} // namespace zviptv::sim
