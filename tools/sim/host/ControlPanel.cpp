// SPDX-License-Identifier: MIT
#include "ControlPanel.h"

#include "ControlErrors.h"

#include <cstdio>

namespace zviptv::sim {

namespace {

PanelLink LinkTo(Control& control)
{
    PanelLink link;
    link.call = [&control](std::string const& method, GVariant* parameters, PanelLink::Done const& done) {
        control.Call(method, parameters, [&control, done](GVariant* /*value*/, GError const* error) {
            done(error == nullptr ? std::string() : ErrorText(error, control.Service().Pid()));
        });
    };
    link.read = [&control](std::function<void(GVariant*)> const& reply) { control.Read(reply); };
    link.watch = [&control](std::string const& what, FileHandle const& pipe,
                            PanelLink::Watched const& watched) {
        control.Service().Watch(what, pipe, [watched](GVariant* value, GError const* /*error*/) {
            Owned<GVariant> const content(value == nullptr ? nullptr : g_variant_get_child_value(value, 0));
            watched(content.get());
        });
    };
    return link;
}

std::string SystemBus()
{
    Owned<char> const address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    return address ? address.get() : std::string();
}

} // namespace

ControlPanel::ControlPanel(unsigned port, Control& control)
    : m_control(control), m_panel(port, SystemBus(), LinkTo(control))
{
    control.SetObserver([this](std::string const& interface, std::string const& name, GVariant* body) {
        m_panel.OnSignal(interface, name, body);
    });
    std::fprintf(stderr, "zviptv-sim: the panel is at %s\n", m_panel.Address().c_str());
}

ControlPanel::~ControlPanel()
{
    m_control.SetObserver({});
}

} // namespace zviptv::sim
