// SPDX-License-Identifier: MIT
#include "Watch.h"

#include "Dictionary.h"
#include "ProgrammeReport.h"

#include <gio/gunixfdlist.h>

#include <stdexcept>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr char const* States[] = {"playing", "still", "waiting", "nothing"};

FileHandle PipeOf(gint32 index, GDBusMethodInvocation* invocation)
{
    GUnixFDList* const descriptors =
        g_dbus_message_get_unix_fd_list(g_dbus_method_invocation_get_message(invocation));
    FileHandle pipe(descriptors == nullptr ? -1 : g_unix_fd_list_get(descriptors, index, nullptr));
    if (!pipe) {
        throw std::invalid_argument("no pipe came with the call");
    }
    return pipe;
}

} // namespace

GVariant* Watch(Service& service, GVariant* parameters, GDBusMethodInvocation* invocation)
{
    char const* what = nullptr;
    gint32 index = 0;
    g_variant_get(parameters, "(&sh)", &what, &index);
    Television const television = service.Parts();
    StreamTap::Content const content =
        television.tap.Open(std::string(what) == "sound" ? StreamTap::Kind::Sound : StreamTap::Kind::Picture,
                            PipeOf(index, invocation));
    Dictionary answer;
    answer.Add("state", std::string(States[static_cast<int>(content.state)]));
    if (content.subtitle) {
        Dictionary subtitle;
        AddSubtitle(subtitle, *content.subtitle);
        answer.Add("subtitle", subtitle.End());
    }
    if (std::optional<VideoFormat> const& format = television.player.Format()) {
        answer.Add("width", g_variant_new_uint32(format->width))
            .Add("height", g_variant_new_uint32(format->height))
            .Add("aspectWidth", g_variant_new_uint32(format->displayAspect.numerator))
            .Add("aspectHeight", g_variant_new_uint32(format->displayAspect.denominator));
    }
    return g_variant_new("(@a{sv})", answer.End());
}

} // namespace zviptv::sim
