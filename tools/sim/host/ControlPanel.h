// SPDX-License-Identifier: MIT
#pragma once

#include "Control.h"
#include "panel/Panel.h"

namespace zviptv::sim {

/// The panel of a control interface: does what its clients on the bus do, and hears what they hear.
class ControlPanel
{
public:
    /// Tells the user the panel's address. `control` has to outlive this.
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
