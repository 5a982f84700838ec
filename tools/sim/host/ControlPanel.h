// SPDX-License-Identifier: MIT
#pragma once

#include "Control.h"
#include "panel/Panel.h"

namespace zviptv::sim {

/// The panel of a control interface: makes the same calls as clients on the bus, and gets the same signals.
class ControlPanel
{
public:
    /// Prints the panel's address. `control` must outlive this object.
    /// @throws std::runtime_error with a line for the user
    ControlPanel(unsigned port, Control& control);
    ~ControlPanel();
    ControlPanel(ControlPanel const&) = delete;
    ControlPanel& operator=(ControlPanel const&) = delete;

private:
    Control& m_control;
    Panel m_panel;
};

} // namespace zviptv::sim
